// Deep copies of statement chains and all that hangs below them.
#include <cstdint>
#include <cstdio>
#include <set>
#include <string>
#include <utility>

#include "cdfg/copy.h"
#include "cdfg/runaway.h"
#include "tests/support/graphs.h"
#include "tests/support/sanitizers.h"
#include "tests/support/stack.h"
#include "tests/support/stop.h"

namespace {

using support::Attributes;
using support::Endless;
using support::GraphTest;
using support::KindsFrom;
using support::NextIds;
using support::Position;
using support::Quiet;
using support::RunCatchingStop;

class CopyTree : public GraphTest {
 protected:
  void TearDown() override {
    CdfgRemapSwitch = 0;
    CdfgMemberShareSwitch = 0;
    CdfgClearUserTable(graph);
    runaway::steps_left = UINT64_MAX;
  }
  NodeId Copy(NodeId id) { return CdfgCopyTree(graph, id); }
  // A node of a kind without rules of its own, told apart by its line.
  NodeId AddPlain(std::int32_t line = 0) {
    const NodeId node = Add(CFG_COMMENT);
    CdfgSetLine(graph, node, line);
    return node;
  }
  // Operations 1 to `levels`, each but the last owning the next one twice.
  void AddDoublingLevels(NodeId levels) {
    for (NodeId id = 1; id <= levels; ++id) Add(DFG_OPERATION);
    for (NodeId id = 1; id < levels; ++id) {
      CdfgSetAttrNode(graph, id, DfgOpe_LEFT, id + 1);
      CdfgSetAttrNode(graph, id, DfgOpe_RIGHT, id + 1);
    }
  }
  // Expects a stop that names one of the nodes 1 to `last`.
  static void ExpectEndlessUpTo(NodeId last, const support::Outcome& outcome) {
    EXPECT_EQ(outcome.status, 255);
    NodeId node = 0;
    EXPECT_EQ(
        std::sscanf(outcome.output.c_str(), "kelvo : Error : Endless graph : node %u\n", &node), 1);
    EXPECT_GE(node, 1U);
    EXPECT_LE(node, last);
  }
};

// --- Chains --------------------------------------------------------------------------------------

TEST_F(CopyTree, OfOneNodeIsANodeOfItsKindAndPosition) {
  const NodeId node = Add(CFG_BREAK);
  Place(node, "a.c", 12, 7);
  const NodeId copy = Copy(node);
  EXPECT_EQ(copy, 2U);
  EXPECT_EQ(CdfgGetKind(graph, copy), static_cast<unsigned>(CFG_BREAK));
  EXPECT_EQ(Position(graph, copy), "a.c:12:7");
  EXPECT_EQ(CdfgGetPrev(graph, copy), 0U);
  EXPECT_EQ(CdfgGetNext(graph, copy), 0U);
}

TEST_F(CopyTree, OfAChainIsAChain) {
  for (int i = 0; i < 3; ++i) Add(CFG_BREAK);
  Chain({1, 3, 2});
  EXPECT_EQ(Copy(1), 4U);
  EXPECT_EQ(NextIds(graph, 4), "4 5 6");
  EXPECT_EQ(CdfgGetPrev(graph, 4), 0U);
  EXPECT_EQ(CdfgGetPrev(graph, 5), 4U);
  EXPECT_EQ(CdfgGetPrev(graph, 6), 5U);
}

TEST_F(CopyTree, BeginsAtTheNodeGivenAndNotInFrontOfIt) {
  for (int i = 0; i < 3; ++i) Add(CFG_BREAK);
  Chain({1, 2, 3});
  EXPECT_EQ(NextIds(graph, Copy(2)), "4 5");
  EXPECT_EQ(CdfgGetPrev(graph, 4), 0U);
}

TEST_F(CopyTree, LeavesTheSourceAsItIs) {
  const NodeId path = Add(CFG_STATE_DATAPATH);
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  Own(path, CfgDatapath_OPELIST, operation);
  CdfgSetPrev(graph, path, 99);
  CdfgSetNext(graph, path, 0);
  Copy(path);
  EXPECT_EQ(Attributes(graph, path), "2->2");
  EXPECT_EQ(CdfgGetPrev(graph, path), 99U);
  EXPECT_EQ(CdfgGetPrev(graph, operation), path);
  EXPECT_EQ(CdfgGetUserData(graph, path), nullptr);
}

TEST_F(CopyTree, OfNothingIsNothing) {
  EXPECT_EQ(Copy(0), 0U);
  EXPECT_EQ(Copy(99), 0U);
  EXPECT_EQ(CdfgNodeCount(graph), 0U);
}

TEST_F(CopyTree, CopiesNoUserData) {
  const NodeId node = Add(CFG_BREAK);
  CdfgSetUserData(graph, node, this);
  EXPECT_EQ(CdfgGetUserData(graph, Copy(node)), nullptr);
  CdfgSetUserData(graph, node, nullptr);
}

// --- Attributes ----------------------------------------------------------------------------------

TEST_F(CopyTree, KeepsValuesAndOrderOfAttributes) {
  const NodeId node = Add(CFG_BREAK);
  CdfgSetAttrStr(graph, node, 9, "text");
  CdfgSetAttrInt(graph, node, 3, -7);
  CdfgSetAttrDouble(graph, node, 8, 1.5);
  CdfgSetAttrChar(graph, node, 1, 'A');
  CdfgSetAttrInt64(graph, node, 5, 1234567890123);
  EXPECT_EQ(Attributes(graph, Copy(node)), "9=\"text\" 3=-7 8=1.5d 1=65c 5=1234567890123L");
}

TEST_F(CopyTree, KeepsZerosAndEmptyStrings) {
  const NodeId node = Add(CFG_BREAK);
  CdfgSetAttrInt(graph, node, 1, 0);
  CdfgSetAttrStr(graph, node, 2, "");
  EXPECT_EQ(Attributes(graph, Copy(node)), "1=0 2=\"\"");
}

TEST_F(CopyTree, LeavesNullStringsAndReferencesToNothingOut) {
  const NodeId node = Add(CFG_BREAK);
  CdfgSetAttrInt(graph, node, 1, 5);
  CdfgSetAttrStr(graph, node, 2, nullptr);
  CdfgSetAttrNode(graph, node, 3, 0);
  CdfgSetAttrInt(graph, node, 4, 6);
  EXPECT_EQ(Attributes(graph, Copy(node)), "1=5 4=6");
}

TEST_F(CopyTree, LeavesSharedReferencesToNothingOut) {
  const NodeId port = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_DECL, 0);
  EXPECT_EQ(Attributes(graph, Copy(port)), "");
}

TEST_F(CopyTree, HasStringsOfItsOwn) {
  const NodeId node = Add(CFG_BREAK);
  CdfgSetAttrStr(graph, node, 1, "text");
  const NodeId copy = Copy(node);
  CdfgSetAttrStr(graph, node, 1, "other");
  EXPECT_STREQ(CdfgGetAttrStr(graph, copy, 1), "text");
}

// --- The order of making -------------------------------------------------------------------------

TEST_F(CopyTree, MakesANodeThenWhatItOwnsThenItsSuccessor) {
  //  1 path -> 3 path;  1 owns 2 operation -> 4 operation;  2 owns 5, 4 owns 6
  const NodeId path = Add(CFG_STATE_DATAPATH);
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  const NodeId second_path = Add(CFG_STATE_DATAPATH);
  const NodeId second_operation = Add(DFG_MANAGE_OPERATION);
  const NodeId constant = Add(DFG_INPUT_CONST);
  const NodeId string = Add(DFG_INPUT_STRING);
  Chain({path, second_path});
  Own(path, CfgDatapath_OPELIST, operation);
  Chain({operation, second_operation});
  Own(operation, DfgOpeman_OPE, constant);
  Own(second_operation, DfgOpeman_OPE, string);
  EXPECT_EQ(Copy(path), 7U);
  EXPECT_EQ(KindsFrom(graph, 7), "264 304 344 304 345 264");
  EXPECT_EQ(NextIds(graph, 7), "7 12");
  EXPECT_EQ(Attributes(graph, 7), "2->8");
  EXPECT_EQ(NextIds(graph, 8), "8 10");
  EXPECT_EQ(Attributes(graph, 8), "1->9");
  EXPECT_EQ(Attributes(graph, 10), "1->11");
}

TEST_F(CopyTree, MakesWhatANodeOwnsInTheOrderOfItsAttributes) {
  const NodeId operation = Add(DFG_OPERATION);
  Own(operation, DfgOpe_RIGHT, Add(DFG_INPUT_STRING));
  Own(operation, DfgOpe_COND, Add(DFG_INPUT_VAR));
  CdfgSetAttrInt(graph, operation, DfgOpe_TYPE, 30);
  Own(operation, DfgOpe_LEFT, Add(DFG_INPUT_CONST));
  const NodeId copy = Copy(operation);
  EXPECT_EQ(KindsFrom(graph, copy), "305 345 342 344");
  EXPECT_EQ(Attributes(graph, copy), "3->6 4->7 1=30 2->8");
}

TEST_F(CopyTree, LinksWhatANodeOwnsBackToIt) {
  const NodeId operation = Add(DFG_OPERATION);
  const NodeId reference = Add(DFG_EDGE_PRESEDE);
  Own(operation, DfgOpe_LEFT, reference);
  Chain({reference, Add(DFG_INPUT_VAR)});
  const NodeId copy = Copy(operation);
  EXPECT_EQ(CdfgGetPrev(graph, copy + 1), copy);
  EXPECT_EQ(CdfgGetPrev(graph, copy + 2), copy + 1);
}

TEST_F(CopyTree, LinksTheExpressionOfAnOperationNotBackToIt) {
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  Own(operation, DfgOpeman_OPE, Add(DFG_FUNC_CALL));
  const NodeId copy = Copy(operation);
  EXPECT_EQ(Attributes(graph, copy), "1->4");
  EXPECT_EQ(CdfgGetPrev(graph, 4), 0U);
}

TEST_F(CopyTree, LinksAnAssignmentNotBackToItsOwner) {
  for (const std::uint32_t kind : {320U, 321U}) {
    const NodeId operation = Add(DFG_OPERATION);
    const NodeId edge = Add(kind);
    CdfgSetAttrNode(graph, operation, DfgOpe_LEFT, edge);
    const NodeId copy = Copy(operation);
    EXPECT_EQ(CdfgGetAttr(graph, copy, DfgOpe_LEFT), copy + 1);
    EXPECT_EQ(CdfgGetPrev(graph, copy + 1), 0U) << kind;
  }
}

TEST_F(CopyTree, LinksAReferenceBackToItsOwner) {
  const NodeId operation = Add(DFG_OPERATION);
  Own(operation, DfgOpe_LEFT, Add(DFG_EDGE_PRESEDE));
  const NodeId copy = Copy(operation);
  EXPECT_EQ(CdfgGetPrev(graph, copy + 1), copy);
}

TEST_F(CopyTree, CopiesWhatIsOwnedTwiceTwice) {
  const NodeId operation = Add(DFG_OPERATION);
  const NodeId constant = Add(DFG_INPUT_CONST);
  Own(operation, DfgOpe_LEFT, constant);
  CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, constant);
  EXPECT_EQ(Attributes(graph, Copy(operation)), "2->4 3->5");
}

TEST_F(CopyTree, CopiesChainsThatAreOwned) {
  const NodeId loop = Add(CFG_LOOP_STAT);
  const NodeId first = Add(CFG_BREAK);
  Own(loop, CfgLoopStat_CFG, first);
  Chain({first, Add(CFG_CONTINUE)});
  const NodeId copy = Copy(loop);
  EXPECT_EQ(NextIds(graph, CdfgGetAttr(graph, copy, CfgLoopStat_CFG)), "5 6");
}

// --- Assignments ---------------------------------------------------------------------------------

// What is owned below an operation begins at the edge; the target stands in front of it.
TEST_F(CopyTree, CopiesTheTargetInFrontOfAnAssignment) {
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  const NodeId reference = Add(DFG_EDGE_PRESEDE);
  const NodeId constant = Add(DFG_INPUT_CONST);
  Chain({target, edge, reference, constant});
  CdfgSetAttrNode(graph, operation, DfgOpeman_OPE, edge);
  EXPECT_EQ(Copy(operation), 6U);
  EXPECT_EQ(KindsFrom(graph, 6), "304 320 357 322 344");
  EXPECT_EQ(Attributes(graph, 6), "1->7");
  EXPECT_EQ(NextIds(graph, 8), "8 7 9 10");
  EXPECT_EQ(CdfgGetPrev(graph, 10), 9U);
  EXPECT_EQ(CdfgGetPrev(graph, 9), 7U);
  EXPECT_EQ(CdfgGetPrev(graph, 7), 8U);
  EXPECT_EQ(CdfgGetPrev(graph, 8), 0U);
}

TEST_F(CopyTree, CopiesTheTargetOfEitherAssignmentAndOfNoReference) {
  for (const auto& [kind, kinds] : {std::pair{320U, "320 357"}, {321U, "321 357"}, {322U, "322"}}) {
    const NodeId target = Add(DFG_OUTPUT_VAR);
    const NodeId edge = Add(kind);
    Chain({target, edge});
    EXPECT_EQ(KindsFrom(graph, Copy(edge)), kinds);
  }
}

TEST_F(CopyTree, OfAnAssignmentAnswersTheEdgeAndNotTheTarget) {
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({target, edge});
  const NodeId copy = Copy(edge);
  EXPECT_EQ(CdfgGetKind(graph, copy), 320U);
  EXPECT_EQ(CdfgGetPrev(graph, copy), 4U);
  EXPECT_EQ(CdfgGetNext(graph, 4), copy);
}

TEST_F(CopyTree, CopiesATargetOnceWhenTheChainBeginsThere) {
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({target, edge, Add(DFG_EDGE_PRESEDE)});
  EXPECT_EQ(Copy(target), 4U);
  EXPECT_EQ(KindsFrom(graph, 4), "357 320 322");
  EXPECT_EQ(NextIds(graph, 4), "4 5 6");
  EXPECT_EQ(CdfgGetPrev(graph, 5), 4U);
}

TEST_F(CopyTree, CopiesAnAssignmentWithoutATarget) {
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  EXPECT_EQ(KindsFrom(graph, Copy(edge)), "320");
}

TEST_F(CopyTree, CopiesAllThatStandsInFrontOfAnAssignmentBackwards) {
  const NodeId first = AddPlain(1);
  const NodeId second = AddPlain(2);
  const NodeId target = AddPlain(3);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({first, second, target, edge});
  EXPECT_EQ(Copy(edge), 5U);
  EXPECT_EQ(CdfgGetLine(graph, 6), 3);
  EXPECT_EQ(CdfgGetLine(graph, 7), 2);
  EXPECT_EQ(CdfgGetLine(graph, 8), 1);
  EXPECT_EQ(CdfgNodeCount(graph), 8U);
  EXPECT_EQ(NextIds(graph, 8), "8 7 6 5");
  EXPECT_EQ(CdfgGetPrev(graph, 5), 6U);
  EXPECT_EQ(CdfgGetPrev(graph, 6), 7U);
  EXPECT_EQ(CdfgGetPrev(graph, 7), 8U);
  EXPECT_EQ(CdfgGetPrev(graph, 8), 0U);
}

TEST_F(CopyTree, CopiesATargetWithAllBelowIt) {
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({target, edge});
  CdfgSetAttrStr(graph, target, DfgPort_NAME, "x");
  const NodeId index = Add(DFG_DIMENSION);
  Own(target, DfgPort_DIMNODE, index);
  CdfgSetAttrInt(graph, edge, DfgEdge_MSB, 7);
  EXPECT_EQ(Copy(edge), 4U);
  EXPECT_EQ(KindsFrom(graph, 4), "320 357 373");
  EXPECT_EQ(Attributes(graph, 4), "1=7");
  EXPECT_EQ(Attributes(graph, 5), "1=\"x\" 13->6");
  EXPECT_EQ(CdfgGetPrev(graph, 6), 5U);
}

TEST_F(CopyTree, MakesWhatAnAssignmentOwnsBeforeItsTarget) {
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({target, edge});
  Own(edge, DfgEdge_DIRECTIVE, Add(INFO_DIRECTIVE));
  EXPECT_EQ(KindsFrom(graph, Copy(edge)), "320 376 357");
}

TEST_F(CopyTree, EndsInFrontOfTheOperationThatHoldsAnAssignment) {
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({operation, target, edge});
  EXPECT_EQ(Copy(edge), 4U);
  EXPECT_EQ(KindsFrom(graph, 4), "320 357");
  EXPECT_EQ(CdfgGetPrev(graph, 5), 0U);
}

TEST_F(CopyTree, CopiesNoOperationThatStandsDirectlyInFrontOfAnAssignment) {
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Own(operation, DfgOpeman_OPE, edge);
  EXPECT_EQ(Copy(operation), 3U);
  EXPECT_EQ(KindsFrom(graph, 3), "304 320");
  EXPECT_EQ(CdfgGetPrev(graph, 4), 0U);
}

// In t = u = v the second edge stands behind the first one: its prev is the node copied before it.
TEST_F(CopyTree, CopiesAnAssignmentBehindAnAssignmentWithoutATargetOfItsOwn) {
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId outer = Add(DFG_EDGE_BLOCKING);
  const NodeId inner = Add(DFG_EDGE_BLOCKING);
  Chain({target, outer, inner});
  EXPECT_EQ(Copy(outer), 4U);
  EXPECT_EQ(KindsFrom(graph, 4), "320 357 320");
  EXPECT_EQ(NextIds(graph, 5), "5 4 6");
  EXPECT_EQ(CdfgGetPrev(graph, 6), 4U);
}

TEST_F(CopyTree, KeepsTheTargetOfAnAssignmentInTheMiddleOfAChain) {
  // The outer edge leads to the inner one, whose prev is a target of its own.
  const NodeId outer_target = AddPlain(1);
  const NodeId outer = Add(DFG_EDGE_BLOCKING);
  const NodeId inner_target = AddPlain(2);
  const NodeId inner = Add(DFG_EDGE_BLOCKING);
  const NodeId value = Add(DFG_INPUT_CONST);
  Chain({outer_target, outer});
  Chain({inner_target, inner, value});
  CdfgSetNext(graph, outer, inner);
  EXPECT_EQ(Copy(outer), 6U);
  EXPECT_EQ(KindsFrom(graph, 6), "320 377 320 377 344");
  EXPECT_EQ(CdfgGetLine(graph, 7), 1);
  EXPECT_EQ(CdfgGetLine(graph, 9), 2);
  EXPECT_EQ(NextIds(graph, 7), "7 6 8 10") << "the outer edge leads to the inner one";
  EXPECT_EQ(NextIds(graph, 9), "9 8 10");
  EXPECT_EQ(CdfgGetPrev(graph, 8), 9U) << "whose prev stays its target";
  EXPECT_EQ(CdfgGetPrev(graph, 10), 8U);
}

TEST_F(CopyTree, CopiesNoTargetThatIsNotThere) {
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  CdfgSetPrev(graph, edge, 99);
  const NodeId copy = Copy(edge);
  EXPECT_EQ(KindsFrom(graph, copy), "320");
}

TEST_F(CopyTree, StopsTheRunWhenTargetsLeadBackToThemselves) {
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({target, edge});
  CdfgSetPrev(graph, target, target);
  EXPECT_EQ(RunCatchingStop([&] { Copy(edge); }), Endless(target));
}

// --- Shared references ---------------------------------------------------------------------------

using Reference = std::pair<std::uint32_t, std::uint32_t>;

// Every reference, by kind and attribute, that a copy shares with its source.
std::set<Reference> SharedReferences() {
  std::set<Reference> references = {{40, 2},   {36, 8},   {36, 16}, {38, 3},  {46, 6},  {47, 4},
                                    {47, 5},   {47, 8},   {47, 16}, {47, 20}, {47, 30}, {49, 1},
                                    {368, 19}, {368, 20}, {371, 9}, {372, 8}, {374, 2}, {375, 2}};
  for (std::uint32_t kind = 336; kind <= 357; ++kind) {
    if (kind > 342 && kind < 352) continue;
    for (const std::uint32_t attribute : {2U, 3U, 4U, 5U, 20U}) references.emplace(kind, attribute);
  }
  return references;
}

TEST_F(CopyTree, SharesExactlyTheReferencesThatPointSomewhere) {
  const std::set<Reference> shared = SharedReferences();
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    for (std::uint32_t attribute = 0; attribute <= 33; ++attribute) {
      const NodeId node = Add(kind);
      const NodeId target = AddPlain();
      CdfgSetAttrNode(graph, node, attribute, target);
      const NodeId copy = Copy(node);
      const bool is_shared = shared.contains({kind, attribute});
      EXPECT_EQ(CdfgGetAttr(graph, copy, attribute), is_shared ? target : copy + 1)
          << kind << '/' << attribute;
      EXPECT_EQ(CdfgHasNode(graph, copy + 1), is_shared ? 0 : 1) << kind << '/' << attribute;
      EXPECT_EQ(CdfgGetPrev(graph, target), 0U) << kind << '/' << attribute;
    }
  }
}

TEST_F(CopyTree, CopiesWhatMembersNameOnlyWhileTheMemberSwitchIsOn) {
  const NodeId member = Add(CFG_MEMBER);
  const NodeId value = Add(DFG_INPUT_CONST);
  Own(member, CfgMember_SIGNAL, value);
  EXPECT_EQ(Attributes(graph, Copy(member)), "1->2");
  CdfgMemberShareSwitch = 1;
  const NodeId copy = Copy(member);
  EXPECT_EQ(Attributes(graph, copy), "1->5");
  EXPECT_EQ(CdfgGetPrev(graph, 5), copy);
}

TEST_F(CopyTree, SharesAllOtherReferencesWhileTheMemberSwitchIsOn) {
  CdfgMemberShareSwitch = 1;
  const NodeId port = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_DECL, AddPlain());
  EXPECT_EQ(Attributes(graph, Copy(port)), "2->2");
}

TEST_F(CopyTree, CopiesMembersOfAReferenceAndSharesTheWayBack) {
  const NodeId port = Add(DFG_INPUT_VAR);
  const NodeId son = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_STRSON, son);
  CdfgSetAttrNode(graph, son, DfgPort_STRPARENT, port);
  EXPECT_EQ(Copy(port), 3U);
  EXPECT_EQ(Attributes(graph, 3), "19->4");
  EXPECT_EQ(Attributes(graph, 4), "20->1") << "still the source";
}

// --- Jumps ---------------------------------------------------------------------------------------

// The kinds whose jumps are led to the copies.
bool HasJumpWithin(std::uint32_t kind) {
  return kind == 262 || kind == 263 || kind == 265 || kind == 268 || kind == 269 || kind == 273 ||
         kind == 279 || kind == 280 || kind == 285 || kind == 287;
}

TEST_F(CopyTree, LeadsJumpsOfBlocksLabelsAndGotosToTheCopies) {
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    const NodeId node = Add(kind);
    const NodeId label = Add(CFG_STATE_LABEL);
    Chain({node, label});
    CdfgSetJump(graph, node, label);
    const NodeId copy = Copy(node);
    const NodeId expected = HasJumpWithin(kind) ? copy + 1 : kind == 368 ? label : 0;
    EXPECT_EQ(CdfgGetJump(graph, copy), expected) << kind;
  }
}

TEST_F(CopyTree, LeadsJumpsOnlyToKindsThatHaveThem) {
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    const NodeId jump = Add(CFG_GOTO);
    const NodeId target = Add(kind);
    Chain({jump, target});
    CdfgSetJump(graph, jump, target);
    const NodeId copy = Copy(jump);
    EXPECT_EQ(CdfgGetJump(graph, copy), HasJumpWithin(kind) ? copy + 1 : 0U) << kind;
  }
}

TEST_F(CopyTree, LeadsJumpsForwardsAndBackwards) {
  const NodeId begin = Add(CFG_STATE_BEGIN);
  const NodeId end = Add(CFG_STATE_END);
  Chain({begin, end});
  CdfgSetJump(graph, begin, end);
  CdfgSetJump(graph, end, begin);
  EXPECT_EQ(Copy(begin), 3U);
  EXPECT_EQ(CdfgGetJump(graph, 3), 4U);
  EXPECT_EQ(CdfgGetJump(graph, 4), 3U);
}

TEST_F(CopyTree, LeadsJumpsInAndOutOfNestedBodies) {
  // label; while { goto label; inner: } goto inner;
  const NodeId label = Add(CFG_STATE_LABEL);
  const NodeId loop = Add(CFG_LOOP_STAT);
  const NodeId go_out = Add(CFG_GOTO);
  const NodeId inner = Add(CFG_STATE_LABEL);
  const NodeId go_in = Add(CFG_GOTO);
  Chain({label, loop, go_in});
  Own(loop, CfgLoopStat_CFG, go_out);
  Chain({go_out, inner});
  CdfgSetJump(graph, go_out, label);
  CdfgSetJump(graph, go_in, inner);
  EXPECT_EQ(Copy(label), 6U);
  EXPECT_EQ(KindsFrom(graph, 6), "285 283 287 285 287");
  EXPECT_EQ(CdfgGetJump(graph, 8), 6U);
  EXPECT_EQ(CdfgGetJump(graph, 10), 9U);
}

TEST_F(CopyTree, LeavesJumpsOutOfTheCopiedRegionOut) {
  const NodeId label = Add(CFG_STATE_LABEL);
  const NodeId jump = Add(CFG_GOTO);
  CdfgSetJump(graph, jump, label);
  EXPECT_EQ(CdfgGetJump(graph, Copy(jump)), 0U);
  EXPECT_EQ(CdfgGetJump(graph, jump), label) << "the source keeps it";
}

TEST_F(CopyTree, LeavesJumpsIntoTheCopiedRegionAtTheSource) {
  const NodeId label = Add(CFG_STATE_LABEL);
  const NodeId jump = Add(CFG_GOTO);
  CdfgSetJump(graph, jump, label);
  Copy(label);
  EXPECT_EQ(CdfgGetJump(graph, jump), label);
}

TEST_F(CopyTree, ForgetsTheJumpsOfTheCopyBefore) {
  const NodeId label = Add(CFG_STATE_LABEL);
  const NodeId jump = Add(CFG_GOTO);
  CdfgSetJump(graph, jump, label);
  Copy(label);
  EXPECT_EQ(CdfgGetJump(graph, Copy(jump)), 0U);
}

TEST_F(CopyTree, LeadsJumpsToTheFirstCopyOfANodeCopiedTwice) {
  // Both branches own the label; the goto behind them jumps to it.
  const NodeId condition = Add(CFG_STATE_IF);
  const NodeId branch = Add(CFG_IF_THEN);
  const NodeId other_branch = Add(CFG_IF_ELSE);
  const NodeId label = Add(CFG_STATE_LABEL);
  const NodeId jump = Add(CFG_GOTO);
  Chain({condition, jump});
  Own(condition, CfgStateIf_STATOPE, branch);
  Chain({branch, other_branch});
  CdfgSetAttrNode(graph, branch, CfgIfThen_CFG, label);
  CdfgSetAttrNode(graph, other_branch, CfgIfElse_CFG, label);
  CdfgSetJump(graph, jump, label);
  EXPECT_EQ(Copy(condition), 6U);
  EXPECT_EQ(KindsFrom(graph, 6), "265 266 285 267 285 287");
  EXPECT_EQ(CdfgGetJump(graph, 11), 8U);
}

TEST_F(CopyTree, LeavesNoUserDataBehind) {
  const NodeId label = Add(CFG_STATE_LABEL);
  const NodeId jump = Add(CFG_GOTO);
  Chain({label, jump});
  CdfgSetJump(graph, jump, label);
  const NodeId copy = Copy(label);
  for (NodeId id = label; id <= copy + 1; ++id) {
    EXPECT_EQ(CdfgGetUserData(graph, id), nullptr) << id;
  }
}

// A damaged graph: what is copied beside the label is said to have its origin in it.
TEST_F(CopyTree, TakesNoLabelForTheOriginOfADeclaration) {
  const NodeId label = Add(CFG_STATE_LABEL);
  const NodeId declaration = Add(CFG_DECLARE);
  Chain({label, declaration});
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, label);
  CdfgRemapSwitch = 1;
  const NodeId copy = Copy(label);
  CdfgRemapSwitch = 0;
  CdfgClearUserTable(graph);
  EXPECT_EQ(CdfgGetAttr(graph, copy + 1, CfgDecl_STRUCTORGNODE), label);
}

TEST_F(CopyTree, KeepsTheFunctionThatACallNames) {
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId call = Add(DFG_FUNC_CALL);
  CdfgSetJump(graph, call, function);
  EXPECT_EQ(CdfgGetJump(graph, Copy(call)), function);
}

TEST_F(CopyTree, KeepsTheLabelThatACallNamesWhereverItsCopyStands) {
  const NodeId call = Add(DFG_FUNC_CALL);
  const NodeId label = Add(CFG_STATE_LABEL);
  Chain({call, label});
  CdfgSetJump(graph, call, label);
  EXPECT_EQ(CdfgGetJump(graph, Copy(call)), label);
}

TEST_F(CopyTree, KeepsNoFunctionOfACallInFrontOfAnAssignment) {
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId call = Add(DFG_FUNC_CALL);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({call, edge});
  CdfgSetJump(graph, call, function);
  const NodeId copy = Copy(edge);
  EXPECT_EQ(CdfgGetKind(graph, copy + 1), static_cast<unsigned>(DFG_FUNC_CALL));
  EXPECT_EQ(CdfgGetJump(graph, copy + 1), 0U);
}

TEST_F(CopyTree, LeadsManyJumpsAtOnce) {
  // A search through all pairs for each jump would take minutes.
  constexpr NodeId kPairs = 100000;
  for (NodeId id = 1; id <= kPairs * 2; id += 2) {
    CdfgSetJump(graph, Add(CFG_GOTO), kPairs * 2 + 1 - id);
    Add(CFG_STATE_LABEL);
    if (id > 1) Chain({id - 1, id});
    Chain({id, id + 1});
  }
  // Node 1 jumps to node 200000, node 3 to 199998, and so on: always to a label.
  const NodeId copy = Copy(1);
  EXPECT_EQ(CdfgGetJump(graph, copy), copy + kPairs * 2 - 1);
  EXPECT_EQ(CdfgGetJump(graph, copy + 2), copy + kPairs * 2 - 3);
  EXPECT_EQ(CdfgGetJump(graph, copy + kPairs * 2 - 2), copy + 1);
}

// --- Copied declarations -------------------------------------------------------------------------

TEST_F(CopyTree, RecordsNothingWhileTheRemapSwitchIsOff) {
  const NodeId declaration = Add(CFG_DECLARE);
  Copy(declaration);
  EXPECT_EQ(CdfgGetUserData(graph, declaration), nullptr);
  EXPECT_EQ(CdfgGetDeclarationCopy(graph, declaration), nullptr);
}

TEST_F(CopyTree, RecordsCopiedDeclarationsAndStructures) {
  CdfgRemapSwitch = 1;
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId declaration = Add(CFG_DECLARE);
  Chain({structure, declaration});
  const NodeId copy = Copy(structure);
  ASSERT_NE(CdfgGetDeclarationCopy(graph, structure), nullptr);
  EXPECT_EQ(CdfgGetDeclarationCopy(graph, structure)->source, structure);
  EXPECT_EQ(CdfgGetDeclarationCopy(graph, structure)->copy, copy);
  ASSERT_NE(CdfgGetDeclarationCopy(graph, declaration), nullptr);
  EXPECT_EQ(CdfgGetDeclarationCopy(graph, declaration)->copy, copy + 1);
  EXPECT_EQ(CdfgGetUserData(graph, declaration), CdfgGetDeclarationCopy(graph, declaration));
  EXPECT_EQ(CdfgGetUserData(graph, copy), nullptr);
  EXPECT_EQ(CdfgGetUserData(graph, copy + 1), nullptr);
}

TEST_F(CopyTree, RecordsNoOtherKind) {
  CdfgRemapSwitch = 1;
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    const NodeId node = Add(kind);
    Copy(node);
    EXPECT_EQ(CdfgGetUserData(graph, node) != nullptr, kind == 45 || kind == 47) << kind;
  }
}

TEST_F(CopyTree, RecordsDeclarationsThatAreOwned) {
  CdfgRemapSwitch = 1;
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId declaration = Add(CFG_DECLARE);
  Own(function, CfgFunc_DECLARE, declaration);
  const NodeId copy = Copy(function);
  ASSERT_NE(CdfgGetDeclarationCopy(graph, declaration), nullptr);
  EXPECT_EQ(CdfgGetDeclarationCopy(graph, declaration)->copy, copy + 1);
}

TEST_F(CopyTree, LetsACopiedDeclarationNameTheCopyOfItsStructure) {
  CdfgRemapSwitch = 1;
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId declaration = Add(CFG_DECLARE);
  Chain({structure, declaration});
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, structure);
  const NodeId copy = Copy(structure);
  EXPECT_EQ(Attributes(graph, copy + 1), "20->" + std::to_string(copy));
  EXPECT_EQ(Attributes(graph, declaration), "20->1") << "the source keeps its own";
}

TEST_F(CopyTree, LetsACopiedDeclarationNameAStructureCopiedBefore) {
  CdfgRemapSwitch = 1;
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId declaration = Add(CFG_DECLARE);
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, structure);
  const NodeId structure_copy = Copy(structure);
  EXPECT_EQ(CdfgGetAttr(graph, Copy(declaration), CfgDecl_STRUCTORGNODE), structure_copy);
}

TEST_F(CopyTree, LetsADeclarationNameItsOwnCopy) {
  CdfgRemapSwitch = 1;
  const NodeId declaration = Add(CFG_DECLARE);
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, declaration);
  const NodeId copy = Copy(declaration);
  EXPECT_EQ(CdfgGetAttr(graph, copy, CfgDecl_STRUCTORGNODE), copy);
}

TEST_F(CopyTree, LeavesTheOriginOfADeclarationCopiedInFrontOfIt) {
  CdfgRemapSwitch = 1;
  const NodeId declaration = Add(CFG_DECLARE);
  const NodeId structure = Add(CFG_STRUCT);
  Chain({declaration, structure});
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, structure);
  EXPECT_EQ(CdfgGetAttr(graph, Copy(declaration), CfgDecl_STRUCTORGNODE), structure);
}

TEST_F(CopyTree, LeavesTheOriginOfADeclarationThatWasNotCopied) {
  CdfgRemapSwitch = 1;
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId declaration = Add(CFG_DECLARE);
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, structure);
  EXPECT_EQ(CdfgGetAttr(graph, Copy(declaration), CfgDecl_STRUCTORGNODE), structure);
}

TEST_F(CopyTree, LeavesTheOriginAloneWhileTheRemapSwitchIsOff) {
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId declaration = Add(CFG_DECLARE);
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, structure);
  CdfgRemapSwitch = 1;
  Copy(structure);
  CdfgRemapSwitch = 0;
  EXPECT_EQ(CdfgGetAttr(graph, Copy(declaration), CfgDecl_STRUCTORGNODE), structure);
}

TEST_F(CopyTree, RecordsTheNewestCopyOfANodeCopiedTwice) {
  CdfgRemapSwitch = 1;
  const NodeId declaration = Add(CFG_DECLARE);
  Copy(declaration);
  const NodeId second = Copy(declaration);
  EXPECT_EQ(CdfgGetDeclarationCopy(graph, declaration)->copy, second);
}

TEST_F(CopyTree, KeepsRecordsValidWhileOthersAreAdded) {
  CdfgRemapSwitch = 1;
  for (int i = 0; i < 2000; ++i) Add(CFG_DECLARE);
  for (NodeId id = 1; id <= 2000; ++id) Copy(id);
  for (NodeId id = 1; id <= 2000; ++id) {
    ASSERT_EQ(CdfgGetDeclarationCopy(graph, id)->source, id);
    ASSERT_EQ(CdfgGetDeclarationCopy(graph, id)->copy, 2000 + id);
  }
}

TEST_F(CopyTree, ForgetsItsRecordsWhenTheyAreCleared) {
  CdfgRemapSwitch = 1;
  const NodeId first = Add(CFG_DECLARE);
  const NodeId second = Add(CFG_STRUCT);
  Copy(first);
  Copy(second);
  CdfgClearUserTable(graph);
  EXPECT_EQ(CdfgGetUserData(graph, first), nullptr);
  EXPECT_EQ(CdfgGetUserData(graph, second), nullptr);
  CdfgClearUserTable(graph);
  Copy(first);
  EXPECT_NE(CdfgGetUserData(graph, first), nullptr);
}

TEST_F(CopyTree, ClearsNoUserDataButThatOfItsRecords) {
  CdfgRemapSwitch = 1;
  const NodeId declaration = Add(CFG_DECLARE);
  const NodeId other = Add(CFG_DECLARE);
  CdfgSetUserData(graph, other, this);
  Copy(declaration);
  CdfgClearUserTable(graph);
  EXPECT_EQ(CdfgGetUserData(graph, other), this);
  CdfgSetUserData(graph, other, nullptr);
}

// --- One node alone ------------------------------------------------------------------------------

TEST_F(CopyTree, OfANodeAloneLeavesOutWhatFollows) {
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId behind = Add(CFG_FUNCTION);
  Chain({function, behind});
  Own(function, CfgFunc_STARTCFG, Add(CFG_RETURN));
  const NodeId copy = CdfgCopyAlone(graph, function);
  EXPECT_EQ(KindsFrom(graph, copy), "36 288");
  EXPECT_EQ(CdfgGetNext(graph, copy), 0U);
  EXPECT_EQ(CdfgGetNext(graph, function), behind);
  EXPECT_EQ(CdfgGetPrev(graph, behind), function);
}

TEST_F(CopyTree, OfNothingAloneIsNothing) {
  EXPECT_EQ(CdfgCopyAlone(graph, 0), 0U);
  EXPECT_EQ(CdfgCopyAlone(graph, 99), 0U);
}

// --- Circles and depth ---------------------------------------------------------------------------

TEST_F(CopyTree, StopsTheRunWhenAChainLeadsBackToItself) {
  const NodeId node = Add(CFG_BREAK);
  CdfgSetNext(graph, node, node);
  EXPECT_EQ(RunCatchingStop([&] { Copy(node); }), Endless(node));
}

TEST_F(CopyTree, StopsTheRunWhenANodeOwnsItself) {
  const NodeId node = Add(DFG_OPERATION);
  CdfgSetAttrNode(graph, node, DfgOpe_LEFT, node);
  EXPECT_EQ(RunCatchingStop([&] { Copy(node); }), Endless(node));
}

TEST_F(CopyTree, StopsTheRunWhenNodesOwnEachOther) {
  const NodeId entry = Add(DFG_MANAGE_OPERATION);
  const NodeId first = Add(DFG_OPERATION);
  const NodeId second = Add(DFG_OPERATION);
  CdfgSetAttrNode(graph, entry, DfgOpeman_OPE, first);
  CdfgSetAttrNode(graph, first, DfgOpe_LEFT, second);
  CdfgSetAttrNode(graph, second, DfgOpe_RIGHT, first);
  const auto outcome = RunCatchingStop([&] { Copy(entry); });
  EXPECT_TRUE(outcome == Endless(first) || outcome == Endless(second)) << outcome;
}

TEST_F(CopyTree, StopsTheRunWhenACircleRunsThroughNextAndOwning) {
  const NodeId loop = Add(CFG_LOOP_STAT);
  const NodeId body = Add(CFG_BREAK);
  CdfgSetAttrNode(graph, loop, CfgLoopStat_CFG, body);
  CdfgSetNext(graph, body, loop);
  const auto outcome = RunCatchingStop([&] { Copy(loop); });
  EXPECT_TRUE(outcome == Endless(loop) || outcome == Endless(body)) << outcome;
}

TEST_F(CopyTree, DoesNotStopAtCirclesOfSharedReferences) {
  const NodeId port = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_DECL, port);
  CdfgSetJump(graph, port, port);
  CdfgSetPrev(graph, port, port);
  EXPECT_EQ(RunCatchingStop([&] { Copy(port); }), Quiet());
}

TEST_F(CopyTree, StopsTheRunWhenTheCopyDoublesWithEveryLevel) {
  if (support::kAddressSanitizer) GTEST_SKIP() << "makes millions of nodes before it stops";
  AddDoublingLevels(64);
  ExpectEndlessUpTo(64, RunCatchingStop([&] { Copy(1); }));
}

TEST_F(CopyTree, StopsTheRunWhenTheCopyTakesMoreStepsThanGranted) {
  AddDoublingLevels(64);
  runaway::steps_left = 100000;
  ExpectEndlessUpTo(64, RunCatchingStop([&] { Copy(1); }));
  EXPECT_LE(CdfgNodeCount(graph), 64U + 100000U);
}

TEST_F(CopyTree, DoesNotStopWhenAFewLevelsDouble) {
  AddDoublingLevels(12);
  EXPECT_EQ(RunCatchingStop([&] { Copy(1); }), Quiet());
  EXPECT_EQ(CdfgNodeCount(graph), 12U + 4095U);  // 1 + 2 + 4 + ... + 2048
}

TEST_F(CopyTree, AMillionNodesDeepNeedsNoDeepStack) {
  constexpr NodeId kDepth = 1000000;
  for (NodeId id = 1; id <= kDepth; ++id) {
    Add(DFG_OPERATION);
    if (id > 1) CdfgSetAttrNode(graph, id - 1, DfgOpe_LEFT, id);
  }
  NodeId copy = 0;
  support::RunOnStack(support::kDefaultStack, [&] { copy = Copy(1); });
  EXPECT_EQ(copy, kDepth + 1);
  EXPECT_EQ(CdfgNodeCount(graph), kDepth * 2);
  EXPECT_EQ(CdfgGetAttr(graph, copy, DfgOpe_LEFT), copy + 1);
  EXPECT_EQ(CdfgGetPrev(graph, copy + kDepth - 1), copy + kDepth - 2);
}

TEST_F(CopyTree, OfALongChainTakesTimeByItsLength) {
  // A walk to the end of the copy for each node would take hours.
  constexpr NodeId kLength = 300000;
  for (NodeId id = 1; id <= kLength; ++id) {
    Add(CFG_BREAK);
    if (id > 1) Chain({id - 1, id});
  }
  const NodeId copy = Copy(1);
  EXPECT_EQ(CdfgGetNext(graph, copy + kLength - 2), copy + kLength - 1);
  EXPECT_EQ(CdfgGetNext(graph, copy + kLength - 1), 0U);
}

}  // namespace
