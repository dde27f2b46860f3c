// The walks that every pass makes, and the order of their visits.
#include "cdfg/walk.h"

#include <functional>
#include <string>

#include "tests/support/graphs.h"
#include "tests/support/stack.h"
#include "tests/support/stop.h"

namespace {

using support::Endless;
using support::GraphTest;
using support::Quiet;
using support::RunCatchingStop;

// Words with a blank between them.
void AddWord(std::string& text, const std::string& word) {
  text += (text.empty() ? "" : " ") + word;
}

// --- ChainWalk -----------------------------------------------------------------------------------

class ChainWalks : public GraphTest {
 protected:
  // Visits everything and answers the ids in the order of the visits; a second visit is written
  // "-3". `visit` runs at each first one.
  std::string Trace(ChainWalk& walk, const std::function<void(NodeId)>& visit = {}) {
    std::string trace;
    while (const NodeId node = walk.Next()) {
      AddWord(trace, (walk.Leaving() ? "-" : "") + std::to_string(node));
      if (visit && !walk.Leaving()) visit(node);
    }
    return trace;
  }
  std::string Trace(NodeId first, const std::function<void(ChainWalk&, NodeId)>& visit = {}) {
    ChainWalk walk(graph, first);
    return Trace(walk, [&](NodeId node) {
      if (visit) visit(walk, node);
    });
  }
  void AddNodes(int count) {
    for (int i = 0; i < count; ++i) Add(CFG_COMMENT);
  }
};

TEST_F(ChainWalks, VisitAChainInOrder) {
  AddNodes(3);
  Chain({1, 3, 2});
  EXPECT_EQ(Trace(1), "1 3 2");
  EXPECT_EQ(Trace(3), "3 2");
}

TEST_F(ChainWalks, OfNothingVisitNothing) {
  EXPECT_EQ(Trace(0), "");
  ChainWalk never_started(graph);
  EXPECT_EQ(never_started.Next(), 0U);
}

TEST_F(ChainWalks, StayAtTheirEnd) {
  AddNodes(1);
  ChainWalk walk(graph, 1);
  EXPECT_EQ(walk.Next(), 1U);
  EXPECT_EQ(walk.Next(), 0U);
  EXPECT_EQ(walk.Next(), 0U);
}

TEST_F(ChainWalks, EnterTheOperandsOfAnOperationInTheirOrder) {
  const NodeId operation = Add(DFG_OPERATION);
  const NodeId left = Add(DFG_EDGE_PRESEDE);
  const NodeId right = Add(DFG_EDGE_PRESEDE);
  const NodeId condition = Add(DFG_EDGE_PRESEDE);
  const NodeId successor = Add(DFG_OPERATION);
  CdfgSetNext(graph, operation, successor);
  CdfgSetAttrNode(graph, operation, DfgOpe_COND, condition);
  CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, right);
  CdfgSetAttrNode(graph, operation, DfgOpe_LEFT, left);
  ChainWalk walk(graph, operation);
  EXPECT_EQ(walk.Next(), operation);
  walk.EnterOperands(operation, 7);
  for (const NodeId operand : {left, right, condition}) {
    EXPECT_EQ(walk.Next(), operand);
    EXPECT_EQ(walk.Tag(), 7);
  }
  EXPECT_EQ(walk.Next(), successor);
}

TEST_F(ChainWalks, EnterAChainBeforeTheSuccessor) {
  AddNodes(4);
  Chain({1, 2});
  Chain({3, 4});
  EXPECT_EQ(Trace(1,
                  [](ChainWalk& walk, NodeId node) {
                    if (node == 1) walk.Enter(3);
                  }),
            "1 3 4 2");
}

TEST_F(ChainWalks, EnterSeveralChainsInTheOrderAsked) {
  AddNodes(6);
  Chain({1, 2});
  Chain({4, 5});
  EXPECT_EQ(Trace(1,
                  [](ChainWalk& walk, NodeId node) {
                    if (node != 1) return;
                    walk.Enter(6);
                    walk.Enter(0);
                    walk.Enter(4);
                    walk.Enter(3);
                  }),
            "1 6 4 5 3 2");
}

TEST_F(ChainWalks, EnterChainsDepthFirst) {
  AddNodes(6);
  Chain({1, 2});
  Chain({3, 4});
  EXPECT_EQ(Trace(1,
                  [](ChainWalk& walk, NodeId node) {
                    if (node == 1) walk.Enter(3);
                    if (node == 3) walk.Enter(5);
                    if (node == 5) walk.Enter(6);
                  }),
            "1 3 5 6 4 2");
}

TEST_F(ChainWalks, EnterNothingThatWasNotAskedFor) {
  AddNodes(2);
  CdfgSetAttrNode(graph, 1, 1, 2);
  EXPECT_EQ(Trace(1), "1");
}

TEST_F(ChainWalks, KnowTheirDepthAndTags) {
  AddNodes(4);
  Chain({1, 2});
  ChainWalk walk(graph);
  walk.Start(1, 7);
  std::string trace;
  while (const NodeId node = walk.Next()) {
    AddWord(trace, std::to_string(node) + ":" + std::to_string(walk.Depth()) + ":" +
                       std::to_string(walk.Tag()));
    if (node == 1) walk.Enter(3, 8);
    if (node == 3) walk.Enter(4, 9);
  }
  EXPECT_EQ(trace, "1:0:7 3:1:8 4:2:9 2:0:7");
}

TEST_F(ChainWalks, MayBeStartedAnew) {
  AddNodes(4);
  Chain({1, 2});
  Chain({3, 4});
  ChainWalk walk(graph, 1);
  walk.Next();
  walk.Enter(4);
  walk.Start(3);
  EXPECT_EQ(Trace(walk), "3 4");
  walk.Start(2);
  EXPECT_EQ(Trace(walk), "2");
  walk.Start(0);
  EXPECT_EQ(Trace(walk), "");
}

// Leaves.

TEST_F(ChainWalks, WithLeavesVisitEnteredNodesAgainAfterTheirInside) {
  AddNodes(4);
  Chain({1, 2});
  Chain({3, 4});
  ChainWalk walk(graph, 1);
  walk.WithLeaves();
  EXPECT_EQ(Trace(walk,
                  [&](NodeId node) {
                    if (node == 1) walk.Enter(3);
                  }),
            "1 3 4 -1 2");
}

TEST_F(ChainWalks, WithLeavesVisitNodesAgainWhoseInsideIsEmpty) {
  AddNodes(2);
  Chain({1, 2});
  ChainWalk walk(graph, 1);
  walk.WithLeaves();
  EXPECT_EQ(Trace(walk,
                  [&](NodeId node) {
                    if (node == 1) walk.Enter(0);
                  }),
            "1 -1 2");
}

TEST_F(ChainWalks, WithLeavesVisitNoNodeAgainThatWasNotEntered) {
  AddNodes(2);
  Chain({1, 2});
  ChainWalk walk(graph, 1);
  walk.WithLeaves();
  EXPECT_EQ(Trace(walk), "1 2");
}

TEST_F(ChainWalks, WithLeavesVisitANodeAgainOnceForAllItsChains) {
  AddNodes(3);
  ChainWalk walk(graph, 1);
  walk.WithLeaves();
  EXPECT_EQ(Trace(walk,
                  [&](NodeId node) {
                    if (node != 1) return;
                    walk.Enter(2);
                    walk.Enter(3);
                  }),
            "1 2 3 -1");
}

TEST_F(ChainWalks, WithLeavesNest) {
  AddNodes(3);
  ChainWalk walk(graph, 1);
  walk.WithLeaves();
  EXPECT_EQ(Trace(walk,
                  [&](NodeId node) {
                    if (node < 3) walk.Enter(node + 1);
                  }),
            "1 2 3 -2 -1");
}

TEST_F(ChainWalks, EnterNothingAtASecondVisit) {
  AddNodes(3);
  ChainWalk walk(graph, 1);
  walk.WithLeaves();
  std::string trace;
  while (const NodeId node = walk.Next()) {
    AddWord(trace, (walk.Leaving() ? "-" : "") + std::to_string(node));
    if (node == 1) walk.Enter(walk.Leaving() ? 3 : 2);
  }
  EXPECT_EQ(trace, "1 2 -1");
}

TEST_F(ChainWalks, KnowTheirDepthAtASecondVisit) {
  AddNodes(2);
  ChainWalk walk(graph);
  walk.Start(1, 5);
  walk.WithLeaves();
  walk.Next();
  walk.Enter(2, 6);
  walk.Next();
  EXPECT_EQ(walk.Next(), 1U);
  EXPECT_TRUE(walk.Leaving());
  EXPECT_EQ(walk.Depth(), 0U);
  EXPECT_EQ(walk.Tag(), 5);
}

// Edits.

TEST_F(ChainWalks, VisitWhatIsPutBehindTheNode) {
  AddNodes(3);
  Chain({1, 2});
  EXPECT_EQ(Trace(1,
                  [&](ChainWalk&, NodeId node) {
                    if (node == 1) Chain({1, 3, 2});
                  }),
            "1 3 2");
}

TEST_F(ChainWalks, DoNotVisitWhatIsPutInFrontOfTheNode) {
  AddNodes(3);
  Chain({1, 2});
  EXPECT_EQ(Trace(1,
                  [&](ChainWalk&, NodeId node) {
                    if (node == 2) Chain({1, 3, 2});
                  }),
            "1 2");
}

TEST_F(ChainWalks, FollowALinkThatIsChangedInsideOfTheNode) {
  AddNodes(4);
  Chain({1, 2});
  EXPECT_EQ(Trace(1,
                  [&](ChainWalk& walk, NodeId node) {
                    if (node == 1) walk.Enter(3);
                    if (node == 3) CdfgSetNext(graph, 1, 4);
                  }),
            "1 3 4");
}

TEST_F(ChainWalks, EndWhereTheyAreCut) {
  AddNodes(2);
  Chain({1, 2});
  EXPECT_EQ(Trace(1, [&](ChainWalk&, NodeId node) { CdfgSetNext(graph, node, 0); }), "1");
}

// Circles and depth.

TEST_F(ChainWalks, StopTheRunInACircle) {
  AddNodes(1);
  CdfgSetNext(graph, 1, 1);
  EXPECT_EQ(RunCatchingStop([&] { Trace(1); }), Endless(1));
}

TEST_F(ChainWalks, StopTheRunWhenANodeContainsItself) {
  AddNodes(1);
  EXPECT_EQ(RunCatchingStop([&] { Trace(1, [](ChainWalk& walk, NodeId) { walk.Enter(1); }); }),
            Endless(1));
}

TEST_F(ChainWalks, StopTheRunWhenNodesContainEachOther) {
  AddNodes(4);
  const auto outcome = RunCatchingStop([&] {
    Trace(1, [](ChainWalk& walk, NodeId node) { walk.Enter(node == 4 ? 2 : node + 1); });
  });
  EXPECT_TRUE(outcome == Endless(2) || outcome == Endless(3) || outcome == Endless(4)) << outcome;
}

TEST_F(ChainWalks, DoNotStopWhenANodeStandsInTwoPlaces) {
  AddNodes(3);
  Chain({1, 2});
  std::string trace;
  EXPECT_EQ(RunCatchingStop([&] {
              trace = Trace(1, [](ChainWalk& walk, NodeId node) {
                if (node < 3) walk.Enter(3);
              });
            }),
            Quiet());
  EXPECT_EQ(trace, "1 3 2 3");
}

TEST_F(ChainWalks, AMillionNodesDeepNeedNoDeepStack) {
  constexpr NodeId kDepth = 1000000;
  AddNodes(static_cast<int>(kDepth));
  std::size_t visits = 0;
  support::RunOnStack(support::kDefaultStack, [&] {
    ChainWalk walk(graph, 1);
    walk.WithLeaves();
    while (const NodeId node = walk.Next()) {
      ++visits;
      if (!walk.Leaving() && node < kDepth) walk.Enter(node + 1);
    }
  });
  EXPECT_EQ(visits, kDepth * 2 - 1);
}

// --- StatementWalk -------------------------------------------------------------------------------

class StatementWalks : public GraphTest {
 protected:
  std::string Trace(NodeId first, StatementScope scope = StatementScope::Body) {
    StatementWalk walk(graph, first, scope);
    return Trace(walk);
  }
  std::string Trace(StatementWalk& walk) {
    std::string trace;
    while (const NodeId node = walk.Next()) {
      AddWord(trace, (walk.Leaving() ? "-" : "") + std::to_string(node));
    }
    return trace;
  }
  // A statement 1 of `kind` that owns, by `attribute`, a list of 2, 3 and 4 of these kinds. Node 5
  // stands behind the statement; bodies are numbered from 6 on.
  void AddOwner(std::uint32_t kind, std::uint32_t attribute,
                std::initializer_list<std::uint32_t> parts) {
    Add(kind);
    for (const std::uint32_t part : parts) Add(part);
    Add(CFG_RETURN);
    Chain({1, 5});
    Own(1, attribute, 2);
    Chain({2, 3, 4});
  }
  void AddBody(NodeId part, std::uint32_t attribute) { Own(part, attribute, Add(CFG_BREAK)); }
};

TEST_F(StatementWalks, VisitStatementsInOrder) {
  const NodeId first = Add(CFG_STATE_DATAPATH);
  const NodeId second = Add(CFG_STATE_LABEL);
  const NodeId third = Add(CFG_GOTO);
  Chain({first, second, third});
  EXPECT_EQ(Trace(first), "1 2 3");
  EXPECT_EQ(Trace(second), "2 3");
  EXPECT_EQ(Trace(0), "");
}

TEST_F(StatementWalks, EnterBothBranchesOfAnIf) {
  AddOwner(CFG_STATE_IF, CfgStateIf_STATOPE, {CFG_IF_THEN, CFG_COMMENT, CFG_IF_ELSE});
  AddBody(2, CfgIfThen_CFG);
  AddBody(4, CfgIfElse_CFG);
  EXPECT_EQ(Trace(1), "1 2 6 4 7 5");
}

TEST_F(StatementWalks, StepOverWhatIsNoBranchInAnIf) {
  AddOwner(CFG_STATE_IF, CfgStateIf_STATOPE, {CFG_CASE_ITEM, CFG_LOOP_STAT, CFG_IF_ELSE});
  AddBody(2, CfgCaseItem_CFG);
  AddBody(3, CfgLoopStat_CFG);
  AddBody(4, CfgIfElse_CFG);
  EXPECT_EQ(Trace(1), "1 4 8 5");
}

TEST_F(StatementWalks, EnterTheItemsOfEveryKindOfCase) {
  for (const std::uint32_t kind : {269U, 270U, 271U}) {
    const NodeId statement = Add(kind);
    const NodeId item = Add(CFG_CASE_ITEM);
    const NodeId body = Add(CFG_BREAK);
    Own(statement, CfgStateCase_STATOPE, item);
    Own(item, CfgCaseItem_CFG, body);
    EXPECT_EQ(Trace(statement),
              std::to_string(statement) + " " + std::to_string(item) + " " + std::to_string(body))
        << kind;
  }
}

TEST_F(StatementWalks, StepOverWhatIsNoItemInACase) {
  AddOwner(CFG_STATE_CASE, CfgStateCase_STATOPE, {CFG_IF_THEN, CFG_CASE_ITEM, CFG_BREAK});
  AddBody(2, CfgIfThen_CFG);
  AddBody(3, CfgCaseItem_CFG);
  EXPECT_EQ(Trace(1), "1 3 7 5");
}

TEST_F(StatementWalks, VisitThePartsOfALoopAndEnterItsBody) {
  AddOwner(CFG_LOOP_BEGIN, CfgLoopBegin_CFG, {CFG_LOOP_INIT, CFG_LOOP_COND, CFG_LOOP_STAT});
  const NodeId step = Add(CFG_LOOP_STEP);
  Chain({4, step});
  AddBody(4, CfgLoopStat_CFG);
  EXPECT_EQ(Trace(1), "1 2 3 4 7 6 5");
}

TEST_F(StatementWalks, StepOverWhatIsNoPartInALoop) {
  AddOwner(CFG_LOOP_BEGIN, CfgLoopBegin_CFG, {CFG_BREAK, CFG_IF_THEN, CFG_LOOP_STAT});
  AddBody(3, CfgIfThen_CFG);
  AddBody(4, CfgLoopStat_CFG);
  EXPECT_EQ(Trace(1), "1 4 7 5");
}

TEST_F(StatementWalks, EnterNoOtherPartOfALoopThanItsBody) {
  AddOwner(CFG_LOOP_BEGIN, CfgLoopBegin_CFG, {CFG_LOOP_INIT, CFG_LOOP_COND, CFG_LOOP_STEP});
  for (const NodeId part : {2U, 3U, 4U}) AddBody(part, 2);
  EXPECT_EQ(Trace(1), "1 2 3 4 5");
}

TEST_F(StatementWalks, EnterNoExpressions) {
  const NodeId path = Add(CFG_STATE_DATAPATH);
  Own(path, CfgDatapath_OPELIST, Add(DFG_MANAGE_OPERATION));
  const NodeId condition = Add(CFG_STATE_IF);
  Own(condition, CfgStateIf_CONDOPE, Add(DFG_MANAGE_OPERATION));
  Chain({path, condition});
  EXPECT_EQ(Trace(path), "1 3");
}

TEST_F(StatementWalks, StepOverPartsOutsideTheirOwners) {
  for (const StatementScope scope : {StatementScope::Body, StatementScope::Elements}) {
    for (const std::uint32_t kind : {266U, 267U, 272U, 281U, 282U, 283U, 284U}) {
      const NodeId part = Add(kind);
      const NodeId behind = Add(CFG_RETURN);
      Chain({part, behind});
      AddBody(part, 2);
      AddBody(part, 3);
      EXPECT_EQ(Trace(part, scope), std::to_string(behind)) << kind;
    }
  }
}

TEST_F(StatementWalks, EnterNestedStatements) {
  // loop { if { loop { } } else { } }
  const NodeId loop = Add(CFG_LOOP_BEGIN);
  const NodeId body = Add(CFG_LOOP_STAT);
  const NodeId condition = Add(CFG_STATE_IF);
  const NodeId then = Add(CFG_IF_THEN);
  const NodeId otherwise = Add(CFG_IF_ELSE);
  const NodeId inner_loop = Add(CFG_LOOP_BEGIN);
  const NodeId inner_body = Add(CFG_LOOP_STAT);
  const NodeId leave = Add(CFG_BREAK);
  const NodeId again = Add(CFG_CONTINUE);
  Own(loop, CfgLoopBegin_CFG, body);
  Own(body, CfgLoopStat_CFG, condition);
  Own(condition, CfgStateIf_STATOPE, then);
  Chain({then, otherwise});
  Own(then, CfgIfThen_CFG, inner_loop);
  Own(inner_loop, CfgLoopBegin_CFG, inner_body);
  Own(inner_body, CfgLoopStat_CFG, leave);
  Own(otherwise, CfgIfElse_CFG, again);
  EXPECT_EQ(Trace(loop), "1 2 3 4 6 7 8 5 9");
}

TEST_F(StatementWalks, KnowDepthAndParts) {
  AddOwner(CFG_STATE_IF, CfgStateIf_STATOPE, {CFG_IF_THEN, CFG_COMMENT, CFG_COMMENT});
  AddBody(2, CfgIfThen_CFG);
  StatementWalk walk(graph, 1);
  std::string trace;
  while (const NodeId node = walk.Next()) {
    AddWord(trace, std::to_string(node) + ":" + std::to_string(walk.Depth()) +
                       (walk.AtPart() ? "part" : ""));
  }
  EXPECT_EQ(trace, "1:0 2:1part 6:2 5:0");
}

TEST_F(StatementWalks, StayOutOfWhatIsSkipped) {
  AddOwner(CFG_STATE_IF, CfgStateIf_STATOPE, {CFG_IF_THEN, CFG_IF_ELSE, CFG_COMMENT});
  AddBody(2, CfgIfThen_CFG);
  AddBody(3, CfgIfElse_CFG);
  for (const auto& [skipped, expected] :
       {std::pair{1U, "1 5"}, {2U, "1 2 3 7 5"}, {3U, "1 2 6 3 5"}, {6U, "1 2 6 3 7 5"}}) {
    StatementWalk walk(graph, 1);
    std::string trace;
    while (const NodeId node = walk.Next()) {
      AddWord(trace, std::to_string(node));
      if (node == skipped) walk.Skip();
    }
    EXPECT_EQ(trace, expected) << skipped;
  }
}

TEST_F(StatementWalks, WithLeavesVisitOwnersAgain) {
  AddOwner(CFG_STATE_IF, CfgStateIf_STATOPE, {CFG_IF_THEN, CFG_COMMENT, CFG_IF_ELSE});
  AddBody(2, CfgIfThen_CFG);
  StatementWalk walk(graph, 1);
  walk.WithLeaves();
  EXPECT_EQ(Trace(walk), "1 2 6 -2 4 -4 -1 5");
}

TEST_F(StatementWalks, EnterTheInsideThatTheVisitGivesANode) {
  const NodeId condition = Add(CFG_STATE_IF);
  const NodeId branch = Add(CFG_IF_THEN);
  AddBody(branch, CfgIfThen_CFG);
  StatementWalk walk(graph, condition);
  EXPECT_EQ(walk.Next(), condition);
  Own(condition, CfgStateIf_STATOPE, branch);
  EXPECT_EQ(Trace(walk), "2 3");
}

TEST_F(StatementWalks, EnterANodeAsTheKindThatTheVisitGivesIt) {
  const NodeId statement = Add(CFG_COMMENT);
  const NodeId branch = Add(CFG_IF_THEN);
  CdfgSetAttrNode(graph, statement, CfgStateIf_STATOPE, branch);
  StatementWalk walk(graph, statement);
  EXPECT_EQ(walk.Next(), statement);
  CdfgSetKind(graph, statement, CFG_STATE_IF);
  EXPECT_EQ(Trace(walk), "2");
}

TEST_F(StatementWalks, VisitWhatIsPutBehindAStatementAndNotWhatIsPutInFront) {
  for (int i = 0; i < 4; ++i) Add(CFG_BREAK);
  Chain({1, 2});
  StatementWalk walk(graph, 1);
  std::string trace;
  while (const NodeId node = walk.Next()) {
    AddWord(trace, std::to_string(node));
    if (node == 1) Chain({1, 3, 2});
    if (node == 2) Chain({3, 4, 2});
  }
  EXPECT_EQ(trace, "1 3 2");
}

// Scopes.

TEST_F(StatementWalks, OfABodyEnterNoFunctions) {
  const NodeId function = Add(CFG_FUNCTION);
  AddBody(function, CfgFunc_STARTCFG);
  EXPECT_EQ(Trace(function), "1");
}

TEST_F(StatementWalks, OfElementsEnterFunctions) {
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId prototype = Add(CFG_PROTO_FUNC);
  const NodeId file = Add(CFG_FILEINFO);
  Chain({function, prototype, file});
  AddBody(function, CfgFunc_STARTCFG);
  AddBody(prototype, CfgFunc_STARTCFG);
  AddBody(file, CfgFileinfo_ELEMENT);
  EXPECT_EQ(Trace(function, StatementScope::Elements), "1 4 2 3");
}

TEST_F(StatementWalks, AnywhereEnterAllThatHoldsStatementsOrElements) {
  struct Row {
    std::uint32_t kind;
    std::uint32_t attribute;
  };
  for (const Row& row : {Row{17, 1},
                         {32, 1},
                         {36, 1},
                         {265, 4},
                         {266, 2},
                         {267, 2},
                         {269, 4},
                         {270, 4},
                         {271, 4},
                         {272, 3},
                         {279, 2},
                         {283, 2}}) {
    const NodeId owner = Add(row.kind);
    const NodeId inside = Add(CFG_BREAK);
    CdfgSetAttrNode(graph, owner, row.attribute, inside);
    EXPECT_EQ(Trace(owner, StatementScope::Anywhere),
              std::to_string(owner) + " " + std::to_string(inside))
        << row.kind;
  }
}

TEST_F(StatementWalks, AnywhereStepOverNothing) {
  AddOwner(CFG_STATE_IF, CfgStateIf_STATOPE, {CFG_CASE_ITEM, CFG_COMMENT, CFG_IF_ELSE});
  AddBody(2, CfgCaseItem_CFG);
  AddBody(4, CfgIfElse_CFG);
  EXPECT_EQ(Trace(1, StatementScope::Anywhere), "1 2 6 3 4 7 5");
}

// Circles and depth.

TEST_F(StatementWalks, StopTheRunInACircle) {
  const NodeId statement = Add(CFG_BREAK);
  CdfgSetNext(graph, statement, statement);
  EXPECT_EQ(RunCatchingStop([&] { Trace(statement); }), Endless(statement));
}

TEST_F(StatementWalks, StopTheRunWhenABodyContainsItsOwner) {
  const NodeId loop = Add(CFG_LOOP_BEGIN);
  const NodeId body = Add(CFG_LOOP_STAT);
  Own(loop, CfgLoopBegin_CFG, body);
  CdfgSetAttrNode(graph, body, CfgLoopStat_CFG, loop);
  const auto outcome = RunCatchingStop([&] { Trace(loop); });
  EXPECT_TRUE(outcome == Endless(loop) || outcome == Endless(body)) << outcome;
}

TEST_F(StatementWalks, DoNotStopAtCirclesTheyDoNotFollow) {
  const NodeId statement = Add(CFG_BREAK);
  CdfgSetPrev(graph, statement, statement);
  CdfgSetJump(graph, statement, statement);
  CdfgSetAttrNode(graph, statement, 2, statement);
  EXPECT_EQ(RunCatchingStop([&] { Trace(statement); }), Quiet());
}

TEST_F(StatementWalks, AHundredThousandStatementsDeepNeedNoDeepStack) {
  constexpr NodeId kDepth = 100000;
  for (NodeId id = 1; id <= kDepth * 2; id += 2) {
    Add(CFG_LOOP_BEGIN);
    Add(CFG_LOOP_STAT);
    if (id > 1) CdfgSetAttrNode(graph, id - 1, CfgLoopStat_CFG, id);
    CdfgSetAttrNode(graph, id, CfgLoopBegin_CFG, id + 1);
  }
  std::size_t visits = 0;
  support::RunOnStack(support::kDefaultStack, [&] {
    StatementWalk walk(graph, 1);
    while (walk.Next() != 0) ++visits;
  });
  EXPECT_EQ(visits, kDepth * 2);
}

// --- Operation lists -----------------------------------------------------------------------------

TEST_F(StatementWalks, KnowTheOperationListsOfStatements) {
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    const NodeId node = Add(kind);
    CdfgSetAttrNode(graph, node, 1, 1001);
    CdfgSetAttrNode(graph, node, 2, 1002);
    CdfgSetAttrNode(graph, node, 3, 1003);
    const bool has_list = kind == 264 || kind == 265 || kind == 269 || kind == 270 || kind == 271 ||
                          kind == 281 || kind == 282 || kind == 284 || kind == 288;
    EXPECT_EQ(CdfgGetOperationList(graph, node), has_list ? 1002U : 0U) << kind;
  }
  EXPECT_EQ(CdfgGetOperationList(graph, 0), 0U);
}

// --- Files and functions -------------------------------------------------------------------------

int IsTop(const char* name, const char* file) {
  return name != nullptr && file != nullptr && std::string(name) == "top" &&
                 std::string(file) == "a.c"
             ? 1
             : 0;
}
int IsAny(const char*, const char*) { return 1; }
int IsNameless(const char* name, const char* file) {
  return name == nullptr && file == nullptr ? 1 : 0;
}
int AnswersTwo(const char*, const char*) { return 2; }

class Files : public GraphTest {
 protected:
  NodeId AddFile(const char* name) {
    const NodeId file = Add(CFG_FILEINFO);
    if (name != nullptr) CdfgSetAttrStr(graph, file, CfgFileinfo_NAME, name);
    return file;
  }
  NodeId AddFunction(const char* name) {
    const NodeId function = Add(CFG_FUNCTION);
    if (name != nullptr) CdfgSetAttrStr(graph, function, CfgFunc_NAME, name);
    return function;
  }
  std::string Functions(FunctionCursor::Test is_wanted) {
    FunctionCursor functions(graph, is_wanted);
    std::string trace;
    while (const NodeId function = functions.Next()) AddWord(trace, std::to_string(function));
    return trace;
  }

  const NodeId root = Add(CFG_ROOT);
};

TEST_F(Files, AreTheFileNodesAmongTheElementsOfTheRoot) {
  const NodeId first = AddFile("a.c");
  const NodeId other = Add(CFG_FUNCTION);
  const NodeId second = AddFile("b.c");
  AddFile("not linked");
  Own(root, CfgRoot_ELEMENT, first);
  Chain({first, other, second});
  EXPECT_EQ(CdfgGetFiles(graph), (std::vector<NodeId>{first, second}));
}

TEST_F(Files, AreNoneWithoutARootOrElements) {
  EXPECT_TRUE(CdfgGetFiles(graph).empty());
  CdfgFreeNode(graph, root);
  EXPECT_TRUE(CdfgGetFiles(graph).empty());
}

TEST_F(Files, InACircleStopTheRun) {
  const NodeId file = AddFile("a.c");
  Own(root, CfgRoot_ELEMENT, file);
  CdfgSetNext(graph, file, file);
  EXPECT_EQ(RunCatchingStop([&] { CdfgGetFiles(graph); }), Endless(file));
}

TEST_F(Files, HoldFunctionsInTheOrderOfFiles) {
  const NodeId file = AddFile("b.c");
  const NodeId second_file = AddFile("a.c");
  const NodeId first = AddFunction("top");
  const NodeId second = AddFunction("sub");
  const NodeId third = AddFunction("top");
  Own(root, CfgRoot_ELEMENT, second_file);
  Chain({second_file, file});
  Own(file, CfgFileinfo_ELEMENT, first);
  Own(second_file, CfgFileinfo_ELEMENT, second);
  Chain({second, third});
  EXPECT_EQ(Functions(IsAny), "5 6 4");
  EXPECT_EQ(Functions(IsTop), "6") << "the one of that name in that file";
}

TEST_F(Files, HoldOnlyTheFunctionsDirectlyAmongTheirElements) {
  const NodeId file = AddFile("a.c");
  const NodeId definition = Add(CFG_DECLARE_DEF);
  const NodeId prototype = Add(CFG_PROTO_FUNC);
  const NodeId module = Add(CFG_MODULE);
  Own(root, CfgRoot_ELEMENT, file);
  Own(file, CfgFileinfo_ELEMENT, definition);
  Chain({definition, prototype, module});
  Own(definition, CfgDeclDef_DECL, AddFunction("top"));
  Own(module, CfgModule_ELEMENT, AddFunction("top"));
  EXPECT_EQ(Functions(IsAny), "");
}

TEST_F(Files, HoldNoFunctionsThatStandBesideThem) {
  const NodeId function = AddFunction("top");
  Own(root, CfgRoot_ELEMENT, function);
  EXPECT_EQ(Functions(IsAny), "");
}

TEST_F(Files, MayHoldFunctionsWithoutNames) {
  const NodeId file = AddFile(nullptr);
  const NodeId function = AddFunction(nullptr);
  Own(root, CfgRoot_ELEMENT, file);
  Own(file, CfgFileinfo_ELEMENT, function);
  EXPECT_EQ(Functions(IsNameless), std::to_string(function));
}

TEST_F(Files, HoldTheFunctionsThatAreAnsweredWithOne) {
  const NodeId file = AddFile("a.c");
  Own(root, CfgRoot_ELEMENT, file);
  Own(file, CfgFileinfo_ELEMENT, AddFunction("top"));
  EXPECT_EQ(Functions(AnswersTwo), "");
}

TEST_F(Files, AreReadOnWhenElementsArePutInFrontOfTheFunction) {
  const NodeId file = AddFile("a.c");
  const NodeId first = AddFunction("top");
  const NodeId second = AddFunction("sub");
  const NodeId added = AddFunction("new");
  Own(root, CfgRoot_ELEMENT, file);
  Own(file, CfgFileinfo_ELEMENT, first);
  Chain({first, second});
  FunctionCursor functions(graph, IsAny);
  EXPECT_EQ(functions.Next(), first);
  Own(file, CfgFileinfo_ELEMENT, added);
  Chain({added, first});
  EXPECT_EQ(functions.Next(), second);
  EXPECT_EQ(functions.Next(), 0U);
}

}  // namespace
