// Gives every statement of module code a datapath of its own: the next step of the chain schedules
// datapaths, not statements.
//
//   D(s1, s2, s3) <-> rest    ->    D(s1) <-> D1(s2) <-> D2(s3) <-> rest
//
// The lists of loop headers keep their statements. Needs the flat statements that expression
// division leaves. Also repairs what earlier passes leave open: the first statement of a body gets
// the body's owner as its prev.
#include "passes/split_datapaths.h"

#include "cdfg/edit.h"
#include "cdfg/kinds.h"
#include "cdfg/walk.h"
#include "passes/module_list.h"

namespace {

// A datapath with the position of `position` that holds `statement` alone.
NodeId MakeDatapath(CdfgGraph* graph, NodeId position, NodeId statement) {
  const NodeId datapath = CdfgCreateNode(graph, CFG_STATE_DATAPATH, position);
  CdfgSetAttrNode(graph, datapath, CfgDatapath_OPELIST, statement);
  CdfgSetPrev(graph, statement, datapath);
  CdfgSetNext(graph, statement, 0);
  return datapath;
}

void SplitDatapath(CdfgGraph* graph, NodeId datapath) {
  const NodeId first = CdfgGetAttr(graph, datapath, CfgDatapath_OPELIST);
  NodeId statement = CdfgGetNext(graph, first);
  CdfgSetNext(graph, first, 0);
  if (statement == 0) return;
  const NodeId behind = CdfgGetNext(graph, datapath);
  NodeId run_first = 0;
  NodeId run_last = 0;
  while (statement != 0) {
    const NodeId next = CdfgGetNext(graph, statement);
    const NodeId single = MakeDatapath(graph, datapath, statement);
    if (run_first == 0) {
      run_first = single;
    } else {
      CdfgLink(graph, run_last, single);
    }
    run_last = single;
    statement = next;
  }
  CdfgLink(graph, run_last, behind);
  CdfgLink(graph, datapath, run_first);
}

void RepairHead(CdfgGraph* graph, NodeId owner) {
  const std::uint32_t body = CdfgBodyAttribute(CdfgGetKind(graph, owner));
  const NodeId first = body == 0 ? 0 : CdfgGetAttr(graph, owner, body);
  if (first != 0 && CdfgGetPrev(graph, first) == 0) CdfgSetPrev(graph, first, owner);
}

void SplitFunction(CdfgGraph* graph, NodeId function) {
  RepairHead(graph, function);
  StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
  while (const NodeId node = walk.Next()) {
    if (walk.AtPart()) {
      RepairHead(graph, node);
    } else if (CdfgGetKind(graph, node) == CFG_STATE_DATAPATH) {
      SplitDatapath(graph, node);
    }
  }
}

}  // namespace

int SplitDatapaths(CdfgGraph* graph) {
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) SplitFunction(graph, function);
  return 0;
}
