// The chain fold against its own definition, and both folds at great depth.
//
// The definition says what happens at each node of a chain and then goes on along next; taken to
// the letter, all that stands behind an edge or a cast is folded again once more, behind k of them
// 2^k times. Here it is taken to the letter, on many small random graphs with shared expressions,
// and must give the same graph, node by node, as the fold that visits everything once.
#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "cdfg/kinds.h"
#include "constant/arithmetic.h"
#include "constant/fold_steps.h"
#include "tests/support/graphs.h"
#include "tests/support/sanitizers.h"
#include "tests/support/stack.h"

namespace {

using support::OwnedGraph;

// --- To the letter -------------------------------------------------------------------------------

NodeId FoldToTheLetter(CdfgGraph* graph, NodeId first);

void StoreAt(CdfgGraph* graph, NodeId holder, std::uint32_t attribute) {
  const NodeId folded = FoldToTheLetter(graph, CdfgGetAttr(graph, holder, attribute));
  if (folded == 0) return;
  CdfgSetAttrNode(graph, holder, attribute, folded);
  if (CdfgGetKind(graph, folded) != DFG_EDGE_BLOCKING) CdfgSetPrev(graph, folded, holder);
}

void StoreAtEach(CdfgGraph* graph, NodeId list, std::uint32_t attribute) {
  for (NodeId item = list; item != 0; item = CdfgGetNext(graph, item)) {
    StoreAt(graph, item, attribute);
  }
}

NodeId FoldToTheLetter(CdfgGraph* graph, NodeId first) {
  NodeId answer = 0;
  for (NodeId node = first; node != 0; node = CdfgGetNext(graph, node)) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == DFG_OPERATION) {
      StoreAt(graph, node, DfgOpe_LEFT);
      StoreAt(graph, node, DfgOpe_RIGHT);
      StoreAt(graph, node, DfgOpe_COND);
      const NodeId folded = ConstFoldOperation(graph, node);
      if (folded != 0) answer = folded;
    } else if (CdfgIsAssignment(kind) || kind == DFG_SPEC) {
      const NodeId folded = FoldToTheLetter(graph, CdfgGetNext(graph, node));
      if (folded == 0) continue;
      CdfgSetNext(graph, node, folded);
      if (CdfgGetKind(graph, folded) != DFG_EDGE_BLOCKING) CdfgSetPrev(graph, folded, node);
    } else if (kind == DFG_FUNC_CALL) {
      StoreAtEach(graph, CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST), DfgPortInfo_SIGNAL);
    } else if (CdfgIsPortOrConcat(kind)) {
      StoreAtEach(graph, CdfgGetAttr(graph, node, DfgPort_DIMNODE), DfgDim_NODE);
      FoldToTheLetter(graph, CdfgGetAttr(graph, node, DfgPort_STRSON));
    }
  }
  return answer;
}

// --- Random graphs -------------------------------------------------------------------------------

// Makes graphs without circles: a node refers only to nodes made before it, but to those as often
// as it happens to. Constants stand behind references of their own, members are ports.
class RandomGraph {
 public:
  explicit RandomGraph(std::uint32_t seed) : random_(seed) {
    const int count = Below(9) + 2;
    for (int i = 0; i < count; ++i) heads_.push_back(AddHead());
  }

  CdfgGraph* graph() { return graph_.get(); }
  NodeId first() const { return heads_.back(); }

 private:
  int Below(int bound) { return std::uniform_int_distribution<int>(0, bound - 1)(random_); }
  bool Maybe() { return Below(2) == 0; }

  NodeId AnyHead() {
    return heads_.empty() ? 0 : heads_[static_cast<std::size_t>(Below(int(heads_.size())))];
  }

  NodeId Add(std::uint32_t kind) { return CdfgAddNode(graph_.get(), kind); }

  void Link(NodeId node, NodeId next) {
    CdfgSetNext(graph_.get(), node, next);
    if (next != 0) CdfgSetPrev(graph_.get(), next, node);
  }

  // One or two references and a constant.
  NodeId AddConstant() {
    constexpr const char* kTexts[] = {"0", "1", "2", "3U", "0x10", "4L", "1.5", "-7"};
    const NodeId reference = Add(DFG_EDGE_PRESEDE);
    NodeId last = reference;
    if (Below(4) == 0) {
      last = Add(DFG_EDGE_PRESEDE);
      Link(reference, last);
    }
    const NodeId constant = Add(DFG_INPUT_CONST);
    CdfgSetAttrStr(graph_.get(), constant, DfgInputCnst_STRVALUE, kTexts[Below(8)]);
    Link(last, constant);
    return reference;
  }

  NodeId AddOperation() {
    constexpr std::int32_t kCodes[] = {CALC_Plus, CALC_Minus, CALC_Not,    CALC_Add,
                                       CALC_Sub,  CALC_Mul,   CALC_LogCond};
    const NodeId operation = Add(DFG_OPERATION);
    CdfgSetAttrInt(graph_.get(), operation, DfgOpe_TYPE, kCodes[Below(7)]);
    for (const std::uint32_t attribute : {DfgOpe_LEFT, DfgOpe_RIGHT, DfgOpe_COND}) {
      if (attribute == DfgOpe_COND && Below(3) != 0) continue;
      const NodeId operand = Below(4) != 0 ? AddConstant() : AnyHead();
      if (operand != 0) CdfgSetAttrNode(graph_.get(), operation, attribute, operand);
    }
    return operation;
  }

  NodeId AddList(std::uint32_t kind, std::uint32_t attribute) {
    NodeId list = 0;
    for (int count = Below(3); count > 0; --count) {
      const NodeId item = Add(kind);
      CdfgSetAttrNode(graph_.get(), item, attribute, AnyHead());
      Link(item, list);
      list = item;
    }
    return list;
  }

  NodeId AddPort() {
    const NodeId port = Add(Maybe() ? DFG_INPUT_VAR : DFG_OUTPUT_WIRE);
    CdfgSetAttrNode(graph_.get(), port, DfgPort_DIMNODE, AddList(DFG_DIMENSION, DfgDim_NODE));
    if (Below(3) == 0) CdfgSetAttrNode(graph_.get(), port, DfgPort_STRSON, AddPort());
    return port;
  }

  NodeId AddCall() {
    const NodeId call = Add(DFG_FUNC_CALL);
    CdfgSetAttrNode(graph_.get(), call, DfgFuncCall_ARGLIST,
                    AddList(DFG_PORT_INFO, DfgPortInfo_SIGNAL));
    return call;
  }

  NodeId AddNode() {
    switch (Below(8)) {
      case 0:
        return Add(DFG_EDGE_BLOCKING);
      case 1:
        return Add(DFG_EDGE_NONBLOCKING);
      case 2:
        return Add(DFG_SPEC);
      case 3:
        return Add(DFG_EDGE_PRESEDE);
      case 4:
        return AddPort();
      case 5:
        return AddCall();
      default:
        return AddOperation();
    }
  }

  NodeId AddHead() {
    if (Below(5) == 0) return AddConstant();
    const NodeId node = AddNode();
    if (Below(3) != 0) Link(node, AnyHead());
    return node;
  }

  OwnedGraph graph_{CdfgNewGraph()};
  std::mt19937 random_;
  std::vector<NodeId> heads_;
};

std::string Picture(const CdfgGraph* graph) {
  std::string picture;
  for (NodeId id = 1; CdfgHasNode(graph, id) != 0; ++id) {
    picture += std::to_string(id) + ": " + std::to_string(CdfgGetKind(graph, id)) + " prev " +
               std::to_string(CdfgGetPrev(graph, id)) + " next " +
               std::to_string(CdfgGetNext(graph, id)) + " " + support::Attributes(graph, id) + "\n";
  }
  return picture;
}

// --- Tests ---------------------------------------------------------------------------------------

TEST(FoldChain, GivesTheGraphOfItsDefinition) {
  constexpr std::uint32_t kGraphs = support::kAddressSanitizer ? 3'000 : 50'000;
  std::uint32_t folded = 0;
  std::uint32_t with_edges = 0;
  for (std::uint32_t seed = 1; seed <= kGraphs; ++seed) {
    RandomGraph letter(seed);
    RandomGraph once(seed);
    const std::string before = Picture(once.graph());
    const NodeId answer = FoldToTheLetter(letter.graph(), letter.first());
    ASSERT_EQ(ChainFold(once.graph()).Fold(once.first()), answer) << "seed " << seed << "\n"
                                                                  << before;
    const std::string after = Picture(once.graph());
    ASSERT_EQ(after, Picture(letter.graph())) << "seed " << seed << "\n" << before;
    folded += after != before ? 1 : 0;
    const std::uint32_t kind = CdfgGetKind(once.graph(), once.first());
    with_edges += CdfgIsAssignment(kind) || kind == DFG_SPEC ? 1 : 0;
  }
  // The graphs are worth the comparison.
  EXPECT_GT(folded, kGraphs / 5);
  EXPECT_GT(with_edges, kGraphs / 5);
}

// --- Depth and cost ------------------------------------------------------------------------------

class DeepExpression : public support::GraphTest {
 protected:
  NodeId AddConstant() {
    const NodeId reference = Add(DFG_EDGE_PRESEDE);
    const NodeId constant = Add(DFG_INPUT_CONST);
    CdfgSetAttrStr(graph, constant, DfgInputCnst_STRVALUE, "1");
    Chain({reference, constant});
    return reference;
  }

  // 1 + 1 + ... + 1 with this many operations, nested in one operand.
  NodeId AddSum(std::uint32_t nested, std::uint32_t other, int operations) {
    NodeId sum = AddConstant();
    for (int i = 0; i < operations; ++i) {
      const NodeId outer = Add(DFG_OPERATION);
      CdfgSetAttrInt(graph, outer, DfgOpe_TYPE, CALC_Add);
      Own(outer, nested, sum);
      Own(outer, other, AddConstant());
      sum = outer;
    }
    return sum;
  }

  std::string ValueOf(NodeId reference) const {
    const char* text = CdfgGetAttrStr(graph, CdfgGetNext(graph, reference), DfgInputCnst_STRVALUE);
    return text == nullptr ? "(null)" : text;
  }
};

constexpr int kMillion = 1'000'000;

TEST_F(DeepExpression, ChainFoldOfAMillionNestedOperationsNeedsNoStack) {
  const NodeId sum = AddSum(DfgOpe_LEFT, DfgOpe_RIGHT, kMillion);
  NodeId folded = 0;
  support::RunOnStack(support::kDefaultStack, [&] { folded = ChainFold(graph).Fold(sum); });
  EXPECT_EQ(ValueOf(folded), "1000001");
}

TEST_F(DeepExpression, TreeFoldOfAMillionNestedOperationsNeedsNoStack) {
  const NodeId sum = AddSum(DfgOpe_RIGHT, DfgOpe_LEFT, kMillion);
  NodeId folded = 0;
  support::RunOnStack(support::kDefaultStack, [&] { folded = ConstFoldTree(graph, sum); });
  EXPECT_EQ(ValueOf(folded), "1000001");
}

// To the letter this would take 2^100,000 steps.
TEST_F(DeepExpression, WhatStandsBehindManyCastsIsFoldedOnce) {
  NodeId first = AddSum(DfgOpe_LEFT, DfgOpe_RIGHT, 1);
  NodeId innermost = 0;
  for (int i = 0; i < 100'000; ++i) {
    const NodeId cast = Add(i % 2 == 0 ? DFG_SPEC : DFG_EDGE_BLOCKING);
    Chain({cast, first});
    if (innermost == 0) innermost = cast;
    first = cast;
  }
  const std::size_t count = CdfgNodeCount(graph);
  EXPECT_EQ(ChainFold(graph).Fold(first), 0U);
  EXPECT_EQ(ValueOf(CdfgGetNext(graph, innermost)), "2");
  EXPECT_EQ(CdfgNodeCount(graph), count + 2);
}

// An operation whose operand stands behind no reference of its own folds to itself, for ever.
TEST_F(DeepExpression, AnOperationThatFoldsToItselfStays) {
  const NodeId plus = Add(DFG_OPERATION);
  CdfgSetAttrInt(graph, plus, DfgOpe_TYPE, CALC_Plus);
  Own(plus, DfgOpe_LEFT, Add(DFG_INPUT_CONST));
  const NodeId cast = Add(DFG_SPEC);
  Chain({cast, plus});
  EXPECT_EQ(ChainFold(graph).Fold(cast), 0U);
  EXPECT_EQ(CdfgGetNext(graph, cast), plus);
  EXPECT_EQ(CdfgGetPrev(graph, plus), cast);
}

}  // namespace
