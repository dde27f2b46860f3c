#include "cdfg/runaway.h"

#include <cstdio>

#include "cdfg/memory.h"

namespace {

constexpr std::uint64_t kStepsPerNode = 10'000;
constexpr std::uint64_t kStepsAtLeast = 500'000'000;

}  // namespace

void CdfgStopEndless(NodeId node) {
  std::printf("kelvo : Error : Endless graph : node %u\n", node);
  CdfgStop(255);
}

void CdfgGrantSteps(const CdfgGraph* graph) {
  runaway::steps_left = kStepsAtLeast + kStepsPerNode * CdfgNodeCount(graph);
}
