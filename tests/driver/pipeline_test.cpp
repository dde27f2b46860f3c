// The table of steps, and running one of them.
#include "driver/pipeline.h"

#include <string>
#include <vector>

#include "cdfg/graph_store.h"
#include "cdfg/name_set.h"
#include "cdfg/runaway.h"
#include "driver/stop.h"
#include "passes/module_list.h"
#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

using support::Outcome;
using support::Quiet;
using support::RunCatchingStop;

const Outcome kShortOfMemory = {255, "kelvo :Error : Short of memory\n"};

int runs = 0;

int CountRuns(CdfgGraph*) { return ++runs; }

int MakeMemoryShort(CdfgGraph* graph) {
  graph->memory_short = true;
  return 0;
}

int UseManySteps(CdfgGraph*) {
  for (NodeId i = 0; i < 1000; ++i) CdfgCountStep(7);
  return 0;
}

class PipelineSteps : public support::GraphTest {
 protected:
  void SetUp() override { runs = 0; }
  void TearDown() override { runaway::steps_left = UINT64_MAX; }
};

TEST_F(PipelineSteps, StandInTheirOrder) {
  std::vector<std::string> lines;
  for (const PipelineStep& step : Pipeline()) {
    lines.emplace_back(step.progress == nullptr ? "" : step.progress);
  }
  EXPECT_EQ(
      lines,
      (std::vector<std::string>{
          "--- Makeing of module function list's ...", "--- Makeing of name's table ...",
          "--- Statement to block ...", "--- Modify structure ...", "--- Constant expression ...",
          "", "", "", "", "--- Function roll instance ...", "--- Divison  expression ...",
          "--- Remake dfg node ...", "--- Manage opration -> Datapath ...",
          "--- Mul | Div exp -> temporary variable ...", "--- Divison inout directive ..."}));
}

TEST_F(PipelineSteps, HaveNamesOfTheirOwn) {
  std::vector<std::string> names;
  for (const PipelineStep& step : Pipeline()) names.emplace_back(step.name);
  std::sort(names.begin(), names.end());
  EXPECT_EQ(std::adjacent_find(names.begin(), names.end()), names.end());
}

TEST_F(PipelineSteps, RunOnceWhenRun) {
  EXPECT_EQ(RunCatchingStop([&] { RunStep({"step", nullptr, CountRuns}, graph); }), Quiet());
  EXPECT_EQ(runs, 1);
}

TEST_F(PipelineSteps, ThatAreNotBuiltDoNothing) {
  EXPECT_EQ(RunCatchingStop([&] { RunStep({"step", nullptr, nullptr}, graph); }), Quiet());
}

TEST_F(PipelineSteps, SayNothingThemselves) {
  EXPECT_EQ(RunCatchingStop([&] { RunStep({"step", "--- Line ...", CountRuns}, graph); }), Quiet());
}

TEST_F(PipelineSteps, EndTheRunWhenMemoryHasBecomeShort) {
  EXPECT_EQ(RunCatchingStop([&] {
              RunStep({"step", nullptr, MakeMemoryShort}, graph);
            }),
            kShortOfMemory);
}

TEST_F(PipelineSteps, AreGrantedStepsAnew) {
  runaway::steps_left = 10;
  EXPECT_EQ(RunCatchingStop([&] { RunStep({"step", nullptr, UseManySteps}, graph); }), Quiet());
}

TEST_F(PipelineSteps, AllRunOnAnEmptyGraph) {
  EXPECT_EQ(RunCatchingStop([&] {
              for (const PipelineStep& step : Pipeline()) RunStep(step, graph);
              FreePassState();
            }),
            Quiet());
  EXPECT_EQ(CdfgNodeCount(graph), 0U);
}

TEST_F(PipelineSteps, LeaveStateThatIsFreed) {
  NameSetInit();
  NameSetAdd("top");
  const NodeId function = Add(CFG_FUNCTION);
  CdfgSetAttrStr(graph, function, CfgFunc_NAME, "top");
  CdfgSetFileName(graph, function, "a.c");
  ASSERT_NE(AddModuleFunction(graph, function, nullptr), nullptr);
  ASSERT_EQ(IsModuleFunction("top", "a.c"), 1);
  FreePassState();
  EXPECT_EQ(NameSetContains("top"), 0);
  EXPECT_EQ(IsModuleFunction("top", "a.c"), 0);
  EXPECT_EQ(ModuleFunctionList, nullptr);
  FreePassState();
}

TEST(ShortOfMemory, StopsTheRunWithOneLine) {
  EXPECT_EQ(RunCatchingStop([] { StopShortOfMemory(); }), kShortOfMemory);
}

TEST(ShortOfMemory, IsAskedOfAGraph) {
  const support::OwnedGraph graph(CdfgNewGraph());
  EXPECT_EQ(RunCatchingStop([&] { StopIfMemoryIsShort(graph.get()); }), Quiet());
  graph->memory_short = true;
  EXPECT_EQ(RunCatchingStop([&] { StopIfMemoryIsShort(graph.get()); }), kShortOfMemory);
}

}  // namespace
