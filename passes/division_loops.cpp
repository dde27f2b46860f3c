// Loops: the statements that prepare a condition have to run wherever the condition is reached
// from.
//
//   while (f(i)) { ..; continue; .. }
//   ->  T = f(i);  while (T) { ..; T = f(i); continue; ..; T = f(i); }
//
//   for (i = 0; i < n + 1; i++)  ->  for (i = 0, T = n + 1; i < T; i = i + 1, T = n + 1)
//
// The first preparation goes to the loop's init list, or in front of a while; a do-while enters its
// body first and needs none there. The second is a copy: at the end of the step list, or at the
// end of the body and, again as a copy, in front of every continue.
#include "cdfg/copy.h"
#include "cdfg/walk.h"
#include "passes/division.h"

namespace {

// Divides a list of a loop header. Its head gets no prev.
void DivideHeaderList(Division& run, NodeId part, std::uint32_t attribute) {
  DivideList(run, CdfgGetAttr(run.graph, part, attribute), ListMode::Statements);
  if (run.pending.head != 0) CdfgSetAttrNode(run.graph, part, attribute, run.pending.head);
}

// What is pending besides the condition itself is the condition's preparation.
void DivideLoopCondition(Division& run, LoopParts& loop, NodeId part) {
  CdfgGraph* graph = run.graph;
  const NodeId list = CdfgGetAttr(graph, part, CfgLoopCond_CONDOPE);
  if (list == 0) return;
  DivideCondition(run, list);
  if (run.pending.head != 0) {
    const NodeId condition = TakeCondition(run);
    if (condition != 0) CdfgSetAttrNode(graph, part, CfgLoopCond_CONDOPE, condition);
    loop.preparation = run.pending.head;
  }
  run.saved_target = 0;
}

void AppendToList(CdfgGraph* graph, NodeId part, std::uint32_t attribute, NodeId statements) {
  const NodeId first = CdfgGetAttr(graph, part, attribute);
  if (first == 0) {
    CdfgSetAttrNode(graph, part, attribute, statements);
  } else {
    CdfgAppend(graph, first, statements);
  }
}

// --- The body's end and its continues ------------------------------------------------------------

// Nested loops have continues of their own.
void PrepareContinues(CdfgGraph* graph, NodeId body, NodeId preparation) {
  StatementWalk walk(graph, CdfgGetAttr(graph, body, CfgLoopStat_CFG));
  while (const NodeId statement = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, statement);
    if (kind == CFG_LOOP_BEGIN) walk.Skip();
    if (kind != CFG_CONTINUE) continue;
    const NodeId datapath = CdfgCreateNode(graph, CFG_STATE_DATAPATH, statement);
    const NodeId copy = CdfgCopyTree(graph, preparation);
    CdfgSetAttrNode(graph, datapath, CfgDatapath_OPELIST, copy);
    CdfgSetPrev(graph, copy, datapath);
    PutInFront(graph, statement, datapath);
  }
}

void PrepareBodyEnd(CdfgGraph* graph, NodeId body, NodeId preparation) {
  const NodeId datapath = MakeDatapath(graph, body, preparation);
  const NodeId last = CdfgLastInChain(graph, CdfgGetAttr(graph, body, CfgLoopStat_CFG));
  if (last == 0) {
    CdfgAttachBody(graph, body, datapath);
  } else if (CdfgGetKind(graph, last) == CFG_STATE_END) {
    PutInFront(graph, last, datapath);
  } else {
    CdfgAppend(graph, last, datapath);
  }
}

}  // namespace

void DivideLoopPart(Division& run, LoopParts& loop, NodeId part) {
  switch (CdfgGetKind(run.graph, part)) {
    case CFG_LOOP_INIT:
      loop.init = part;
      DivideHeaderList(run, part, CfgLoopInit_OPELIST);
      break;
    case CFG_LOOP_COND:
      DivideLoopCondition(run, loop, part);
      break;
    case CFG_LOOP_STAT:
      loop.body = part;
      break;
    case CFG_LOOP_STEP:
      loop.step = part;
      DivideHeaderList(run, part, CfgLoopStep_OPELIST);
      break;
    default:
      break;
  }
}

void PlacePreparation(Division& run, const LoopParts& loop) {
  CdfgGraph* graph = run.graph;
  if (loop.preparation == 0) return;
  const std::int32_t type = CdfgGetAttrInt(graph, loop.loop, CfgLoopBegin_LOOPTYPE);
  if (loop.init != 0) {
    AppendToList(graph, loop.init, CfgLoopInit_OPELIST, loop.preparation);
  } else if (type == LOOP_WHILE) {
    PutInFront(graph, loop.loop, MakeDatapath(graph, loop.loop, loop.preparation));
  }
  const NodeId again = CdfgCopyTree(graph, loop.preparation);
  if (loop.step != 0) {
    AppendToList(graph, loop.step, CfgLoopStep_OPELIST, again);
  } else if (loop.body != 0) {
    PrepareContinues(graph, loop.body, again);
    PrepareBodyEnd(graph, loop.body, again);
  }
}
