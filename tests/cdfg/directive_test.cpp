// Finding a directive in a chain.
#include "cdfg/directive.h"

#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

class Directives : public support::GraphTest {
 protected:
  NodeId AddDirective(std::int32_t type) {
    const NodeId node = Add(INFO_DIRECTIVE);
    CdfgSetAttrInt(graph, node, DfgDirective_TYPE, type);
    return node;
  }
};

TEST_F(Directives, AreFoundByTheirType) {
  const NodeId first = AddDirective(1);
  const NodeId second = AddDirective(55);
  const NodeId third = AddDirective(55);
  Chain({first, second, third});
  EXPECT_EQ(CdfgFindDirective(graph, first, 55), second);
  EXPECT_EQ(CdfgFindDirective(graph, first, 1), first);
  EXPECT_EQ(CdfgFindDirective(graph, third, 55), third);
}

TEST_F(Directives, OfAnotherTypeAreNotFound) {
  EXPECT_EQ(CdfgFindDirective(graph, AddDirective(1), 55), 0U);
  EXPECT_EQ(CdfgFindDirective(graph, 0, 55), 0U);
}

TEST_F(Directives, AreNotNodesOfAnotherKind) {
  const NodeId other = Add(CFG_COMMENT);
  CdfgSetAttrInt(graph, other, DfgDirective_TYPE, 55);
  const NodeId directive = AddDirective(55);
  Chain({other, directive});
  EXPECT_EQ(CdfgFindDirective(graph, other, 55), directive);
}

TEST_F(Directives, InACircleStopTheRun) {
  const NodeId node = AddDirective(1);
  CdfgSetNext(graph, node, node);
  EXPECT_EQ(support::RunCatchingStop([&] { CdfgFindDirective(graph, node, 55); }),
            support::Endless(node));
}

}  // namespace
