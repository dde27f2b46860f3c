// Turns array sizes that are written as constant expressions into numbers, everywhere in the
// design: passes that count elements read numbers only.
//
//   int a[2 * 8];   ->   int a[16];
//
// Initialisers of the declarations themselves stay as they are, for FoldBodies to fold where it
// matters. Those of structure members have no other place and are folded here.
#include "cdfg/chain.h"
#include "cdfg/walk.h"
#include "constant/fold.h"
#include "constant/fold_steps.h"

namespace {

void FoldList(CdfgGraph* graph, NodeId owner, std::uint32_t attribute) {
  ConstFoldDeclared(graph, CdfgGetAttr(graph, owner, attribute), Initialisers::Leave);
}

void FoldStructures(CdfgGraph* graph, NodeId definition) {
  for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, definition, CfgStructDef_STRUCT))) {
    if (CdfgGetKind(graph, node) == CFG_STRUCT) FoldList(graph, node, CfgStruct_MEMBER);
  }
}

void FoldFunction(CdfgGraph* graph, NodeId function) {
  FoldList(graph, function, CfgFunc_DECLARE);
  FoldList(graph, function, CfgFunc_ARGLIST);
  StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
  while (const NodeId statement = walk.Next()) {
    if (CdfgGetKind(graph, statement) == CFG_DECLARE_DEF) {
      FoldList(graph, statement, CfgDeclDef_DECL);
    }
  }
}

void FoldElement(CdfgGraph* graph, NodeId element) {
  switch (CdfgGetKind(graph, element)) {
    case CFG_DECLARE_DEF:
      FoldList(graph, element, CfgDeclDef_DECL);
      break;
    case CFG_STRUCT_DEF:
      FoldStructures(graph, element);
      break;
    case CFG_FUNCTION:
      FoldFunction(graph, element);
      break;
    default:
      break;
  }
}

}  // namespace

int FoldDeclarations(CdfgGraph* graph) {
  for (const NodeId file : CdfgGetFiles(graph)) {
    for (const NodeId element : NextChain(graph, CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT))) {
      FoldElement(graph, element);
    }
  }
  return 0;
}
