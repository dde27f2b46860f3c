// pipeline_bench: what the complete pipeline costs, as the program that people run.
//
//   pipeline_bench INPUT SCRATCH [runs=5]
//
// Runs kelvo from INPUT to SCRATCH, and in turn with it plain_words, which only reads INPUT, walks
// it as 32-bit words and writes it. Both programs stand in the folder that this one was started
// from, both begin without SCRATCH, and each run is a process of its own. Prints one line of fields
// with their names:
//
//   nodes=.. bytes=.. out_nodes=.. out_bytes=.. kelvo_cpu=.. kelvo_wall=.. plain_cpu=.. peak=..
//   empty_peak=..
//
// CPU times are user and system time. Times in seconds, each the best of the runs; `peak` is the
// highest peak memory of kelvo in bytes, `empty_peak` what it takes for a file without nodes.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "bench/files.h"
#include "bench/measure.h"
#include "bench/warm_memory.h"
#include "cdfg/file.h"
#include "cdfg/graph.h"

namespace {

using bench::Usage;

struct Command {
  std::string folder;  // of the programs, with a slash at its end
  std::string input;
  std::string scratch;
  int runs = 5;
};

bool Parse(Command& command, int count, char** arguments) {
  if (count < 3 || count > 4) return false;
  const std::string own_path = arguments[0];
  command.folder = own_path.substr(0, own_path.rfind('/') + 1);
  command.input = arguments[1];
  command.scratch = arguments[2];
  constexpr const char* kRuns = "runs=";
  if (count == 4) {
    if (std::strncmp(arguments[3], kRuns, std::strlen(kRuns)) != 0) return false;
    command.runs = std::atoi(arguments[3] + std::strlen(kRuns));
  }
  return command.runs > 0;
}

struct Measured {
  std::vector<Usage> kelvo;
  std::vector<Usage> plain;
  std::size_t out_nodes = 0;
  long out_bytes = -1;
  std::size_t most_bytes = 0;  // what a run takes, its file in the page cache included
  Usage empty;
};

Usage RunKelvo(const Command& command, const std::string& input) {
  return bench::RunProgram(command.folder + "kelvo", {input, "info", command.scratch});
}

Usage MeasureEmpty(const Command& command) {
  CdfgGraph* graph = CdfgNewGraph();
  CdfgWriteFile(graph, command.scratch.c_str());
  CdfgFreeGraph(graph);
  return RunKelvo(command, command.scratch);
}

void MeasureOnce(const Command& command, Measured& measured) {
  const char* scratch = command.scratch.c_str();
  std::remove(scratch);
  bench::WarmMemory(measured.most_bytes);
  measured.plain.push_back(
      bench::RunProgram(command.folder + "plain_words", {command.input, command.scratch}));
  std::remove(scratch);
  bench::WarmMemory(measured.most_bytes);
  measured.kelvo.push_back(RunKelvo(command, command.input));
  measured.out_bytes = bench::SizeOfFile(scratch);
  measured.most_bytes = static_cast<std::size_t>(measured.kelvo.back().peak_bytes) +
                        static_cast<std::size_t>(std::max(measured.out_bytes, 0L));
}

Measured Measure(const Command& command) {
  Measured measured;
  measured.empty = MeasureEmpty(command);
  for (int i = 0; i < command.runs; ++i) MeasureOnce(command, measured);
  // The scratch file is read before it is overwritten with the number.
  measured.out_nodes = bench::CountNodes(command.scratch.c_str(), command.scratch.c_str());
  return measured;
}

}  // namespace

int main(int argument_count, char** arguments) {
  Command command;
  if (!Parse(command, argument_count, arguments)) {
    std::puts("usage: pipeline_bench INPUT SCRATCH [runs=5]");
    return 2;
  }
  const long bytes = bench::SizeOfFile(command.input.c_str());
  const std::size_t nodes = bench::CountNodes(command.input.c_str(), command.scratch.c_str());
  if (nodes == 0) {
    std::printf("pipeline_bench: cannot read '%s'\n", command.input.c_str());
    return 1;
  }
  const Measured measured = Measure(command);
  const Usage kelvo = bench::BestOf(measured.kelvo);
  const Usage plain = bench::BestOf(measured.plain);
  std::remove(command.scratch.c_str());
  // The pipeline makes nodes and takes none away.
  if (!kelvo.succeeded || !plain.succeeded || !measured.empty.succeeded ||
      measured.out_nodes < nodes) {
    std::puts("pipeline_bench: a run failed");
    return 1;
  }
  std::printf(
      "nodes=%zu bytes=%ld out_nodes=%zu out_bytes=%ld kelvo_cpu=%.4f kelvo_wall=%.4f "
      "plain_cpu=%.4f peak=%.0f empty_peak=%.0f\n",
      nodes, bytes, measured.out_nodes, measured.out_bytes, kelvo.cpu_seconds, kelvo.wall_seconds,
      plain.cpu_seconds, kelvo.peak_bytes, measured.empty.peak_bytes);
  return 0;
}
