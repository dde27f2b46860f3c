// Collects every identifier that the design uses, so that later passes can invent names that
// collide with nothing.
//
// Names of structure members, enumerators, prototypes and instances are not collected, nor is
// anything in the header of a loop: the names that passes invent live beside variables, functions
// and labels only.
#include "passes/name_table.h"

#include "cdfg/chain.h"
#include "cdfg/name_set.h"
#include "cdfg/walk.h"

namespace {

void AddName(const CdfgGraph* graph, NodeId node, std::uint32_t attribute) {
  const char* name = CdfgGetAttrStr(graph, node, attribute);
  if (name != nullptr) NameSetAdd(name);
}

void AddDeclarations(const CdfgGraph* graph, NodeId owner, std::uint32_t attribute) {
  for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, owner, attribute))) {
    if (CdfgGetKind(graph, node) == CFG_DECLARE) AddName(graph, node, CfgDecl_NAME);
  }
}

// What stands below the node is left to the walk.
void AddNamesOf(const CdfgGraph* graph, NodeId node) {
  switch (CdfgGetKind(graph, node)) {
    case CFG_MODULE:
      AddName(graph, node, CfgModule_NAME);
      AddDeclarations(graph, node, CfgModule_DECLARE);
      break;
    case CFG_ENUM:
      AddDeclarations(graph, node, CfgEnum_PARAMETER);
      break;
    case CFG_PROCESS:
      AddName(graph, node, CfgProc_NAME);
      AddDeclarations(graph, node, CfgProc_DECLARE);
      break;
    case CFG_TASK:
      AddName(graph, node, CfgTask_NAME);
      AddDeclarations(graph, node, CfgTask_ARGLIST);
      AddDeclarations(graph, node, CfgTask_DECLARE);
      break;
    case CFG_FUNCTION:
      AddName(graph, node, CfgFunc_NAME);
      AddDeclarations(graph, node, CfgFunc_ARGLIST);
      AddDeclarations(graph, node, CfgFunc_DECLARE);
      break;
    case CFG_DECLARE_DEF:
      AddDeclarations(graph, node, CfgDeclDef_DECL);
      break;
    case CFG_STATE_LABEL:
      AddName(graph, node, CfgStateLabel_NAME);
      break;
    default:
      break;
  }
}

}  // namespace

int CollectNames(CdfgGraph* graph) {
  const NodeId root = CdfgGetRoot(graph);
  if (root == 0) return 0;
  NameSetInit();
  StatementWalk walk(graph, CdfgGetAttr(graph, root, CfgRoot_ELEMENT), StatementScope::Anywhere);
  while (const NodeId node = walk.Next()) AddNamesOf(graph, node);
  return 0;
}
