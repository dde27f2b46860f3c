// Makes the body of every loop in module code a block, so that later passes find one begin/end
// bracketed sequence whatever the source wrote.
//
//   while (c) s;      LOOP_STAT -> s
//   ->                LOOP_STAT -> STATE_BEGIN <-> s <-> STATE_END, jumps naming each other
//
// A body that begins with CFG_STATE_BEGIN is taken for a block even when its end is missing. The
// new begin node gets no prev: the pass that splits datapaths repairs heads without one.
#include "passes/statement_to_block.h"

#include "cdfg/edit.h"
#include "cdfg/walk.h"
#include "passes/module_list.h"

namespace {

void WrapBody(CdfgGraph* graph, NodeId loop_body) {
  const NodeId first = CdfgGetAttr(graph, loop_body, CfgLoopStat_CFG);
  if (CdfgGetKind(graph, first) == CFG_STATE_BEGIN) return;
  const NodeId begin = CdfgCreateNode(graph, CFG_STATE_BEGIN, loop_body);
  const NodeId end = CdfgCreateNode(graph, CFG_STATE_END, loop_body);
  CdfgSetJump(graph, begin, end);
  CdfgSetJump(graph, end, begin);
  CdfgSetAttrNode(graph, loop_body, CfgLoopStat_CFG, begin);
  NodeId last = begin;
  if (first != 0) {
    CdfgAppend(graph, begin, first);
    last = CdfgLastInChain(graph, first);
  }
  CdfgAppend(graph, last, end);
}

}  // namespace

int StatementsToBlocks(CdfgGraph* graph) {
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) {
    CdfgSetDeclScope(function);
    StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
    while (const NodeId node = walk.Next()) {
      if (walk.AtPart() && CdfgGetKind(graph, node) == CFG_LOOP_STAT) WrapBody(graph, node);
    }
  }
  return 0;
}
