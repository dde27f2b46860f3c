// Releasing nodes, trees and graphs, and which references own what they name.
#include <set>
#include <string>
#include <utility>

#include "cdfg/graph.h"
#include "tests/support/graphs.h"
#include "tests/support/stack.h"

namespace {

using support::Attributes;
using support::GraphTest;
using support::OwnedGraph;

class GraphFree : public GraphTest {
 protected:
  // The ids of the nodes that are still there: "1 3".
  std::string Living() const {
    std::string ids;
    for (std::size_t place = 0; place < CdfgNodeCount(graph); ++place) {
      const NodeId id = CdfgNodeIdAt(graph, place);
      if (id != 0) ids += (ids.empty() ? "" : " ") + std::to_string(id);
    }
    return ids;
  }
};

// --- One node ------------------------------------------------------------------------------------

TEST_F(GraphFree, OfANodeTakesItAway) {
  const NodeId node = Add(CFG_DECLARE);
  CdfgFreeNode(graph, node);
  EXPECT_EQ(CdfgGetKind(graph, node), 0U);
  EXPECT_EQ(CdfgHasNode(graph, node), 0);
  EXPECT_EQ(Living(), "");
}

TEST_F(GraphFree, OfANodeLeavesWhatItOwns) {
  const NodeId node = Add(CFG_DECLARE_DEF);
  Own(node, CfgDeclDef_DECL, Add(CFG_DECLARE));
  CdfgFreeNode(graph, node);
  EXPECT_EQ(Living(), "2");
}

TEST_F(GraphFree, OfANodeLeavesReferencesToIt) {
  const NodeId node = Add(CFG_DECLARE);
  const NodeId other = Add(CFG_DECLARE);
  CdfgSetNext(graph, other, node);
  CdfgSetAttrNode(graph, other, CfgDecl_INIT, node);
  CdfgFreeNode(graph, node);
  EXPECT_EQ(CdfgGetNext(graph, other), node);
  EXPECT_EQ(CdfgGetAttr(graph, other, CfgDecl_INIT), node);
}

TEST_F(GraphFree, OfANodeTwiceOrOfNoneDoesNothing) {
  const NodeId node = Add(CFG_DECLARE);
  Add(CFG_DECLARE);
  CdfgFreeNode(graph, node);
  CdfgFreeNode(graph, node);
  CdfgFreeNode(graph, 0);
  CdfgFreeNode(graph, 99);
  CdfgFreeNode(nullptr, 1);
  EXPECT_EQ(Living(), "2");
}

TEST_F(GraphFree, DoesNotGiveIdsBack) {
  Add(CFG_DECLARE);
  CdfgFreeNode(graph, Add(CFG_DECLARE));
  EXPECT_EQ(Add(CFG_DECLARE), 3U);
}

TEST_F(GraphFree, OfTheNewestNodeOfAnIdLeavesNothingToFind) {
  CdfgAddNodeWithId(graph, 5);
  CdfgAddNodeWithId(graph, 5);
  CdfgFreeNode(graph, 5);
  EXPECT_EQ(CdfgHasNode(graph, 5), 0);
  CdfgAddNodeWithId(graph, 5);
  EXPECT_EQ(CdfgHasNode(graph, 5), 1);
}

TEST_F(GraphFree, LeavesTheAttributesOfOthersAlone) {
  for (std::uint32_t width = 1; width <= 40; ++width) {
    const NodeId freed = Add(CFG_DECLARE);
    for (std::uint32_t id = 1; id <= width; ++id) CdfgSetAttrInt(graph, freed, id, -1);
    CdfgFreeNode(graph, freed);
    const NodeId kept = Add(CFG_DECLARE);
    for (std::uint32_t id = 1; id <= width; ++id) {
      CdfgSetAttrInt(graph, kept, id, static_cast<std::int32_t>(id * 100 + width));
    }
  }
  for (std::uint32_t width = 1; width <= 40; ++width) {
    for (std::uint32_t id = 1; id <= width; ++id) {
      ASSERT_EQ(CdfgGetAttrInt(graph, width * 2, id), static_cast<std::int32_t>(id * 100 + width));
    }
  }
}

// --- Trees ---------------------------------------------------------------------------------------

TEST_F(GraphFree, OfATreeTakesAllThatItOwns) {
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId path = Add(CFG_STATE_DATAPATH);
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  Add(CFG_GOTO);
  Own(function, CfgFunc_STARTCFG, path);
  Own(path, CfgDatapath_OPELIST, operation);
  CdfgFreeTree(graph, function);
  EXPECT_EQ(Living(), "4");
}

TEST_F(GraphFree, OfATreeLeavesWhatStandsBehindIt) {
  const NodeId first = Add(CFG_GOTO);
  const NodeId second = Add(CFG_GOTO);
  Chain({first, second});
  CdfgSetJump(graph, first, second);
  CdfgFreeTree(graph, first);
  EXPECT_EQ(Living(), "2");
}

TEST_F(GraphFree, OfATreeLeavesWhatNumbersHappenToName) {
  const NodeId node = Add(CFG_LOOP_BEGIN);
  const NodeId other = Add(CFG_GOTO);
  CdfgSetAttrInt(graph, node, CfgLoopBegin_CFG, static_cast<std::int32_t>(other));
  CdfgFreeTree(graph, node);
  EXPECT_EQ(Living(), "2");
}

TEST_F(GraphFree, OfATreeTakesSharedNodesOnce) {
  const NodeId operation = Add(DFG_OPERATION);
  const NodeId shared = Add(DFG_INPUT_CONST);
  Own(operation, DfgOpe_LEFT, shared);
  CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, shared);
  CdfgFreeTree(graph, operation);
  EXPECT_EQ(Living(), "");
}

TEST_F(GraphFree, OfATreeEndsOnCircles) {
  const NodeId first = Add(DFG_OPERATION);
  const NodeId second = Add(DFG_OPERATION);
  CdfgSetAttrNode(graph, first, DfgOpe_LEFT, second);
  CdfgSetAttrNode(graph, second, DfgOpe_LEFT, first);
  CdfgSetAttrNode(graph, second, DfgOpe_RIGHT, second);
  CdfgFreeTree(graph, first);
  EXPECT_EQ(Living(), "");
}

TEST_F(GraphFree, OfATreePassesOverWhatIsNotThere) {
  const NodeId node = Add(DFG_OPERATION);
  CdfgSetAttrNode(graph, node, DfgOpe_LEFT, 0);
  CdfgSetAttrNode(graph, node, DfgOpe_RIGHT, 99);
  Own(node, DfgOpe_COND, Add(DFG_INPUT_CONST));
  CdfgFreeTree(graph, node);
  EXPECT_EQ(Living(), "");
  CdfgFreeTree(graph, node);
  CdfgFreeTree(graph, 0);
  CdfgFreeTree(nullptr, 1);
}

TEST_F(GraphFree, OfATreeAMillionNodesDeepNeedsNoDeepStack) {
  constexpr NodeId kDepth = 1000000;
  for (NodeId id = 1; id <= kDepth; ++id) {
    Add(DFG_OPERATION);
    if (id > 1) CdfgSetAttrNode(graph, id - 1, DfgOpe_LEFT, id);
  }
  support::RunOnStack(support::kDefaultStack, [&] { CdfgFreeTree(graph, 1); });
  EXPECT_EQ(CdfgHasNode(graph, 1), 0);
  EXPECT_EQ(CdfgHasNode(graph, kDepth), 0);
}

// --- Owning --------------------------------------------------------------------------------------

using Reference = std::pair<std::uint32_t, std::uint32_t>;

// Every reference, by kind and attribute, that points at a node without owning it.
std::set<Reference> PointingReferences() {
  std::set<Reference> references = {{36, 16}, {38, 3},  {46, 6},  {47, 4},   {47, 5},
                                    {47, 20}, {47, 30}, {49, 1},  {368, 19}, {368, 20},
                                    {371, 9}, {372, 8}, {374, 2}, {375, 2}};
  for (const std::uint32_t first : {336U, 352U}) {
    const std::uint32_t last = first == 336 ? 342 : 357;
    for (std::uint32_t kind = first; kind <= last; ++kind) {
      for (const std::uint32_t attribute : {2U, 3U, 4U, 5U, 20U}) {
        references.emplace(kind, attribute);
      }
    }
  }
  return references;
}

TEST_F(GraphFree, LeavesExactlyWhatPointingReferencesName) {
  const std::set<Reference> pointing = PointingReferences();
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    for (std::uint32_t attribute = 0; attribute <= 33; ++attribute) {
      const NodeId node = Add(kind);
      const NodeId target = Add(CFG_COMMENT);
      CdfgSetAttrNode(graph, node, attribute, target);
      CdfgFreeTree(graph, node);
      EXPECT_EQ(CdfgHasNode(graph, node), 0);
      EXPECT_EQ(CdfgHasNode(graph, target) == 1, pointing.contains({kind, attribute}))
          << kind << '/' << attribute;
    }
  }
}

TEST(GraphOwnership, IsAnsweredForEveryReference) {
  const std::set<Reference> pointing = PointingReferences();
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    for (std::uint32_t attribute = 0; attribute <= 40; ++attribute) {
      EXPECT_EQ(CdfgOwnsReference(kind, attribute) == 0, pointing.contains({kind, attribute}))
          << kind << '/' << attribute;
    }
  }
}

// --- Graphs --------------------------------------------------------------------------------------

TEST_F(GraphFree, OfAGraphTakesNodesOfEverySort) {
  CdfgGraph* full = CdfgNewGraph();
  const NodeId wide = CdfgAddNode(full, CFG_DECLARE);
  for (std::uint32_t id = 1; id <= 100; ++id) CdfgSetAttrStr(full, wide, id, "text");
  CdfgAddNodeWithId(full, 4000000000U);
  CdfgSetFileName(full, 4000000000U, "a.c");
  CdfgSetAttrStr(full, 4000000000U, 1, std::string(100000, 'x').c_str());
  CdfgSetUserData(full, wide, this);
  CdfgAddNodeWithId(full, 4000000000U);
  CdfgSetAttrNode(full, 4000000000U, 1, 4000000000U);
  CdfgFreeNode(full, wide);
  // That all of it is given back is what the leak check of a sanitizer build looks at.
  CdfgFreeGraph(full);
}

TEST(GraphFreeOfNothing, IsAllowed) { CdfgFreeGraph(nullptr); }

TEST(GraphFreeOfAnEmptyGraph, IsAllowed) {
  CdfgGraph* graph = CdfgNewGraph();
  ASSERT_NE(graph, nullptr);
  CdfgFreeGraph(graph);
}

}  // namespace
