// file_bench: what reading a CDFG file and writing it again costs, beside a plain copy.
//
//   file_bench INPUT SCRATCH [runs=7]
//
// The plain copy reads all bytes of INPUT into one block of memory and writes them to SCRATCH; the
// other work reads INPUT into a graph and writes the graph to SCRATCH. Both go through unbuffered
// streams, both find INPUT in the page cache, both begin with an empty SCRATCH, each run is a
// process of its own, and the two take turns. Prints one line of fields with their names:
//
//   nodes=.. bytes=.. copy_cpu=.. graph_cpu=.. copy_wall=.. graph_wall=.. peak=.. one_node_peak=..
//
// Times in seconds, each the best of the runs; `peak` is the peak memory of the process that held
// the graph; `one_node_peak` is how much more memory a file takes whose only node has the id
// 4,000,000,000 than an empty file does.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/files.h"
#include "bench/measure.h"
#include "cdfg/file.h"

namespace {

using bench::Usage;

constexpr NodeId kHugeId = 4'000'000'000U;

std::FILE* OpenUnbuffered(const char* path, const char* mode) {
  std::FILE* stream = std::fopen(path, mode);
  if (stream != nullptr) std::setvbuf(stream, nullptr, _IONBF, 0);
  return stream;
}

bool CopyPlainly(const char* input, const char* output) {
  std::FILE* in = OpenUnbuffered(input, "rb");
  if (in == nullptr) return false;
  const auto size = static_cast<std::size_t>(bench::SizeOf(in));
  char* bytes = static_cast<char*>(std::malloc(size));
  const bool is_read = bytes != nullptr && std::fread(bytes, 1, size, in) == size;
  std::fclose(in);
  std::FILE* out = is_read ? OpenUnbuffered(output, "wb") : nullptr;
  const bool is_written = out != nullptr && std::fwrite(bytes, 1, size, out) == size;
  if (out != nullptr) std::fclose(out);
  std::free(bytes);
  return is_written;
}

bool CopyThroughGraph(const char* input, const char* output) {
  CdfgGraph* graph = CdfgReadFile(input);
  const bool is_written = graph != nullptr && CdfgWriteFile(graph, output) == 0;
  CdfgFreeGraph(graph);
  return is_written;
}

// The output of the work just measured has all the bytes of the input.
bool IsSameFile(const char* left_path, const char* right_path) {
  std::FILE* left = std::fopen(left_path, "rb");
  std::FILE* right = std::fopen(right_path, "rb");
  bool is_same = left != nullptr && right != nullptr;
  std::vector<char> left_bytes(1 << 20);
  std::vector<char> right_bytes(1 << 20);
  while (is_same) {
    const std::size_t count = std::fread(left_bytes.data(), 1, left_bytes.size(), left);
    is_same = count == std::fread(right_bytes.data(), 1, right_bytes.size(), right) &&
              std::memcmp(left_bytes.data(), right_bytes.data(), count) == 0;
    if (count == 0) break;
  }
  if (left != nullptr) std::fclose(left);
  if (right != nullptr) std::fclose(right);
  return is_same;
}

Usage Measure(bool (*work)(const char*, const char*), const char* input, const char* output) {
  std::remove(output);
  return bench::RunInChild([&] { return work(input, output); });
}

bool ReadAndForget(const char* path) {
  CdfgGraph* graph = CdfgReadFile(path);
  CdfgFreeGraph(graph);
  return graph != nullptr;
}

double PeakOfReading(const char* path) {
  return bench::RunInChild([&] { return ReadAndForget(path); }).peak_bytes;
}

// How much memory one node with a huge id takes.
double MeasureHugeId(const char* scratch) {
  CdfgGraph* graph = CdfgNewGraph();
  CdfgWriteFile(graph, scratch);
  const double empty = PeakOfReading(scratch);
  CdfgSetKind(graph, CdfgAddNodeWithId(graph, kHugeId), CFG_ROOT);
  CdfgWriteFile(graph, scratch);
  CdfgFreeGraph(graph);
  return PeakOfReading(scratch) - empty;
}

int RunsWished(int argument_count, char** arguments) {
  constexpr const char* kRuns = "runs=";
  if (argument_count < 4 || std::strncmp(arguments[3], kRuns, std::strlen(kRuns)) != 0) return 7;
  return std::atoi(arguments[3] + std::strlen(kRuns));
}

}  // namespace

int main(int argument_count, char** arguments) {
  const int runs = RunsWished(argument_count, arguments);
  if (argument_count < 3 || runs < 1) {
    std::puts("usage: file_bench INPUT SCRATCH [runs=7]");
    return 2;
  }
  const char* input = arguments[1];
  const char* scratch = arguments[2];
  const long bytes = bench::SizeOfFile(input);
  if (bytes <= 0) {
    std::printf("file_bench: cannot read '%s'\n", input);
    return 1;
  }
  const std::size_t nodes = bench::CountNodes(input, scratch);
  std::vector<Usage> copies;
  std::vector<Usage> graphs;
  bool is_same = true;
  for (int i = 0; i < runs; ++i) {
    copies.push_back(Measure(CopyPlainly, input, scratch));
    is_same = is_same && IsSameFile(input, scratch);
    graphs.push_back(Measure(CopyThroughGraph, input, scratch));
    is_same = is_same && IsSameFile(input, scratch);
  }
  const Usage copy = bench::BestOf(copies);
  const Usage graph = bench::BestOf(graphs);
  const double one_node_peak = MeasureHugeId(scratch);
  std::remove(scratch);
  if (!is_same || !copy.succeeded || !graph.succeeded) {
    std::puts("file_bench: a run failed or its output differs from the input");
    return 1;
  }
  std::printf(
      "nodes=%zu bytes=%ld copy_cpu=%.4f graph_cpu=%.4f copy_wall=%.4f graph_wall=%.4f peak=%.0f "
      "one_node_peak=%.0f\n",
      nodes, bytes, copy.cpu_seconds, graph.cpu_seconds, copy.wall_seconds, graph.wall_seconds,
      graph.peak_bytes, one_node_peak);
  return 0;
}
