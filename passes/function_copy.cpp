#include "passes/function_copy.h"

#include "cdfg/copy.h"
#include "passes/relink.h"

NodeId CopyFunction(CdfgGraph* graph, NodeId function, MemberExpressions members) {
  CdfgRemapSwitch = 1;
  CdfgMemberShareSwitch = members == MemberExpressions::Copied ? 1 : 0;
  const NodeId copy = CdfgCopyAlone(graph, function);
  CdfgRemapSwitch = 0;
  CdfgMemberShareSwitch = 0;
  RelinkCopiedDeclarations(graph, CdfgGetAttr(graph, copy, CfgFunc_STARTCFG),
                           CdfgGetAttr(graph, copy, CfgFunc_DECLARE));
  CdfgClearUserTable(graph);
  return copy;
}
