// Declaring temporary variables.
#include <string>

#include "cdfg/edit.h"
#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

using support::Attributes;
using support::GraphTest;
using support::KindsFrom;
using support::NextIds;
using support::Position;

class DeclareVariable : public GraphTest {
 protected:
  void TearDown() override { CdfgSetDeclScope(0); }

  const NodeId place = [this] {
    const NodeId node = Add(CFG_GOTO);
    Place(node, "a.c", 12, 7);
    return node;
  }();
};

// --- What the declaration says -------------------------------------------------------------------

TEST_F(DeclareVariable, NamesItsKindNameTypeAndSignInThisOrder) {
  const NodeId node = CdfgDeclareVariable(graph, place, {.value_type = 5, .signedness = 2}, "t");
  EXPECT_EQ(CdfgGetKind(graph, node), static_cast<unsigned>(CFG_DECLARE));
  EXPECT_EQ(Attributes(graph, node), "1=257 3=\"t\" 18=5 6=2");
}

TEST_F(DeclareVariable, StandsWhereThePositionNodeStands) {
  const NodeId node = CdfgDeclareVariable(graph, place, {}, "t");
  EXPECT_EQ(node, 2U);
  EXPECT_EQ(Position(graph, node), "a.c:12:7");
}

TEST_F(DeclareVariable, NamesThePointerCountWhenThereIsOne) {
  const ExprType type{.value_type = 4, .signedness = 1, .pointer_count = 2};
  EXPECT_EQ(Attributes(graph, CdfgDeclareVariable(graph, place, type, "t")),
            "1=257 3=\"t\" 18=4 6=1 13=2");
}

TEST_F(DeclareVariable, NamesNoPointerCountOfZeroOrLess) {
  for (const std::int32_t count : {0, -1}) {
    const ExprType type{.value_type = 4, .signedness = 1, .pointer_count = count};
    EXPECT_EQ(Attributes(graph, CdfgDeclareVariable(graph, place, type, "t")),
              "1=257 3=\"t\" 18=4 6=1");
  }
}

TEST_F(DeclareVariable, NamesNoStructureOfAnotherType) {
  const ExprType type{.value_type = 9,
                      .signedness = 1,
                      .struct_origin = place,
                      .struct_members = place,
                      .typedef_link = place};
  EXPECT_EQ(Attributes(graph, CdfgDeclareVariable(graph, place, type, "t")),
            "1=257 3=\"t\" 18=9 6=1");
  EXPECT_EQ(CdfgNodeCount(graph), 2U);
}

// --- Structures ----------------------------------------------------------------------------------

TEST_F(DeclareVariable, OfAStructureGetsACopyOfItsMembers) {
  const NodeId origin = Add(CFG_STRUCT_DEF);
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId member = Add(CFG_DECLARE);
  const NodeId link = Add(CFG_TYPEDEF);
  Own(structure, CfgStruct_MEMBER, member);
  CdfgSetAttrStr(graph, member, CfgDecl_NAME, "m");
  const NodeId node =
      CdfgDeclareVariable(graph, place, {DECL_VALTYPE_STRUCT, 1, 1, origin, structure, link}, "t");
  EXPECT_EQ(node, 6U);
  EXPECT_EQ(KindsFrom(graph, node), "47 45 47");
  EXPECT_EQ(Attributes(graph, node), "1=257 3=\"t\" 18=10 6=1 13=1 20->2 30->5 19->7");
  EXPECT_EQ(CdfgGetPrev(graph, 7), node);
  EXPECT_EQ(Attributes(graph, 7), "2->8");
  EXPECT_EQ(CdfgGetPrev(graph, 8), 7U);
  EXPECT_EQ(Attributes(graph, 8), "3=\"m\"");
}

TEST_F(DeclareVariable, OfAStructureLeavesItsMembersAlone) {
  const NodeId structure = Add(CFG_STRUCT);
  CdfgSetPrev(graph, structure, place);
  CdfgDeclareVariable(graph, place, {DECL_VALTYPE_STRUCT, 1, 0, 0, structure, 0}, "t");
  EXPECT_EQ(CdfgGetPrev(graph, structure), place);
}

TEST_F(DeclareVariable, OfAStructureWithoutMembersNamesNothingInTheirPlace) {
  const NodeId node = CdfgDeclareVariable(graph, place, {DECL_VALTYPE_STRUCT, 1, 0, 0, 0, 0}, "t");
  EXPECT_EQ(Attributes(graph, node), "1=257 3=\"t\" 18=10 6=1 20->0 30->0 19->0");
  EXPECT_EQ(CdfgNodeCount(graph), 2U);
}

// --- Scope ---------------------------------------------------------------------------------------

TEST_F(DeclareVariable, StandsAloneWithoutAScope) {
  const NodeId node = CdfgDeclareVariable(graph, place, {}, "t");
  EXPECT_EQ(CdfgGetPrev(graph, node), 0U);
  EXPECT_EQ(CdfgGetNext(graph, node), 0U);
}

TEST_F(DeclareVariable, BeginsTheListOfAScopeWithoutOne) {
  const NodeId function = Add(CFG_FUNCTION);
  CdfgSetDeclScope(function);
  const NodeId node = CdfgDeclareVariable(graph, place, {}, "t");
  EXPECT_EQ(Attributes(graph, function), "3->3");
  EXPECT_EQ(CdfgGetPrev(graph, node), function);
  EXPECT_EQ(CdfgGetNext(graph, node), 0U);
}

TEST_F(DeclareVariable, StandsInFrontOfTheListOfItsScope) {
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId old_head = Add(CFG_DECLARE);
  const NodeId second = Add(CFG_DECLARE);
  Own(function, CfgFunc_DECLARE, old_head);
  Chain({old_head, second});
  CdfgSetDeclScope(function);
  const NodeId first_new = CdfgDeclareVariable(graph, place, {}, "t");
  const NodeId second_new = CdfgDeclareVariable(graph, place, {}, "u");
  EXPECT_EQ(CdfgGetAttr(graph, function, CfgFunc_DECLARE), second_new);
  EXPECT_EQ(NextIds(graph, second_new), "6 5 3 4");
  EXPECT_EQ(CdfgGetPrev(graph, second_new), function);
  EXPECT_EQ(CdfgGetPrev(graph, first_new), second_new);
  EXPECT_EQ(CdfgGetPrev(graph, old_head), first_new);
  EXPECT_EQ(CdfgGetPrev(graph, second), old_head);
}

TEST_F(DeclareVariable, StandsInTheScopeThatWasSetLast) {
  const NodeId first = Add(CFG_FUNCTION);
  const NodeId second = Add(CFG_FUNCTION);
  CdfgSetDeclScope(first);
  CdfgSetDeclScope(second);
  const NodeId node = CdfgDeclareVariable(graph, place, {}, "t");
  EXPECT_EQ(CdfgGetAttr(graph, first, CfgFunc_DECLARE), 0U);
  EXPECT_EQ(CdfgGetAttr(graph, second, CfgFunc_DECLARE), node);
  CdfgSetDeclScope(0);
  CdfgDeclareVariable(graph, place, {}, "u");
  EXPECT_EQ(CdfgGetAttr(graph, second, CfgFunc_DECLARE), node);
}

TEST_F(DeclareVariable, StopsTheRunWhenTheIdsAreUsedUp) {
  CdfgAddNodeWithId(graph, 4294967295U);
  EXPECT_EQ(support::RunCatchingStop([&] { CdfgDeclareVariable(graph, place, {}, "t"); }),
            (support::Outcome{255, "kelvo : Error Short of memory. (create node)\n"}));
}

}  // namespace
