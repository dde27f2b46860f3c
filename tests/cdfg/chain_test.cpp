// Ranges along the links of a graph.
#include "cdfg/chain.h"

#include <functional>
#include <string>

#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

using support::Endless;
using support::GraphTest;
using support::Quiet;
using support::RunCatchingStop;

class Chains : public GraphTest {
 protected:
  // The ids that a range yields; `edit` runs in the loop body.
  template <class Range>
  std::string Visited(NodeId first, const std::function<void(NodeId)>& edit = {}) {
    std::string ids;
    for (const NodeId node : Range(graph, first)) {
      ids += (ids.empty() ? "" : " ") + std::to_string(node);
      if (edit) edit(node);
    }
    return ids;
  }
};

TEST_F(Chains, AlongNextAreVisitedInOrder) {
  const NodeId first = Add(CFG_GOTO);
  const NodeId second = Add(CFG_GOTO);
  const NodeId third = Add(CFG_GOTO);
  Chain({first, third, second});
  EXPECT_EQ(Visited<NextChain>(first), "1 3 2");
  EXPECT_EQ(Visited<NextChain>(third), "3 2");
}

TEST_F(Chains, AlongPrevAreVisitedBackwards) {
  for (int i = 0; i < 3; ++i) Add(CFG_GOTO);
  Chain({1, 2, 3});
  EXPECT_EQ(Visited<PrevChain>(3), "3 2 1");
}

TEST_F(Chains, OfMembersFollowTheirSons) {
  for (int i = 0; i < 3; ++i) Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, 1, DfgPort_STRSON, 3);
  CdfgSetAttrNode(graph, 3, DfgPort_STRSON, 2);
  CdfgSetNext(graph, 1, 2);
  EXPECT_EQ(Visited<MemberChain>(1), "1 3 2");
}

TEST_F(Chains, FromNoNodeAreEmpty) {
  EXPECT_EQ(Visited<NextChain>(0), "");
  EXPECT_EQ(Visited<PrevChain>(0), "");
  EXPECT_EQ(Visited<MemberChain>(0), "");
}

TEST_F(Chains, MayLeadToANodeThatIsNotThere) {
  CdfgSetNext(graph, Add(CFG_GOTO), 99);
  EXPECT_EQ(Visited<NextChain>(1), "1 99");
}

TEST_F(Chains, VisitWhatTheLoopBodyPutsBehindTheNode) {
  for (int i = 0; i < 3; ++i) Add(CFG_GOTO);
  Chain({1, 2});
  EXPECT_EQ(Visited<NextChain>(1,
                               [&](NodeId node) {
                                 if (node == 1) Chain({1, 3, 2});
                               }),
            "1 3 2");
}

TEST_F(Chains, DoNotVisitWhatTheLoopBodyPutsInFrontOfTheNode) {
  for (int i = 0; i < 3; ++i) Add(CFG_GOTO);
  Chain({1, 2});
  EXPECT_EQ(Visited<NextChain>(1,
                               [&](NodeId node) {
                                 if (node == 2) Chain({1, 3, 2});
                               }),
            "1 2");
}

TEST_F(Chains, EndWhereTheLoopBodyCutsThem) {
  for (int i = 0; i < 3; ++i) Add(CFG_GOTO);
  Chain({1, 2, 3});
  EXPECT_EQ(Visited<NextChain>(1,
                               [&](NodeId node) {
                                 if (node == 2) CdfgSetNext(graph, 2, 0);
                               }),
            "1 2");
}

TEST_F(Chains, ThatLeadBackToThemselvesStopTheRun) {
  CdfgSetNext(graph, Add(CFG_GOTO), 1);
  EXPECT_EQ(RunCatchingStop([&] { Visited<NextChain>(1); }), Endless(1));
  CdfgSetPrev(graph, 1, 1);
  EXPECT_EQ(RunCatchingStop([&] { Visited<PrevChain>(1); }), Endless(1));
  CdfgSetKind(graph, 1, DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, 1, DfgPort_STRSON, 1);
  EXPECT_EQ(RunCatchingStop([&] { Visited<MemberChain>(1); }), Endless(1));
}

TEST_F(Chains, ThatRunIntoACircleNameANodeOfTheCircle) {
  for (int i = 0; i < 300; ++i) Add(CFG_GOTO);
  for (NodeId id = 1; id < 300; ++id) CdfgSetNext(graph, id, id + 1);
  CdfgSetNext(graph, 300, 200);
  const auto outcome = RunCatchingStop([&] { Visited<NextChain>(1); });
  EXPECT_EQ(outcome.status, 255);
  unsigned node = 0;
  ASSERT_EQ(std::sscanf(outcome.output.c_str(), "kelvo : Error : Endless graph : node %u\n", &node),
            1);
  EXPECT_GE(node, 200U);
  EXPECT_LE(node, 300U);
}

TEST_F(Chains, ThatAreOnlyLongDoNotStopTheRun) {
  constexpr NodeId kLength = 1000000;
  for (NodeId id = 1; id <= kLength; ++id) {
    Add(CFG_GOTO);
    CdfgSetNext(graph, id, id + 1);
  }
  CdfgSetNext(graph, kLength, 0);
  std::size_t count = 0;
  EXPECT_EQ(RunCatchingStop([&] {
              for ([[maybe_unused]] const NodeId node : NextChain(graph, 1)) ++count;
            }),
            Quiet());
  EXPECT_EQ(count, kLength);
}

// --- References ----------------------------------------------------------------------------------

TEST_F(Chains, OfReferencesAreSkippedToTheOperand) {
  const NodeId first = Add(DFG_EDGE_PRESEDE);
  const NodeId second = Add(DFG_EDGE_PRESEDE);
  const NodeId operand = Add(DFG_INPUT_VAR);
  Chain({first, second, operand});
  EXPECT_EQ(CdfgSkipReferences(graph, first), operand);
  EXPECT_EQ(CdfgSkipReferences(graph, operand), operand);
}

TEST_F(Chains, OfOtherEdgesAreNotSkipped) {
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({edge, Add(DFG_INPUT_VAR)});
  EXPECT_EQ(CdfgSkipReferences(graph, edge), edge);
}

TEST_F(Chains, OfReferencesAloneLeadNowhere) {
  const NodeId first = Add(DFG_EDGE_PRESEDE);
  Chain({first, Add(DFG_EDGE_PRESEDE)});
  EXPECT_EQ(CdfgSkipReferences(graph, first), 0U);
  EXPECT_EQ(CdfgSkipReferences(graph, 0), 0U);
}

TEST_F(Chains, OfReferencesInACircleStopTheRun) {
  const NodeId edge = Add(DFG_EDGE_PRESEDE);
  CdfgSetNext(graph, edge, edge);
  EXPECT_EQ(RunCatchingStop([&] { CdfgSkipReferences(graph, edge); }), Endless(edge));
}

}  // namespace
