// Chains, bodies and keys.
#include "cdfg/edit.h"

#include <map>
#include <string>

#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

using support::Attributes;
using support::Endless;
using support::GraphTest;
using support::NextIds;
using support::Quiet;
using support::RunCatchingStop;

class Edit : public GraphTest {
 protected:
  // Nodes 1 to `count` of a kind that says nothing.
  void AddNodes(int count) {
    for (int i = 0; i < count; ++i) Add(CFG_COMMENT);
  }
};

// --- Links ---------------------------------------------------------------------------------------

TEST_F(Edit, LinksBothWays) {
  AddNodes(3);
  CdfgLink(graph, 2, 3);
  EXPECT_EQ(CdfgGetNext(graph, 2), 3U);
  EXPECT_EQ(CdfgGetPrev(graph, 3), 2U);
  EXPECT_EQ(CdfgGetPrev(graph, 2), 0U);
  CdfgLink(graph, 2, 0);
  EXPECT_EQ(CdfgGetNext(graph, 2), 0U);
  EXPECT_EQ(CdfgGetPrev(graph, 3), 2U) << "what was behind it is not touched";
}

// --- The last node -------------------------------------------------------------------------------

TEST_F(Edit, FindsTheLastNodeOfAChain) {
  AddNodes(3);
  Chain({1, 3, 2});
  EXPECT_EQ(CdfgLastInChain(graph, 1), 2U);
  EXPECT_EQ(CdfgLastInChain(graph, 3), 2U);
}

TEST_F(Edit, FindsANodeAloneAsTheLastOne) {
  AddNodes(1);
  EXPECT_EQ(CdfgLastInChain(graph, 1), 1U);
}

TEST_F(Edit, FindsNoLastNodeOfNoChain) { EXPECT_EQ(CdfgLastInChain(graph, 0), 0U); }

TEST_F(Edit, StopsTheRunWhenAChainHasNoLastNode) {
  AddNodes(1);
  CdfgSetNext(graph, 1, 1);
  EXPECT_EQ(RunCatchingStop([&] { CdfgLastInChain(graph, 1); }), Endless(1));
}

// --- The beginning of a statement ----------------------------------------------------------------

TEST_F(Edit, FindsTheFirstNodeBehindTheOperation) {
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({operation, target, edge});
  EXPECT_EQ(CdfgPrevUntilOperation(graph, edge), target);
  EXPECT_EQ(CdfgPrevUntilOperation(graph, target), target);
}

TEST_F(Edit, FindsTheFirstNodeWithoutPrev) {
  const NodeId target = Add(DFG_OUTPUT_VAR);
  const NodeId edge = Add(DFG_EDGE_BLOCKING);
  Chain({target, edge});
  EXPECT_EQ(CdfgPrevUntilOperation(graph, edge), target);
}

TEST_F(Edit, GoesOnPastOtherKindsOfOwners) {
  const NodeId owner = Add(DFG_OPERATION);
  const NodeId operand = Add(DFG_INPUT_VAR);
  CdfgSetPrev(graph, operand, owner);
  EXPECT_EQ(CdfgPrevUntilOperation(graph, operand), owner);
}

TEST_F(Edit, GoesOnFromAnOperationItself) {
  const NodeId path = Add(CFG_STATE_DATAPATH);
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
  CdfgSetPrev(graph, operation, path);
  EXPECT_EQ(CdfgPrevUntilOperation(graph, operation), path);
}

TEST_F(Edit, FindsNoBeginningOfNothing) { EXPECT_EQ(CdfgPrevUntilOperation(graph, 0), 0U); }

TEST_F(Edit, StopsTheRunWhenAStatementHasNoBeginning) {
  AddNodes(1);
  CdfgSetPrev(graph, 1, 1);
  EXPECT_EQ(RunCatchingStop([&] { CdfgPrevUntilOperation(graph, 1); }), Endless(1));
}

// --- Appending -----------------------------------------------------------------------------------

TEST_F(Edit, AppendsBehindANodeAlone) {
  AddNodes(2);
  EXPECT_EQ(CdfgAppend(graph, 1, 2), 0);
  EXPECT_EQ(NextIds(graph, 1), "1 2");
  EXPECT_EQ(CdfgGetPrev(graph, 2), 1U);
}

TEST_F(Edit, AppendsBehindTheLastNode) {
  AddNodes(3);
  Chain({1, 2});
  EXPECT_EQ(CdfgAppend(graph, 1, 3), 0);
  EXPECT_EQ(NextIds(graph, 1), "1 2 3");
  EXPECT_EQ(CdfgGetPrev(graph, 3), 2U);
  EXPECT_EQ(CdfgGetPrev(graph, 2), 1U);
}

TEST_F(Edit, AppendsAWholeChain) {
  AddNodes(4);
  Chain({1, 2});
  Chain({3, 4});
  EXPECT_EQ(CdfgAppend(graph, 1, 3), 0);
  EXPECT_EQ(NextIds(graph, 1), "1 2 3 4");
  EXPECT_EQ(CdfgGetPrev(graph, 3), 2U);
}

TEST_F(Edit, AppendsAndLeavesTheOtherLinksAlone) {
  AddNodes(4);
  CdfgSetPrev(graph, 1, 4);
  CdfgSetNext(graph, 2, 3);
  CdfgAppend(graph, 1, 2);
  EXPECT_EQ(CdfgGetPrev(graph, 1), 4U);
  EXPECT_EQ(CdfgGetNext(graph, 2), 3U);
}

TEST_F(Edit, DoesNotAppendToANodeWhoseNextIsItself) {
  AddNodes(2);
  CdfgSetNext(graph, 1, 1);
  EXPECT_EQ(CdfgAppend(graph, 1, 2), -1);
  EXPECT_EQ(CdfgGetNext(graph, 1), 1U);
  EXPECT_EQ(CdfgGetPrev(graph, 2), 0U);
}

TEST_F(Edit, DoesNotAppendToAChainThatEndsInANodeWhoseNextIsItself) {
  AddNodes(3);
  Chain({1, 2});
  CdfgSetNext(graph, 2, 2);
  EXPECT_EQ(CdfgAppend(graph, 1, 3), -1);
  EXPECT_EQ(CdfgGetNext(graph, 2), 2U);
  EXPECT_EQ(CdfgGetPrev(graph, 3), 0U);
}

TEST_F(Edit, DoesNotAppendNothingOrToNothing) {
  AddNodes(1);
  EXPECT_EQ(CdfgAppend(graph, 0, 1), -1);
  EXPECT_EQ(CdfgAppend(graph, 1, 0), -1);
  EXPECT_EQ(CdfgAppend(graph, 0, 0), -1);
  EXPECT_EQ(CdfgGetNext(graph, 1), 0U);
  EXPECT_EQ(CdfgGetPrev(graph, 1), 0U);
}

TEST_F(Edit, DoesNotAppendToUnknownNodes) {
  AddNodes(1);
  EXPECT_EQ(CdfgAppend(graph, 99, 1), -1);
  EXPECT_EQ(CdfgGetPrev(graph, 1), 0U);
}

// A dangling link stays one when what it leads to is appended elsewhere.
TEST_F(Edit, AppendsUnknownNodesAsALink) {
  AddNodes(1);
  EXPECT_EQ(CdfgAppend(graph, 1, 99), 0);
  EXPECT_EQ(CdfgGetNext(graph, 1), 99U);
}

TEST_F(Edit, StopsTheRunWhenAppendingToACircle) {
  AddNodes(3);
  Chain({1, 2, 1});
  const auto outcome = RunCatchingStop([&] { CdfgAppend(graph, 1, 3); });
  EXPECT_TRUE(outcome == Endless(1) || outcome == Endless(2)) << outcome;
}

// --- Bodies --------------------------------------------------------------------------------------

// Every kind whose body hangs on an attribute.
const std::map<std::uint32_t, std::uint32_t>& BodyAttributes() {
  static const std::map<std::uint32_t, std::uint32_t> attributes = {
      {16, 1},  {17, 1},  {36, 1},  {265, 4}, {269, 4},
      {266, 2}, {267, 2}, {279, 2}, {283, 2}, {272, 3}};
  return attributes;
}

TEST_F(Edit, AttachesABodyWhereItsOwnersKindHasIt) {
  for (const auto& [kind, attribute] : BodyAttributes()) {
    const NodeId parent = Add(kind);
    const NodeId child = Add(CFG_STATE_BEGIN);
    CdfgAttachBody(graph, parent, child);
    EXPECT_EQ(Attributes(graph, parent), std::to_string(attribute) + "->" + std::to_string(child))
        << kind;
    EXPECT_EQ(CdfgGetNext(graph, parent), 0U) << kind;
    EXPECT_EQ(CdfgGetPrev(graph, child), parent) << kind;
  }
}

TEST_F(Edit, AttachesABodyBehindAnOwnerOfAnyOtherKind) {
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    if (BodyAttributes().contains(kind)) continue;
    const NodeId parent = Add(kind);
    const NodeId child = Add(CFG_STATE_BEGIN);
    CdfgAttachBody(graph, parent, child);
    EXPECT_EQ(CdfgGetNext(graph, parent), child) << kind;
    EXPECT_EQ(CdfgGetAttrCount(graph, parent), 0) << kind;
    EXPECT_EQ(CdfgGetPrev(graph, child), parent) << kind;
  }
}

TEST_F(Edit, AttachesABodyInPlaceOfTheOldOne) {
  const NodeId loop = Add(CFG_LOOP_STAT);
  const NodeId old_body = Add(CFG_STATE_BEGIN);
  const NodeId new_body = Add(CFG_STATE_BEGIN);
  CdfgAttachBody(graph, loop, old_body);
  CdfgAttachBody(graph, loop, new_body);
  EXPECT_EQ(Attributes(graph, loop), "2->3");
  EXPECT_EQ(CdfgGetPrev(graph, old_body), loop) << "is left alone";
}

TEST_F(Edit, AttachesNoBodyAsAReferenceToNothing) {
  const NodeId loop = Add(CFG_LOOP_STAT);
  CdfgAttachBody(graph, loop, 0);
  EXPECT_EQ(Attributes(graph, loop), "2->0");
  const NodeId other = Add(CFG_GOTO);
  CdfgSetNext(graph, other, loop);
  CdfgAttachBody(graph, other, 0);
  EXPECT_EQ(CdfgGetNext(graph, other), 0U);
}

TEST_F(Edit, AttachesNothingToNothing) {
  const NodeId child = Add(CFG_STATE_BEGIN);
  CdfgAttachBody(graph, 0, child);
  EXPECT_EQ(CdfgGetPrev(graph, child), 0U);
}

// --- Keys ----------------------------------------------------------------------------------------

TEST_F(Edit, FindsTheFirstNodeWithAKey) {
  AddNodes(3);
  Chain({1, 2, 3});
  CdfgSetAttrInt(graph, 1, 1, 10);
  for (const NodeId node : {2U, 3U}) {
    CdfgSetAttrInt(graph, node, 1, 20);
    CdfgSetAttrInt(graph, node, 2, static_cast<std::int32_t>(node * 100));
  }
  std::int32_t value = -1;
  EXPECT_EQ(CdfgFindByAttr1(graph, 1, 20, &value), 2U);
  EXPECT_EQ(value, 200);
  EXPECT_EQ(CdfgFindByAttr1(graph, 3, 20, &value), 3U);
  EXPECT_EQ(value, 300);
}

TEST_F(Edit, FindsAKeyWhoseNodeHasNoValue) {
  AddNodes(1);
  CdfgSetAttrInt(graph, 1, 1, 10);
  std::int32_t value = -1;
  EXPECT_EQ(CdfgFindByAttr1(graph, 1, 10, &value), 1U);
  EXPECT_EQ(value, 0);
}

TEST_F(Edit, FindsNoKeyThatIsNotThere) {
  AddNodes(2);
  Chain({1, 2});
  CdfgSetAttrInt(graph, 2, 1, 10);
  CdfgSetAttrInt(graph, 2, 2, 30);
  std::int32_t value = -1;
  EXPECT_EQ(CdfgFindByAttr1(graph, 1, 30, &value), 0U);
  EXPECT_EQ(value, 0);
  value = -1;
  EXPECT_EQ(CdfgFindByAttr1(graph, 0, 10, &value), 0U);
  EXPECT_EQ(value, 0);
}

TEST_F(Edit, StopsTheRunWhenAKeyIsSoughtInACircle) {
  AddNodes(1);
  CdfgSetAttrInt(graph, 1, 1, 10);
  CdfgSetNext(graph, 1, 1);
  std::int32_t value = 0;
  EXPECT_EQ(RunCatchingStop([&] { CdfgFindByAttr1(graph, 1, 11, &value); }), Endless(1));
  EXPECT_EQ(RunCatchingStop([&] { CdfgFindByAttr1(graph, 1, 10, &value); }), Quiet());
}

// --- Kinds of a member chain ---------------------------------------------------------------------

TEST_F(Edit, ChangesTheKindAlongAMemberChain) {
  const NodeId first = Add(DFG_INPUT_VAR);
  const NodeId second = Add(DFG_INPUT_REG);
  const NodeId third = Add(DFG_INPUT_VAR);
  const NodeId behind = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, first, DfgPort_STRSON, second);
  CdfgSetAttrNode(graph, second, DfgPort_STRSON, third);
  CdfgSetNext(graph, first, behind);
  CdfgRekindChain(graph, first, DFG_INPUT_VAR, DFG_OUTPUT_VAR);
  EXPECT_EQ(CdfgGetKind(graph, first), static_cast<unsigned>(DFG_OUTPUT_VAR));
  EXPECT_EQ(CdfgGetKind(graph, second), static_cast<unsigned>(DFG_INPUT_REG));
  EXPECT_EQ(CdfgGetKind(graph, third), static_cast<unsigned>(DFG_OUTPUT_VAR));
  EXPECT_EQ(CdfgGetKind(graph, behind), static_cast<unsigned>(DFG_INPUT_VAR));
}

TEST_F(Edit, ChangesNoKindOfNothing) {
  EXPECT_EQ(RunCatchingStop([&] { CdfgRekindChain(graph, 0, DFG_INPUT_VAR, DFG_OUTPUT_VAR); }),
            Quiet());
}

TEST_F(Edit, StopsTheRunWhenKindsAreChangedAlongACircle) {
  const NodeId port = Add(DFG_INPUT_VAR);
  CdfgSetAttrNode(graph, port, DfgPort_STRSON, port);
  EXPECT_EQ(RunCatchingStop([&] { CdfgRekindChain(graph, port, 1, 2); }), Endless(port));
}

// --- Text ----------------------------------------------------------------------------------------

std::string Lowered(std::string text) {
  EXPECT_EQ(StrToLower(text.data()), text.data() + text.size());
  return text;
}

TEST(Lowering, TurnsCapitalsIntoSmallLetters) {
  EXPECT_EQ(Lowered("aBc"), "abc");
  EXPECT_EQ(Lowered("ABCXYZ"), "abcxyz");
}

TEST(Lowering, LeavesEverythingElse) {
  EXPECT_EQ(Lowered("abz @[`{ 019_"), "abz @[`{ 019_");
  EXPECT_EQ(Lowered("\xC3\x84\xE9\xFF"), "\xC3\x84\xE9\xFF");
}

TEST(Lowering, LeavesNothingOfNothing) { EXPECT_EQ(Lowered(""), ""); }

}  // namespace
