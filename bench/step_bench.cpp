// step_bench: where the time of the complete pipeline goes.
//
//   step_bench INPUT OUTPUT
//
// Does in this one process what kelvo does, and prints a line for reading, for each step of the
// pipeline, for writing and for releasing the memory: its name, a tab, CPU seconds (user and system
// time), a tab, and how many nodes there are afterwards.
#include <cstdio>
#include <ctime>

#include "cdfg/file.h"
#include "cdfg/graph.h"
#include "cdfg/memory.h"
#include "driver/pipeline.h"
#include "driver/stop.h"

namespace {

double CpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Prints what has passed since the last call.
class Stages {
 public:
  void Done(const char* name, std::size_t nodes) {
    const double now = CpuSeconds();
    std::printf("%s\t%.4f\t%zu\n", name, now - last_, nodes);
    last_ = CpuSeconds();
  }

 private:
  double last_ = CpuSeconds();
};

}  // namespace

int main(int argument_count, char** arguments) {
  if (argument_count != 3) {
    std::puts("usage: step_bench INPUT OUTPUT");
    return 2;
  }
  MemSetOomHandler(StopShortOfMemory);
  Stages stages;
  CdfgGraph* graph = CdfgReadFile(arguments[1]);
  if (graph == nullptr) {
    std::printf("step_bench: cannot read '%s'\n", arguments[1]);
    return 1;
  }
  stages.Done("reading", CdfgNodeCount(graph));
  for (const PipelineStep& step : Pipeline()) {
    RunStep(step, graph);
    stages.Done(step.name, CdfgNodeCount(graph));
  }
  const bool is_written = CdfgWriteFile(graph, arguments[2]) == 0;
  stages.Done("writing", CdfgNodeCount(graph));
  CdfgFreeGraph(graph);
  FreePassState();
  stages.Done("releasing", 0);
  if (!is_written) std::printf("step_bench: cannot write '%s'\n", arguments[2]);
  return is_written ? 0 : 1;
}
