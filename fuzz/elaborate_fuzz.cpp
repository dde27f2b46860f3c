// Any bytes as a CDFG file, through the whole program: read, every step of the pipeline, written.
//
// A run may end in a stop (an endless graph), which here is an exception. What may not happen is a
// crash, a hang, an access outside memory or a leak; and what was written has to read back as the
// same file.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <vector>

#include "cdfg/copy.h"
#include "cdfg/edit.h"
#include "cdfg/file.h"
#include "cdfg/memory.h"
#include "driver/pipeline.h"

namespace {

struct Stopped {};

void ThrowStop(int) { throw Stopped{}; }

struct GraphReleaser {
  void operator()(CdfgGraph* graph) const { CdfgFreeGraph(graph); }
};
using OwnedGraph = std::unique_ptr<CdfgGraph, GraphReleaser>;

OwnedGraph ReadBytes(const std::uint8_t* bytes, std::size_t size) {
  std::vector<std::uint8_t> copy(bytes, bytes + size);
  copy.push_back(0);  // a stream of no bytes at all cannot be opened
  std::FILE* stream = fmemopen(copy.data(), copy.size(), "rb");
  if (stream == nullptr) std::abort();
  if (size == 0) std::fgetc(stream);
  OwnedGraph graph(CdfgReadStream(stream));
  std::fclose(stream);
  return graph;
}

std::vector<std::uint8_t> WrittenBytes(CdfgGraph* graph) {
  char* buffer = nullptr;
  std::size_t size = 0;
  std::FILE* stream = open_memstream(&buffer, &size);
  if (stream == nullptr) std::abort();
  CdfgWriteStream(graph, stream);
  std::fclose(stream);
  std::vector<std::uint8_t> bytes(buffer, buffer + size);
  std::free(buffer);
  return bytes;
}

void Elaborate(CdfgGraph* graph) {
  for (const PipelineStep& step : Pipeline()) RunStep(step, graph);
}

// What a stopped pass leaves in program-wide state is put back.
void Reset(CdfgGraph* graph) {
  CdfgClearUserTable(graph);
  CdfgRemapSwitch = 0;
  CdfgMemberShareSwitch = 0;
  CdfgSetDeclScope(0);
  FreePassState();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  CdfgSetStopHandler(ThrowStop);
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::abort();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const OwnedGraph graph = ReadBytes(bytes, size);
  try {
    Elaborate(graph.get());
    const std::vector<std::uint8_t> written = WrittenBytes(graph.get());
    const OwnedGraph again = ReadBytes(written.data(), written.size());
    if (WrittenBytes(again.get()) != written) std::abort();
  } catch (const Stopped&) {
  }
  Reset(graph.get());
  return 0;
}

#ifdef FUZZ_REPLAY_MAIN
int main(int argument_count, char** arguments) {
  LLVMFuzzerInitialize(&argument_count, &arguments);
  for (int i = 1; i < argument_count; ++i) {
    std::FILE* stream = std::fopen(arguments[i], "rb");
    if (stream == nullptr) return 1;
    std::vector<std::uint8_t> bytes;
    for (int byte = std::fgetc(stream); byte != EOF; byte = std::fgetc(stream)) {
      bytes.push_back(static_cast<std::uint8_t>(byte));
    }
    std::fclose(stream);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
  }
  return 0;
}
#endif
