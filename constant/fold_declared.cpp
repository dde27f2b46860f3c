// How declarations are folded: array sizes, structure members, initialisers.
//
//   struct { int a[1 + 1]; } s[2 * 8] = {{3 + 4}};   ->   struct { int a[2]; } s[16] = {{7}};
//
// Shape: sizes are the items of CfgDecl_DIMNODE, members hang below the structure node that belongs
// to the declaration, and an initialiser is an operation or a list of members.
#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/walk.h"
#include "constant/fold_steps.h"

namespace {

NodeId MembersOf(const CdfgGraph* graph, NodeId declaration) {
  const NodeId structure = CdfgGetAttr(graph, declaration, CfgDecl_STRUCTNODE);
  return CdfgGetAttr(graph, structure, CfgStruct_MEMBER);
}

void FoldMemberList(CdfgGraph* graph, NodeId first) {
  ChainWalk walk(graph, first);
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == CFG_MEMBER_LIST) {
      walk.Enter(CdfgGetAttr(graph, node, CfgMemberList_MEMBER));
    } else if (kind == CFG_MEMBER) {
      const NodeId signal = CdfgGetAttr(graph, node, CfgMember_SIGNAL);
      ConstStoreFold(graph, node, CfgMember_SIGNAL, ConstFoldTree(graph, signal));
    }
  }
}

void FoldInitialiser(CdfgGraph* graph, NodeId declaration) {
  const NodeId initialiser = CdfgGetAttr(graph, declaration, CfgDecl_INIT);
  if (CdfgGetKind(graph, initialiser) == DFG_OPERATION) {
    ConstStoreFold(graph, declaration, CfgDecl_INIT, ConstFoldTree(graph, initialiser));
  } else {
    FoldMemberList(graph, initialiser);
  }
}

// The initialiser of a member is folded after the members below it.
void FoldMembers(CdfgGraph* graph, NodeId declaration) {
  ChainWalk walk(graph, MembersOf(graph, declaration));
  walk.WithLeaves();
  while (const NodeId member = walk.Next()) {
    if (CdfgGetKind(graph, member) != CFG_DECLARE) continue;
    if (walk.Leaving()) {
      FoldInitialiser(graph, member);
    } else {
      ConstFoldDimensions(graph, member);
      walk.Enter(MembersOf(graph, member));
    }
  }
}

}  // namespace

void ConstFoldDimensions(CdfgGraph* graph, NodeId declaration) {
  for (const NodeId item : NextChain(graph, CdfgGetAttr(graph, declaration, CfgDecl_DIMNODE))) {
    const NodeId folded = ConstFoldTree(graph, CdfgGetAttr(graph, item, DfgDim_NODE));
    if (folded == 0) continue;
    CdfgSetAttrNode(graph, item, DfgDim_NODE, folded);
    CdfgSetPrev(graph, folded, item);
    const NodeId last = CdfgLastInChain(graph, folded);
    if (CdfgGetKind(graph, last) != DFG_INPUT_CONST) continue;
    const std::int32_t size = CdfgGetAttrInt(graph, last, DfgInputCnst_INTVALUE);
    CdfgSetAttrInt(graph, item, DfgDim_CNT, size);
  }
}

void ConstFoldDeclaration(CdfgGraph* graph, NodeId declaration, Initialisers initialisers) {
  ConstFoldDimensions(graph, declaration);
  FoldMembers(graph, declaration);
  if (initialisers == Initialisers::Fold) FoldInitialiser(graph, declaration);
}

void ConstFoldDeclared(CdfgGraph* graph, NodeId list, Initialisers initialisers) {
  for (const NodeId node : NextChain(graph, list)) {
    if (CdfgGetKind(graph, node) == CFG_DECLARE) ConstFoldDeclaration(graph, node, initialisers);
  }
}
