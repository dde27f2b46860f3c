// Loop bodies that cannot be walked to an end. A case cannot show them: the step that finds the
// module functions walks the same statements and stops the run first. So the function is put into
// the list by hand here.
#include "driver/pipeline.h"
#include "passes/module_list.h"
#include "passes/statement_to_block.h"
#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

// A module function whose body is one loop with one loop body.
class EndlessBlocks : public support::GraphTest {
 protected:
  EndlessBlocks() {
    const NodeId root = Add(CFG_ROOT);
    file_ = Add(CFG_FILEINFO);
    function_ = Add(CFG_FUNCTION);
    loop_ = Add(CFG_LOOP_BEGIN);
    body_ = Add(CFG_LOOP_STAT);
    Own(root, CfgRoot_ELEMENT, file_);
    Own(file_, CfgFileinfo_ELEMENT, function_);
    Own(function_, CfgFunc_STARTCFG, loop_);
    Own(loop_, CfgLoopBegin_CFG, body_);
    Place(function_, "top.c", 0, 0);
    CdfgSetAttrStr(graph, file_, CfgFileinfo_NAME, "top.c");
    CdfgSetAttrStr(graph, function_, CfgFunc_NAME, "f");
  }
  ~EndlessBlocks() override { FreePassState(); }

  void MakeModuleCode() { AddModuleFunction(graph, function_, nullptr); }
  support::Outcome Run() {
    return support::RunCatchingStop([this] { StatementsToBlocks(graph); });
  }
  // A node that stands behind itself.
  NodeId AddCircle(std::uint32_t kind) {
    const NodeId node = Add(kind);
    CdfgSetNext(graph, node, node);
    return node;
  }

  NodeId file_ = 0;
  NodeId function_ = 0;
  NodeId loop_ = 0;
  NodeId body_ = 0;
};

TEST_F(EndlessBlocks, BodyThatLeadsBackToItselfStopsTheRun) {
  MakeModuleCode();
  const NodeId statement = AddCircle(CFG_BREAK);
  Own(body_, CfgLoopStat_CFG, statement);
  EXPECT_EQ(Run(), support::Endless(statement));
}

TEST_F(EndlessBlocks, BlockThatLeadsBackToItselfStopsTheRun) {
  MakeModuleCode();
  const NodeId begin = AddCircle(CFG_STATE_BEGIN);
  Own(body_, CfgLoopStat_CFG, begin);
  EXPECT_EQ(Run(), support::Endless(begin));
}

TEST_F(EndlessBlocks, PartsOfALoopThatLeadInACircleStopTheRun) {
  MakeModuleCode();
  CdfgSetNext(graph, body_, body_);
  EXPECT_EQ(Run(), support::Endless(body_));
}

TEST_F(EndlessBlocks, BranchesThatLeadInACircleStopTheRun) {
  MakeModuleCode();
  const NodeId condition = Add(CFG_STATE_IF);
  const NodeId branch = AddCircle(CFG_IF_THEN);
  Own(body_, CfgLoopStat_CFG, condition);
  Own(condition, CfgStateIf_STATOPE, branch);
  EXPECT_EQ(Run(), support::Endless(branch));
}

TEST_F(EndlessBlocks, ItemsThatLeadInACircleStopTheRun) {
  MakeModuleCode();
  const NodeId selection = Add(CFG_STATE_CASEX);
  const NodeId item = AddCircle(CFG_CASE_ITEM);
  Own(body_, CfgLoopStat_CFG, selection);
  Own(selection, CfgStateCase_STATOPE, item);
  EXPECT_EQ(Run(), support::Endless(item));
}

TEST_F(EndlessBlocks, LoopThatContainsItselfStopsTheRun) {
  MakeModuleCode();
  Own(body_, CfgLoopStat_CFG, loop_);
  const support::Outcome outcome = Run();
  EXPECT_TRUE(outcome == support::Endless(loop_) || outcome == support::Endless(body_)) << outcome;
}

TEST_F(EndlessBlocks, FunctionThatIsNoModuleCodeIsNotWalked) {
  Own(body_, CfgLoopStat_CFG, AddCircle(CFG_BREAK));
  EXPECT_EQ(Run(), support::Quiet());
  EXPECT_EQ(CdfgGetKind(graph, CdfgGetAttr(graph, body_, CfgLoopStat_CFG)), CFG_BREAK);
}

TEST_F(EndlessBlocks, CircleOfJumpsIsNone) {
  MakeModuleCode();
  const NodeId statement = Add(CFG_GOTO);
  CdfgSetJump(graph, statement, statement);
  Own(body_, CfgLoopStat_CFG, statement);
  EXPECT_EQ(Run(), support::Quiet());
  const NodeId begin = CdfgGetAttr(graph, body_, CfgLoopStat_CFG);
  EXPECT_EQ(CdfgGetKind(graph, begin), CFG_STATE_BEGIN);
  EXPECT_EQ(CdfgGetNext(graph, begin), statement);
}

}  // namespace
