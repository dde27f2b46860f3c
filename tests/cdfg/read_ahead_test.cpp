// Asking for nodes that will be needed.
#include "cdfg/read_ahead.h"

#include <gtest/gtest.h>

namespace {

class ReadingAhead : public testing::Test {
 protected:
  ~ReadingAhead() override { CdfgFreeGraph(graph); }

  void AskFor(NodeId id) {
    CdfgExpectNodes(graph, id);
    CdfgExpectNodes<100>(graph, id);
    CdfgExpectAttributes<1>(graph, id);
    CdfgExpectAttributes<100>(graph, id);
  }

  CdfgGraph* graph = CdfgNewGraph();
};

TEST_F(ReadingAhead, TakesAnyId) {
  for (const NodeId id : {0U, 1U, 2U, 4294967295U}) AskFor(id);
  const NodeId plain = CdfgAddNode(graph, CFG_DECLARE);
  const NodeId freed = CdfgAddNode(graph, CFG_DECLARE);
  CdfgSetAttrInt(graph, freed, 1, 2);
  CdfgFreeNode(graph, freed);
  const NodeId far_off = CdfgAddNodeWithId(graph, 3'000'000'000U);
  for (const NodeId id : {0U, plain, freed, far_off, far_off + 1, 4294967295U}) AskFor(id);
}

TEST_F(ReadingAhead, ChangesNothing) {
  const NodeId node = CdfgAddNode(graph, CFG_DECLARE);
  CdfgSetAttrInt(graph, node, CfgDecl_VALTYPE, 7);
  AskFor(node);
  EXPECT_EQ(CdfgNodeCount(graph), 1U);
  EXPECT_EQ(CdfgGetKind(graph, node), static_cast<std::uint32_t>(CFG_DECLARE));
  EXPECT_EQ(CdfgGetAttrInt(graph, node, CfgDecl_VALTYPE), 7);
}

}  // namespace
