// How expressions are folded: from the inside out, each operation once on every way to it.
//
// The chain fold is defined by what it does at each node of a chain; at an assignment edge or a
// cast it folds what follows, and what follows is the rest of the same chain. Going on along the
// chain from there would fold that rest a second time, and the rest of a rest a fourth time. The
// walk ends there instead, since a second visit finds nothing to do:
//
// - when the rest folded, the edge leads to a new constant behind its reference, and neither is
//   anything that folds;
// - when it did not, no operation in it did, and below it every expression that folded has been
//   replaced like this. What an operation folds to depends on its operands alone, and they are the
//   same at a second visit.
//
// This needs constants to stand behind references of their own, so that CALC_Plus, which answers
// the node in front of its operand, answers such a reference; and no operation to stand among the
// members of a port, where a fold is stored nowhere. Graphs that break this are folded by the same
// single walk.
#include "cdfg/chain.h"
#include "cdfg/deep.h"
#include "cdfg/kinds.h"
#include "cdfg/runaway.h"
#include "constant/arithmetic.h"
#include "constant/fold_steps.h"

namespace {

struct Folding {
  CdfgGraph* graph;
  DepthGuard depth;
};

constexpr std::uint32_t kOperands[] = {DfgOpe_LEFT, DfgOpe_RIGHT, DfgOpe_COND};

void SetPrevOfFold(CdfgGraph* graph, NodeId folded, NodeId holder) {
  if (CdfgGetKind(graph, folded) != DFG_EDGE_BLOCKING) CdfgSetPrev(graph, folded, holder);
}

// --- The tree fold -------------------------------------------------------------------------------

Deep<NodeId> FoldTree(Folding& run, NodeId operation) {
  const DepthScope inside(run.depth, operation);
  for (const std::uint32_t attribute : kOperands) {
    const NodeId operand = CdfgGetAttr(run.graph, operation, attribute);
    if (CdfgGetKind(run.graph, operand) != DFG_OPERATION) continue;
    const NodeId folded = co_await FoldTree(run, operand);
    ConstStoreFold(run.graph, operation, attribute, folded);
  }
  co_return ConstFoldOperation(run.graph, operation);
}

// --- The chain fold ------------------------------------------------------------------------------

Deep<NodeId> FoldChain(Folding& run, NodeId first);

Deep<NodeId> FoldOperation(Folding& run, NodeId operation) {
  const DepthScope inside(run.depth, operation);
  for (const std::uint32_t attribute : kOperands) {
    const NodeId operand = CdfgGetAttr(run.graph, operation, attribute);
    const NodeId folded = co_await FoldChain(run, operand);
    ConstStoreFold(run.graph, operation, attribute, folded);
  }
  co_return ConstFoldOperation(run.graph, operation);
}

Deep<> FoldListed(Folding& run, NodeId list, std::uint32_t attribute) {
  for (const NodeId item : NextChain(run.graph, list)) {
    const NodeId folded = co_await FoldChain(run, CdfgGetAttr(run.graph, item, attribute));
    ConstStoreFold(run.graph, item, attribute, folded);
  }
}

Deep<> FoldBehind(Folding& run, NodeId edge) {
  const DepthScope inside(run.depth, edge);
  const NodeId folded = co_await FoldChain(run, CdfgGetNext(run.graph, edge));
  ConstStoreFoldBehind(run.graph, edge, folded);
}

Deep<> FoldPort(Folding& run, NodeId port) {
  const DepthScope inside(run.depth, port);
  co_await FoldListed(run, CdfgGetAttr(run.graph, port, DfgPort_DIMNODE), DfgDim_NODE);
  co_await FoldChain(run, CdfgGetAttr(run.graph, port, DfgPort_STRSON));
}

Deep<> FoldCall(Folding& run, NodeId call) {
  const DepthScope inside(run.depth, call);
  const NodeId arguments = CdfgGetAttr(run.graph, call, DfgFuncCall_ARGLIST);
  co_await FoldListed(run, arguments, DfgPortInfo_SIGNAL);
}

Deep<NodeId> FoldChain(Folding& run, NodeId first) {
  NodeId last_folded = 0;
  for (const NodeId node : NextChain(run.graph, first)) {
    const std::uint32_t kind = CdfgGetKind(run.graph, node);
    if (kind == DFG_OPERATION) {
      const NodeId folded = co_await FoldOperation(run, node);
      if (folded != 0) last_folded = folded;
    } else if (CdfgIsAssignment(kind) || kind == DFG_SPEC) {
      co_await FoldBehind(run, node);
      break;
    } else if (kind == DFG_FUNC_CALL) {
      co_await FoldCall(run, node);
    } else if (CdfgIsPortOrConcat(kind)) {
      co_await FoldPort(run, node);
    }
  }
  co_return last_folded;
}

}  // namespace

void ConstStoreFold(CdfgGraph* graph, NodeId holder, std::uint32_t attribute, NodeId folded) {
  if (folded == 0) return;
  CdfgSetAttrNode(graph, holder, attribute, folded);
  SetPrevOfFold(graph, folded, holder);
}

void ConstStoreFoldBehind(CdfgGraph* graph, NodeId edge, NodeId folded) {
  if (folded == 0) return;
  CdfgSetNext(graph, edge, folded);
  SetPrevOfFold(graph, folded, edge);
}

NodeId ConstFoldTree(CdfgGraph* graph, NodeId expression) {
  if (CdfgGetKind(graph, expression) != DFG_OPERATION) return 0;
  Folding run{graph, {}};
  return RunDeep(FoldTree(run, expression));
}

NodeId ConstFoldChain(CdfgGraph* graph, NodeId first) {
  Folding run{graph, {}};
  return RunDeep(FoldChain(run, first));
}

void ConstFoldPort(CdfgGraph* graph, NodeId port) {
  Folding run{graph, {}};
  RunDeep(FoldPort(run, port));
}
