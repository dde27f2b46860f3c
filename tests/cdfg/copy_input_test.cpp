// Copies of single operands.
#include <string>

#include "cdfg/copy.h"
#include "tests/support/graphs.h"
#include "tests/support/stack.h"
#include "tests/support/stop.h"

namespace {

using support::Attributes;
using support::Endless;
using support::GraphTest;
using support::KindsFrom;
using support::Position;
using support::RunCatchingStop;

class CopyInput : public GraphTest {
 protected:
  NodeId Copy(NodeId operand) { return CdfgCopyInput(graph, operand); }
};

// --- Constants and strings -----------------------------------------------------------------------

TEST_F(CopyInput, OfAConstantTakesItsTextAndSevenNumbers) {
  const NodeId constant = Add(DFG_INPUT_CONST);
  Place(constant, "a.c", 12, 7);
  CdfgSetAttrStr(graph, constant, 1, "0x1F");
  for (std::uint32_t id = 2; id <= 10; ++id) {
    CdfgSetAttrInt(graph, constant, id, static_cast<std::int32_t>(id * 11));
  }
  const NodeId copy = Copy(constant);
  EXPECT_EQ(copy, 2U);
  EXPECT_EQ(CdfgGetKind(graph, copy), static_cast<unsigned>(DFG_INPUT_CONST));
  EXPECT_EQ(Position(graph, copy), "a.c:12:7");
  EXPECT_EQ(Attributes(graph, copy), "1=\"0x1F\" 2=22 3=33 4=44 5=55 6=66 7=77 8=88");
}

TEST_F(CopyInput, OfABareConstantSetsAllItsAttributes) {
  EXPECT_EQ(Attributes(graph, Copy(Add(DFG_INPUT_CONST))), "1=null 2=0 3=0 4=0 5=0 6=0 7=0 8=0");
}

TEST_F(CopyInput, OfAConstantOrdersItsAttributesAnew) {
  const NodeId constant = Add(DFG_INPUT_CONST);
  CdfgSetAttrInt(graph, constant, DfgInputCnst_BASE, 10);
  CdfgSetAttrStr(graph, constant, DfgInputCnst_STRVALUE, "5");
  EXPECT_EQ(Attributes(graph, Copy(constant)), "1=\"5\" 2=0 3=10 4=0 5=0 6=0 7=0 8=0");
}

TEST_F(CopyInput, OfAStringTakesItsText) {
  const NodeId string = Add(DFG_INPUT_STRING);
  Place(string, "a.c", 12, 7);
  CdfgSetAttrStr(graph, string, DfgInputStr_STRING, "\"hi\"");
  CdfgSetAttrInt(graph, string, 2, 5);
  const NodeId copy = Copy(string);
  EXPECT_EQ(KindsFrom(graph, copy), "345");
  EXPECT_EQ(Position(graph, copy), "a.c:12:7");
  EXPECT_EQ(Attributes(graph, copy), "1=\"\"hi\"\"");
}

TEST_F(CopyInput, OfABareStringSetsItsText) {
  EXPECT_EQ(Attributes(graph, Copy(Add(DFG_INPUT_STRING))), "1=null");
}

TEST_F(CopyInput, OfConstantsAndStringsFollowsNoMember) {
  for (const std::uint32_t kind : {344U, 345U}) {
    const NodeId operand = Add(kind);
    CdfgSetAttrNode(graph, operand, DfgPort_STRSON, Add(DFG_INPUT_VAR));
    EXPECT_EQ(KindsFrom(graph, Copy(operand)), std::to_string(kind));
  }
}

// --- Ports ---------------------------------------------------------------------------------------

TEST_F(CopyInput, OfAPortTakesNameDeclarationIndexesAndNumbers) {
  const NodeId port = Add(DFG_OUTPUT_VAR);
  const NodeId declaration = Add(CFG_DECLARE);
  const NodeId index = Add(DFG_DIMENSION);
  Place(port, "a.c", 12, 7);
  CdfgSetAttrStr(graph, port, DfgPort_NAME, "x");
  CdfgSetAttrNode(graph, port, DfgPort_DECL, declaration);
  for (std::uint32_t id = 6; id <= 18; ++id) {
    if (id != 13) CdfgSetAttrInt(graph, port, id, static_cast<std::int32_t>(id * 10));
  }
  for (const std::uint32_t id : {3U, 4U, 5U}) CdfgSetAttrNode(graph, port, id, declaration);
  Own(port, DfgPort_DIMNODE, index);
  const NodeId copy = Copy(port);
  EXPECT_EQ(copy, 4U);
  EXPECT_EQ(KindsFrom(graph, copy), "357 373");
  EXPECT_EQ(Position(graph, copy), "a.c:12:7");
  EXPECT_EQ(Attributes(graph, copy),
            "1=\"x\" 2->2 12=120 13->5 14=140 15=150 16=160 17=170 18=180");
}

TEST_F(CopyInput, OfABarePortSetsAllItsAttributesButTheIndexes) {
  EXPECT_EQ(Attributes(graph, Copy(Add(DFG_INPUT_VAR))),
            "1=null 2->0 12=0 14=0 15=0 16=0 17=0 18=0");
}

TEST_F(CopyInput, OfEveryOtherKindIsOfThatKind) {
  for (const std::uint32_t kind : {336U, 342U, 343U, 352U, 358U, 305U, 368U, 372U}) {
    const NodeId copy = Copy(Add(kind));
    EXPECT_EQ(CdfgGetKind(graph, copy), kind);
    EXPECT_EQ(Attributes(graph, copy), "1=null 2->0 12=0 14=0 15=0 16=0 17=0 18=0");
  }
}

TEST_F(CopyInput, OfAPortCopiesItsIndexesWithAllBelowThem) {
  const NodeId port = Add(DFG_INPUT_VAR);
  const NodeId first = Add(DFG_DIMENSION);
  const NodeId second = Add(DFG_DIMENSION);
  const NodeId value = Add(DFG_EDGE_PRESEDE);
  Own(port, DfgPort_DIMNODE, first);
  Chain({first, second});
  Own(first, DfgDim_NODE, value);
  const NodeId copy = Copy(port);
  EXPECT_EQ(KindsFrom(graph, copy), "342 373 322 373");
  EXPECT_EQ(CdfgGetAttr(graph, copy, DfgPort_DIMNODE), copy + 1);
  EXPECT_EQ(CdfgGetPrev(graph, copy + 1), 0U) << "the indexes know no owner";
  EXPECT_EQ(CdfgGetPrev(graph, copy + 2), copy + 1);
  EXPECT_EQ(CdfgGetNext(graph, copy + 1), copy + 3);
}

TEST_F(CopyInput, OfAPortHasNoLinks) {
  const NodeId port = Add(DFG_INPUT_VAR);
  CdfgSetPrev(graph, port, port);
  CdfgSetNext(graph, port, port);
  CdfgSetJump(graph, port, port);
  const NodeId copy = Copy(port);
  EXPECT_EQ(CdfgGetPrev(graph, copy), 0U);
  EXPECT_EQ(CdfgGetNext(graph, copy), 0U);
  EXPECT_EQ(CdfgGetJump(graph, copy), 0U);
  EXPECT_EQ(CdfgNodeCount(graph), 2U);
}

// --- Members -------------------------------------------------------------------------------------

TEST_F(CopyInput, OfAPortCopiesItsMembersOneByOne) {
  // s.a[i].b
  const NodeId port = Add(DFG_INPUT_VAR);
  const NodeId first = Add(DFG_INPUT_VAR);
  const NodeId second = Add(DFG_INPUT_VAR);
  const NodeId index = Add(DFG_DIMENSION);
  CdfgSetAttrStr(graph, port, DfgPort_NAME, "s");
  CdfgSetAttrStr(graph, first, DfgPort_NAME, "a");
  CdfgSetAttrStr(graph, second, DfgPort_NAME, "b");
  CdfgSetAttrNode(graph, port, DfgPort_STRSON, first);
  CdfgSetAttrNode(graph, first, DfgPort_STRPARENT, port);
  CdfgSetAttrNode(graph, first, DfgPort_STRSON, second);
  CdfgSetAttrNode(graph, second, DfgPort_STRPARENT, first);
  Own(first, DfgPort_DIMNODE, index);
  EXPECT_EQ(Copy(port), 5U);
  EXPECT_EQ(KindsFrom(graph, 5), "342 342 373 342");
  EXPECT_EQ(Attributes(graph, 5), "1=\"s\" 2->0 12=0 14=0 15=0 16=0 17=0 18=0 19->6");
  EXPECT_EQ(Attributes(graph, 6), "1=\"a\" 2->0 12=0 13->7 14=0 15=0 16=0 17=0 18=0 19->8 20->5");
  EXPECT_EQ(Attributes(graph, 8), "1=\"b\" 2->0 12=0 14=0 15=0 16=0 17=0 18=0 20->6");
}

TEST_F(CopyInput, OfAMemberAloneKnowsNoParent) {
  const NodeId port = Add(DFG_INPUT_VAR);
  const NodeId son = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_STRSON, son);
  CdfgSetAttrNode(graph, son, DfgPort_STRPARENT, port);
  EXPECT_EQ(Attributes(graph, Copy(son)), "1=null 2->0 12=0 14=0 15=0 16=0 17=0 18=0");
}

TEST_F(CopyInput, EndsTheMembersAtAConstant) {
  const NodeId port = Add(DFG_INPUT_VAR);
  const NodeId constant = Add(DFG_INPUT_CONST);
  CdfgSetAttrNode(graph, port, DfgPort_STRSON, constant);
  CdfgSetAttrNode(graph, constant, DfgPort_STRSON, Add(DFG_INPUT_VAR));
  const NodeId copy = Copy(port);
  EXPECT_EQ(KindsFrom(graph, copy), "342 344");
  EXPECT_EQ(Attributes(graph, copy + 1), "1=null 2=0 3=0 4=0 5=0 6=0 7=0 8=0 20->4");
}

TEST_F(CopyInput, LeavesTheSourceAsItIs) {
  const NodeId port = Add(DFG_INPUT_VAR);
  const NodeId son = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_STRSON, son);
  CdfgSetAttrNode(graph, son, DfgPort_STRPARENT, port);
  Copy(port);
  EXPECT_EQ(Attributes(graph, port), "19->2");
  EXPECT_EQ(Attributes(graph, son), "20->1");
}

// --- Nothing, circles, depth ---------------------------------------------------------------------

TEST_F(CopyInput, OfNothingIsNothing) {
  EXPECT_EQ(Copy(0), 0U);
  EXPECT_EQ(Copy(99), 0U);
  EXPECT_EQ(CdfgNodeCount(graph), 0U);
}

TEST_F(CopyInput, StopsTheRunWhenAPortIsItsOwnMember) {
  const NodeId port = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_STRSON, port);
  EXPECT_EQ(RunCatchingStop([&] { Copy(port); }), Endless(port));
}

TEST_F(CopyInput, OfAHundredThousandMembersNeedsNoDeepStack) {
  constexpr NodeId kDepth = 100000;
  for (NodeId id = 1; id <= kDepth; ++id) {
    Add(DFG_INPUT_VAR);
    if (id > 1) CdfgSetAttrNode(graph, id - 1, DfgPort_STRSON, id);
  }
  NodeId copy = 0;
  support::RunOnStack(support::kDefaultStack, [&] { copy = Copy(1); });
  EXPECT_EQ(CdfgNodeCount(graph), kDepth * 2);
  EXPECT_EQ(CdfgGetAttr(graph, copy + kDepth - 1, DfgPort_STRPARENT), copy + kDepth - 2);
}

}  // namespace
