// Nodes of the store: making them, finding them by id, their fields, and user data.
#include <malloc.h>

#include <random>
#include <unordered_map>

#include "cdfg/graph.h"
#include "tests/support/graphs.h"
#include "tests/support/sanitizers.h"
#include "tests/support/stop.h"

namespace {

using support::GraphTest;
using support::OwnedGraph;
using support::Position;
using support::RunCatchingStop;

constexpr NodeId kLargestId = 4294967295U;

class GraphNodes : public GraphTest {};

// --- Making nodes --------------------------------------------------------------------------------

TEST_F(GraphNodes, OfANewGraphAreNone) {
  EXPECT_EQ(CdfgNodeCount(graph), 0U);
  EXPECT_EQ(CdfgGetRoot(graph), 0U);
  EXPECT_EQ(CdfgHasNode(graph, 1), 0);
  EXPECT_EQ(CdfgMemoryIsShort(graph), 0);
}

TEST_F(GraphNodes, AreNumberedFromOneInTheOrderOfTheirMaking) {
  EXPECT_EQ(CdfgAddNode(graph, CFG_ROOT), 1U);
  EXPECT_EQ(CdfgAddNode(graph, CFG_FILEINFO), 2U);
  EXPECT_EQ(CdfgAddNode(graph, CFG_FUNCTION), 3U);
  EXPECT_EQ(CdfgGetKind(graph, 2), static_cast<unsigned>(CFG_FILEINFO));
  EXPECT_EQ(CdfgNodeCount(graph), 3U);
}

TEST_F(GraphNodes, AreEmptyButForTheirKind) {
  const NodeId node = CdfgAddNode(graph, CFG_LOOP_BEGIN);
  EXPECT_EQ(CdfgGetKind(graph, node), 279U);
  EXPECT_EQ(CdfgGetPrev(graph, node), 0U);
  EXPECT_EQ(CdfgGetNext(graph, node), 0U);
  EXPECT_EQ(CdfgGetJump(graph, node), 0U);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 0);
  EXPECT_EQ(CdfgGetFileName(graph, node), nullptr);
  EXPECT_EQ(CdfgGetLine(graph, node), 0);
  EXPECT_EQ(CdfgGetColumn(graph, node), 0);
  EXPECT_EQ(CdfgGetUserData(graph, node), nullptr);
}

TEST_F(GraphNodes, MayHaveAnyNumberAsKind) {
  EXPECT_EQ(CdfgGetKind(graph, CdfgAddNode(graph, 0)), 0U);
  EXPECT_EQ(CdfgGetKind(graph, CdfgAddNode(graph, 52)), 52U);
  EXPECT_EQ(CdfgGetKind(graph, CdfgAddNode(graph, 0xFFFFFFFF)), 0xFFFFFFFFU);
}

TEST_F(GraphNodes, WithAGivenIdHaveThatIdAndNoKind) {
  EXPECT_EQ(CdfgAddNodeWithId(graph, 77), 77U);
  EXPECT_EQ(CdfgHasNode(graph, 77), 1);
  EXPECT_EQ(CdfgGetKind(graph, 77), 0U);
  EXPECT_EQ(CdfgHasNode(graph, 1), 0);
}

TEST_F(GraphNodes, CountOnFromTheIdGivenLast) {
  for (const NodeId id : {1U, 2U, 3U}) CdfgAddNodeWithId(graph, id);
  EXPECT_EQ(CdfgAddNode(graph, CFG_DECLARE), 4U);
}

TEST_F(GraphNodes, CountOnFromTheIdGivenLastAndNotFromTheHighest) {
  CdfgAddNodeWithId(graph, 500);
  CdfgAddNodeWithId(graph, 3);
  EXPECT_EQ(CdfgAddNode(graph, CFG_DECLARE), 4U);
  EXPECT_EQ(CdfgAddNode(graph, CFG_DECLARE), 5U);
}

TEST_F(GraphNodes, MayGetAnIdThatIsTakenWhenTheLastIdWasNotTheHighest) {
  CdfgAddNodeWithId(graph, 2);
  CdfgSetKind(graph, 2, CFG_ROOT);
  CdfgAddNodeWithId(graph, 1);
  EXPECT_EQ(CdfgAddNode(graph, CFG_DECLARE), 2U);
  EXPECT_EQ(CdfgGetKind(graph, 2), static_cast<unsigned>(CFG_DECLARE));
  EXPECT_EQ(CdfgNodeCount(graph), 3U);
}

TEST_F(GraphNodes, AreFoundBySearchingTheNewestOfAnId) {
  CdfgAddNodeWithId(graph, 9);
  CdfgSetLine(graph, 9, 1);
  CdfgAddNodeWithId(graph, 9);
  EXPECT_EQ(CdfgGetLine(graph, 9), 0);
  CdfgSetLine(graph, 9, 2);
  EXPECT_EQ(CdfgGetLine(graph, 9), 2);
  EXPECT_EQ(CdfgNodeCount(graph), 2U);
}

TEST_F(GraphNodes, AreFoundBySearchingTheNewestAlsoWhenIdsRanOnFromOne) {
  for (int i = 0; i < 5; ++i) Add(CFG_BREAK);
  CdfgAddNodeWithId(graph, 3);
  CdfgSetKind(graph, 3, CFG_GOTO);
  EXPECT_EQ(CdfgGetKind(graph, 3), static_cast<unsigned>(CFG_GOTO));
  for (const NodeId other : {1U, 2U, 4U, 5U}) {
    EXPECT_EQ(CdfgGetKind(graph, other), static_cast<unsigned>(CFG_BREAK)) << other;
  }
  EXPECT_EQ(CdfgAddNode(graph, CFG_RETURN), 4U) << "counts on from the id given last";
  EXPECT_EQ(CdfgGetKind(graph, 4), static_cast<unsigned>(CFG_RETURN));
  EXPECT_EQ(CdfgGetKind(graph, 5), static_cast<unsigned>(CFG_BREAK));
}

TEST_F(GraphNodes, WithIdZeroTakeAPlaceButAreNeverFound) {
  CdfgAddNodeWithId(graph, 0);
  EXPECT_EQ(CdfgNodeCount(graph), 1U);
  EXPECT_EQ(CdfgHasNode(graph, 0), 0);
  EXPECT_EQ(CdfgSetKind(graph, 0, CFG_ROOT), -1);
  EXPECT_EQ(CdfgAddNode(graph, CFG_ROOT), 1U) << "counts on from 0";
  EXPECT_EQ(CdfgGetKind(graph, 1), static_cast<unsigned>(CFG_ROOT));
}

TEST_F(GraphNodes, WithTheLargestIdAreFound) {
  EXPECT_EQ(CdfgAddNodeWithId(graph, kLargestId), kLargestId);
  EXPECT_EQ(CdfgSetKind(graph, kLargestId, CFG_ROOT), 0);
  EXPECT_EQ(CdfgGetKind(graph, kLargestId), static_cast<unsigned>(CFG_ROOT));
  EXPECT_EQ(CdfgGetRoot(graph), kLargestId);
}

TEST_F(GraphNodes, CannotBeAddedWhenTheIdsAreUsedUp) {
  CdfgAddNodeWithId(graph, kLargestId);
  EXPECT_EQ(CdfgAddNode(graph, CFG_DECLARE), 0U);
  EXPECT_EQ(CdfgNodeCount(graph), 1U);
  EXPECT_EQ(CdfgGetKind(graph, kLargestId), 0U);
}

TEST_F(GraphNodes, CanStillBeAddedUpToTheLargestId) {
  CdfgAddNodeWithId(graph, kLargestId - 1);
  EXPECT_EQ(CdfgAddNode(graph, CFG_DECLARE), kLargestId);
  EXPECT_EQ(CdfgAddNode(graph, CFG_DECLARE), 0U);
}

TEST_F(GraphNodes, OfSparseIdsAreAllFound) {
  const NodeId ids[] = {4000000000U, 1, 9000000, 9000001, 18000001, 2147483648U, 16, 4294967294U};
  for (const NodeId id : ids) {
    CdfgAddNodeWithId(graph, id);
    CdfgSetLine(graph, id, static_cast<std::int32_t>(id % 1000));
  }
  for (const NodeId id : ids) {
    EXPECT_EQ(CdfgGetLine(graph, id), static_cast<std::int32_t>(id % 1000)) << id;
    EXPECT_EQ(CdfgHasNode(graph, id), 1);
  }
  for (const NodeId id :
       {2U, 15U, 17U, 8999999U, 9000002U, 3999999999U, 4000000001U, 4294967295U}) {
    EXPECT_EQ(CdfgHasNode(graph, id), 0) << id;
  }
}

TEST_F(GraphNodes, OfDescendingIdsAreAllFound) {
  for (NodeId id = 20000; id >= 1; --id) {
    CdfgAddNodeWithId(graph, id);
    CdfgSetLine(graph, id, static_cast<std::int32_t>(id));
  }
  for (NodeId id = 1; id <= 20000; ++id) {
    ASSERT_EQ(CdfgGetLine(graph, id), static_cast<std::int32_t>(id));
  }
}

TEST_F(GraphNodes, CostMemoryByTheirNumberAndNotByTheirIds) {
  if (support::kAddressSanitizer) GTEST_SKIP() << "the sanitizer's allocator does not count";
  const auto in_use = [] {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
  };
  const std::size_t before = in_use();
  CdfgAddNodeWithId(graph, 4000000000U);
  CdfgSetKind(graph, 4000000000U, CFG_ROOT);
  EXPECT_LT(in_use() - before, 1024U * 1024U);
}

// --- Nodes with a position -----------------------------------------------------------------------

TEST_F(GraphNodes, TakeTheirPositionFromAnotherNode) {
  const NodeId source = Add(CFG_GOTO);
  Place(source, "a.c", 12, 7);
  const NodeId node = CdfgCreateNode(graph, CFG_DECLARE, source);
  EXPECT_EQ(node, 2U);
  EXPECT_EQ(CdfgGetKind(graph, node), static_cast<unsigned>(CFG_DECLARE));
  EXPECT_EQ(Position(graph, node), "a.c:12:7");
}

TEST_F(GraphNodes, TakeNothingButThePosition) {
  const NodeId source = Add(CFG_GOTO);
  CdfgSetPrev(graph, source, 1);
  CdfgSetNext(graph, source, 1);
  CdfgSetJump(graph, source, 1);
  CdfgSetAttrInt(graph, source, 1, 5);
  int scratch = 0;
  CdfgSetUserData(graph, source, &scratch);
  const NodeId node = CdfgCreateNode(graph, CFG_DECLARE, source);
  EXPECT_EQ(CdfgGetPrev(graph, node), 0U);
  EXPECT_EQ(CdfgGetNext(graph, node), 0U);
  EXPECT_EQ(CdfgGetJump(graph, node), 0U);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 0);
  EXPECT_EQ(CdfgGetUserData(graph, node), nullptr);
}

TEST_F(GraphNodes, TakeNoFileNameFromANodeWithoutOne) {
  const NodeId source = Add(CFG_GOTO);
  CdfgSetLine(graph, source, 3);
  const NodeId node = CdfgCreateNode(graph, CFG_DECLARE, source);
  EXPECT_EQ(Position(graph, node), "-:3:0");
}

TEST_F(GraphNodes, HaveNoPositionWithoutASource) {
  EXPECT_EQ(Position(graph, CdfgCreateNode(graph, CFG_DECLARE, 0)), "-:0:0");
  EXPECT_EQ(Position(graph, CdfgCreateNode(graph, CFG_DECLARE, 999)), "-:0:0");
}

TEST_F(GraphNodes, KeepTheFileNameTheyTookWhenTheSourceIsRenamedOrFreed) {
  const NodeId source = Add(CFG_GOTO);
  Place(source, "a.c", 1, 1);
  const NodeId node = CdfgCreateNode(graph, CFG_DECLARE, source);
  CdfgSetFileName(graph, source, "b.c");
  EXPECT_STREQ(CdfgGetFileName(graph, node), "a.c");
  CdfgFreeNode(graph, source);
  EXPECT_STREQ(CdfgGetFileName(graph, node), "a.c");
}

TEST_F(GraphNodes, ThatCannotBeMadeStopTheRun) {
  CdfgAddNodeWithId(graph, kLargestId);
  const auto outcome = RunCatchingStop([&] { CdfgCreateNode(graph, CFG_DECLARE, 0); });
  EXPECT_EQ(outcome, (support::Outcome{255, "kelvo : Error Short of memory. (create node)\n"}));
}

TEST_F(GraphNodes, ThatCanBeMadeStopNothing) {
  EXPECT_EQ(RunCatchingStop([&] { CdfgCreateNode(graph, CFG_DECLARE, 0); }), support::Quiet());
}

TEST(GraphNodesOfNoGraph, CannotBeMade) {
  EXPECT_EQ(CdfgAddNode(nullptr, CFG_ROOT), 0U);
  EXPECT_EQ(CdfgAddNodeWithId(nullptr, 1), 0U);
}

// --- Fields --------------------------------------------------------------------------------------

TEST_F(GraphNodes, KeepEachField) {
  const NodeId node = Add(CFG_GOTO);
  EXPECT_EQ(CdfgSetKind(graph, node, CFG_RETURN), 0);
  EXPECT_EQ(CdfgSetPrev(graph, node, 11), 0);
  EXPECT_EQ(CdfgSetNext(graph, node, 12), 0);
  EXPECT_EQ(CdfgSetJump(graph, node, kLargestId), 0);
  EXPECT_EQ(CdfgSetFileName(graph, node, "src/top.c"), 0);
  EXPECT_EQ(CdfgSetLine(graph, node, -5), 0);
  EXPECT_EQ(CdfgSetColumn(graph, node, 2147483647), 0);
  EXPECT_EQ(CdfgGetKind(graph, node), static_cast<unsigned>(CFG_RETURN));
  EXPECT_EQ(CdfgGetPrev(graph, node), 11U);
  EXPECT_EQ(CdfgGetNext(graph, node), 12U);
  EXPECT_EQ(CdfgGetJump(graph, node), kLargestId);
  EXPECT_STREQ(CdfgGetFileName(graph, node), "src/top.c");
  EXPECT_EQ(CdfgGetLine(graph, node), -5);
  EXPECT_EQ(CdfgGetColumn(graph, node), 2147483647);
}

TEST_F(GraphNodes, KeepACopyOfTheFileName) {
  const NodeId node = Add(CFG_GOTO);
  char name[] = "a.c";
  CdfgSetFileName(graph, node, name);
  name[0] = 'x';
  EXPECT_STREQ(CdfgGetFileName(graph, node), "a.c");
}

TEST_F(GraphNodes, MayBeGivenAnotherFileName) {
  const NodeId node = Add(CFG_GOTO);
  CdfgSetFileName(graph, node, "a.c");
  CdfgSetFileName(graph, node, "b.c");
  EXPECT_STREQ(CdfgGetFileName(graph, node), "b.c");
  CdfgSetFileName(graph, node, nullptr);
  EXPECT_EQ(CdfgGetFileName(graph, node), nullptr);
}

TEST_F(GraphNodes, TellFileNamesApart) {
  for (int i = 0; i < 1000; ++i) {
    CdfgSetFileName(graph, Add(CFG_GOTO), ("file" + std::to_string(i % 300) + ".c").c_str());
  }
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(std::string(CdfgGetFileName(graph, static_cast<NodeId>(i + 1))),
              "file" + std::to_string(i % 300) + ".c");
  }
}

TEST_F(GraphNodes, DoNotMixTheirFields) {
  const NodeId first = Add(CFG_GOTO);
  const NodeId second = Add(CFG_GOTO);
  Place(first, "a.c", 1, 2);
  CdfgSetNext(graph, first, second);
  EXPECT_EQ(Position(graph, second), "-:0:0");
  EXPECT_EQ(CdfgGetNext(graph, second), 0U);
}

// What every getter answers and every setter is told on a node that is not there.
void ExpectNothingThere(CdfgGraph* graph, NodeId id) {
  EXPECT_EQ(CdfgHasNode(graph, id), 0);
  EXPECT_EQ(CdfgGetKind(graph, id), 0U);
  EXPECT_EQ(CdfgGetPrev(graph, id), 0U);
  EXPECT_EQ(CdfgGetNext(graph, id), 0U);
  EXPECT_EQ(CdfgGetJump(graph, id), 0U);
  EXPECT_EQ(CdfgGetFileName(graph, id), nullptr);
  EXPECT_EQ(CdfgGetLine(graph, id), 0);
  EXPECT_EQ(CdfgGetColumn(graph, id), 0);
  EXPECT_EQ(CdfgGetUserData(graph, id), nullptr);
  EXPECT_EQ(CdfgGetAttrCount(graph, id), 0);
  EXPECT_EQ(CdfgGetAttrIdAt(graph, id, 1), 0U);
  EXPECT_EQ(CdfgGetAttrTypeAt(graph, id, 1), 0U);
  EXPECT_EQ(CdfgGetAttr(graph, id, 1), 0U);
  EXPECT_EQ(CdfgGetAttrInt(graph, id, 1), 0);
  EXPECT_EQ(CdfgGetAttrStr(graph, id, 1), nullptr);
  EXPECT_EQ(CdfgGetAttrChar(graph, id, 1), 0);
  EXPECT_EQ(CdfgGetAttrInt64(graph, id, 1), 0);
  EXPECT_EQ(CdfgGetAttrDouble(graph, id, 1), 0.0);
  int scratch = 0;
  EXPECT_EQ(CdfgSetKind(graph, id, CFG_ROOT), -1);
  EXPECT_EQ(CdfgSetPrev(graph, id, 1), -1);
  EXPECT_EQ(CdfgSetNext(graph, id, 1), -1);
  EXPECT_EQ(CdfgSetJump(graph, id, 1), -1);
  EXPECT_EQ(CdfgSetFileName(graph, id, "a.c"), -1);
  EXPECT_EQ(CdfgSetLine(graph, id, 1), -1);
  EXPECT_EQ(CdfgSetColumn(graph, id, 1), -1);
  EXPECT_EQ(CdfgSetUserData(graph, id, &scratch), -1);
  EXPECT_EQ(CdfgSetAttrChar(graph, id, 1, 1), -1);
  EXPECT_EQ(CdfgSetAttrInt(graph, id, 1, 1), -1);
  EXPECT_EQ(CdfgSetAttrInt64(graph, id, 1, 1), -1);
  EXPECT_EQ(CdfgSetAttrDouble(graph, id, 1, 1.0), -1);
  EXPECT_EQ(CdfgSetAttrNode(graph, id, 1, 1), -1);
  EXPECT_EQ(CdfgSetAttrStr(graph, id, 1, "text"), -1);
}

TEST(GraphNodesOfNoGraph, AnswerNothingAndTakeNothing) {
  ExpectNothingThere(nullptr, 0);
  ExpectNothingThere(nullptr, 1);
  EXPECT_EQ(CdfgGetRoot(nullptr), 0U);
  EXPECT_EQ(CdfgNodeCount(nullptr), 0U);
  EXPECT_EQ(CdfgNodeIdAt(nullptr, 0), 0U);
  EXPECT_EQ(CdfgMemoryIsShort(nullptr), 0);
}

TEST_F(GraphNodes, ThatAreUnknownAnswerNothingAndTakeNothing) {
  const NodeId node = Add(CFG_ROOT);
  CdfgSetAttrInt(graph, node, 1, 5);
  const auto outcome = RunCatchingStop([&] {
    ExpectNothingThere(graph, 0);
    ExpectNothingThere(graph, 2);
    ExpectNothingThere(graph, kLargestId);
  });
  EXPECT_EQ(outcome, support::Quiet());
  EXPECT_EQ(CdfgNodeCount(graph), 1U);
  EXPECT_EQ(support::Attributes(graph, node), "1=5");
}

TEST_F(GraphNodes, ThatWereFreedAnswerNothingAndTakeNothing) {
  const NodeId node = Add(CFG_ROOT);
  CdfgSetAttrInt(graph, node, 1, 5);
  Place(node, "a.c", 1, 1);
  CdfgFreeNode(graph, node);
  ExpectNothingThere(graph, node);
}

// --- Places in the order of making ---------------------------------------------------------------

TEST_F(GraphNodes, StandInTheOrderOfTheirMaking) {
  for (const NodeId id : {30U, 10U, 20U, 10U}) CdfgAddNodeWithId(graph, id);
  EXPECT_EQ(CdfgNodeCount(graph), 4U);
  EXPECT_EQ(CdfgNodeIdAt(graph, 0), 30U);
  EXPECT_EQ(CdfgNodeIdAt(graph, 1), 10U);
  EXPECT_EQ(CdfgNodeIdAt(graph, 2), 20U);
  EXPECT_EQ(CdfgNodeIdAt(graph, 3), 10U);
  EXPECT_EQ(CdfgNodeIdAt(graph, 4), 0U);
}

TEST_F(GraphNodes, KeepTheirPlaceWhenOthersAreFreed) {
  for (int i = 0; i < 3; ++i) Add(CFG_GOTO);
  CdfgFreeNode(graph, 2);
  EXPECT_EQ(CdfgNodeCount(graph), 3U);
  EXPECT_EQ(CdfgNodeIdAt(graph, 1), 0U);
  EXPECT_EQ(CdfgNodeIdAt(graph, 2), 3U);
}

// --- The root ------------------------------------------------------------------------------------

TEST_F(GraphNodes, OfTheRootKindAreFoundInTheOrderOfMaking) {
  CdfgAddNodeWithId(graph, 9);
  CdfgSetKind(graph, 9, CFG_FILEINFO);
  CdfgAddNodeWithId(graph, 8);
  CdfgSetKind(graph, 8, CFG_ROOT);
  CdfgAddNodeWithId(graph, 1);
  CdfgSetKind(graph, 1, CFG_ROOT);
  EXPECT_EQ(CdfgGetRoot(graph), 8U);
}

TEST_F(GraphNodes, WithoutARootAnswerZero) {
  Add(CFG_FILEINFO);
  EXPECT_EQ(CdfgGetRoot(graph), 0U);
}

TEST_F(GraphNodes, AreNoRootOnceFreed) {
  CdfgFreeNode(graph, Add(CFG_ROOT));
  EXPECT_EQ(CdfgGetRoot(graph), 0U);
  const NodeId second = Add(CFG_ROOT);
  EXPECT_EQ(CdfgGetRoot(graph), second);
}

// --- User data -----------------------------------------------------------------------------------

TEST_F(GraphNodes, CarryOnePointerEach) {
  int scratch[2] = {};
  const NodeId first = Add(CFG_DECLARE);
  const NodeId second = Add(CFG_DECLARE);
  EXPECT_EQ(CdfgSetUserData(graph, first, &scratch[0]), 0);
  EXPECT_EQ(CdfgGetUserData(graph, second), nullptr);
  EXPECT_EQ(CdfgSetUserData(graph, second, &scratch[1]), 0);
  EXPECT_EQ(CdfgGetUserData(graph, first), &scratch[0]);
  EXPECT_EQ(CdfgGetUserData(graph, second), &scratch[1]);
  EXPECT_EQ(CdfgSetUserData(graph, first, nullptr), 0);
  EXPECT_EQ(CdfgGetUserData(graph, first), nullptr);
}

TEST_F(GraphNodes, CarryTheirPointersHoweverManyTheyAre) {
  constexpr NodeId kCount = 40000;
  std::vector<int> scratch(kCount + 1);
  for (NodeId id = 1; id <= kCount; ++id) Add(CFG_DECLARE);
  for (NodeId id = 1; id <= kCount; id += 7) CdfgSetUserData(graph, id, &scratch[id]);
  for (NodeId id = 1; id <= kCount; ++id) {
    ASSERT_EQ(CdfgGetUserData(graph, id), id % 7 == 1 ? &scratch[id] : nullptr) << id;
  }
}

TEST_F(GraphNodes, DoNotInheritThePointerOfAFreedNodeOfTheirId) {
  int scratch = 0;
  const NodeId node = Add(CFG_DECLARE);
  CdfgSetUserData(graph, node, &scratch);
  CdfgFreeNode(graph, node);
  CdfgAddNodeWithId(graph, node);
  EXPECT_EQ(CdfgGetUserData(graph, node), nullptr);
}

// --- Several graphs ------------------------------------------------------------------------------

TEST_F(GraphNodes, OfTwoGraphsAreSeparate) {
  const OwnedGraph other(CdfgNewGraph());
  Add(CFG_ROOT);
  CdfgAddNode(other.get(), CFG_GOTO);
  CdfgSetLine(graph, 1, 10);
  CdfgSetLine(other.get(), 1, 20);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(CdfgGetKind(graph, 1), static_cast<unsigned>(CFG_ROOT));
    EXPECT_EQ(CdfgGetKind(other.get(), 1), static_cast<unsigned>(CFG_GOTO));
    EXPECT_EQ(CdfgGetLine(graph, 1), 10);
    EXPECT_EQ(CdfgGetLine(other.get(), 1), 20);
  }
}

// --- Against a plain model -----------------------------------------------------------------------

TEST_F(GraphNodes, AgreeWithAPlainMapUnderManyOperations) {
  std::mt19937 random(1);
  std::unordered_map<NodeId, std::int32_t> lines;
  for (int i = 0; i < 50000; ++i) {
    const NodeId id = 1 + static_cast<NodeId>(random()) % 3000;
    switch (random() % 4) {
      case 0:
        CdfgAddNodeWithId(graph, id);
        lines[id] = 0;
        break;
      case 1:
        CdfgFreeNode(graph, id);
        lines.erase(id);
        break;
      default:
        ASSERT_EQ(CdfgSetLine(graph, id, i), lines.contains(id) ? 0 : -1);
        if (lines.contains(id)) lines[id] = i;
        break;
    }
  }
  for (NodeId id = 1; id <= 3000; ++id) {
    ASSERT_EQ(CdfgHasNode(graph, id), lines.contains(id) ? 1 : 0) << id;
    if (lines.contains(id)) {
      ASSERT_EQ(CdfgGetLine(graph, id), lines[id]) << id;
    }
  }
}

}  // namespace
