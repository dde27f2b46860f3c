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
#include <utility>

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

// --- The chain fold ------------------------------------------------------------------------------

NodeId ChainFold::Fold(NodeId first) {
  chain_ = Chain{first};
  return Run();
}

void ChainFold::FoldPort(NodeId port) {
  chain_ = Chain{};
  chain_.goes_on = false;
  EnterPort(port);
  Run();
}

NodeId ChainFold::Run() {
  for (;;) {
    while (chain_.node != 0) Visit();
    if (levels_.IsEmpty()) return chain_.folded;
    EndOfChain();
  }
}

void ChainFold::Visit() {
  const NodeId node = chain_.node;
  chain_.guard.Visit(node);
  const std::uint32_t kind = CdfgGetKind(graph_, node);
  chain_.node = CdfgGetNext(graph_, node);
  if (kind == DFG_EDGE_PRESEDE) return;
  if (!chain_.has_value) chain_.is_constant = kind == DFG_INPUT_CONST;
  chain_.has_value = true;
  if (kind == DFG_OPERATION) {
    EnterOperation(node);
  } else if (CdfgIsAssignment(kind) || kind == DFG_SPEC) {
    chain_.goes_on = false;
    const NodeId behind = std::exchange(chain_.node, 0);
    Enter(node, Inside::Behind, behind);
  } else if (kind == DFG_FUNC_CALL) {
    EnterList(node, Inside::Arguments, CdfgGetAttr(graph_, node, DfgFuncCall_ARGLIST));
  } else if (CdfgIsPortOrConcat(kind)) {
    EnterPort(node);
  }
}

void ChainFold::Enter(NodeId node, Inside inside, NodeId first) {
  depth_.Enter(node);
  levels_.Push({chain_, node, inside, false, 0, 0, folds_});
  chain_ = Chain{first};
}

void ChainFold::EnterOperation(NodeId operation) {
  Enter(operation, Inside::Left, CdfgGetAttr(graph_, operation, DfgOpe_LEFT));
  levels_.Back().right = CdfgGetAttr(graph_, operation, DfgOpe_RIGHT);
  levels_.Back().condition = CdfgGetAttr(graph_, operation, DfgOpe_COND);
}

// Most ports are plain variables, with nothing inside.
void ChainFold::EnterPort(NodeId port) {
  const NodeId indexes = CdfgGetAttr(graph_, port, DfgPort_DIMNODE);
  if (indexes == 0 && CdfgGetAttr(graph_, port, DfgPort_STRSON) == 0) {
    CdfgCountStep(port);
  } else {
    EnterList(port, Inside::Indexes, indexes);
  }
}

void ChainFold::EnterList(NodeId node, Inside inside, NodeId list) {
  Enter(node, inside, 0);
  lists_.Push({});
  GoToItem(list);
}

std::uint32_t ChainFold::ItemAttribute() const {
  static_assert(DfgDim_NODE != DfgPortInfo_SIGNAL);
  return levels_.Back().inside == Inside::Indexes ? DfgDim_NODE : DfgPortInfo_SIGNAL;
}

// Goes on with the next item of the innermost list; behind the last one, with what follows the
// list: the members of a port.
void ChainFold::GoToItem(NodeId item) {
  if (item != 0) {
    lists_.Back().item = item;
    lists_.Back().guard.Visit(item);
    chain_ = Chain{CdfgGetAttr(graph_, item, ItemAttribute())};
    return;
  }
  lists_.Pop();
  Level& level = levels_.Back();
  if (level.inside == Inside::Arguments) return Leave();
  level.inside = Inside::Members;
  chain_ = Chain{CdfgGetAttr(graph_, level.node, DfgPort_STRSON)};
}

// The innermost chain has been walked; what it folded to is stored in what it hangs on.
void ChainFold::EndOfChain() {
  switch (levels_.Back().inside) {
    case Inside::Left:
    case Inside::Right:
    case Inside::Condition:
      EndOfOperand();
      break;
    case Inside::Indexes:
    case Inside::Arguments:
      EndOfItem();
      break;
    case Inside::Members:
      Leave();
      break;
    case Inside::Behind:
      ConstStoreFoldBehind(graph_, levels_.Back().node, chain_.folded);
      Leave();
      break;
  }
}

void ChainFold::EndOfItem() {
  const NodeId item = lists_.Back().item;
  ConstStoreFold(graph_, item, ItemAttribute(), chain_.folded);
  GoToItem(CdfgGetNext(graph_, item));
}

void ChainFold::EndOfOperand() {
  Level& level = levels_.Back();
  if (level.inside == Inside::Left) {
    level.left_is_constant = chain_.is_constant;
    ConstStoreFold(graph_, level.node, DfgOpe_LEFT, chain_.folded);
    level.inside = Inside::Right;
    chain_ = Chain{IsAsItWas(level) ? level.right : CdfgGetAttr(graph_, level.node, DfgOpe_RIGHT)};
  } else if (level.inside == Inside::Right) {
    ConstStoreFold(graph_, level.node, DfgOpe_RIGHT, chain_.folded);
    level.inside = Inside::Condition;
    const bool is_known = IsAsItWas(level);
    chain_ = Chain{is_known ? level.condition : CdfgGetAttr(graph_, level.node, DfgOpe_COND)};
  } else {
    ConstStoreFold(graph_, level.node, DfgOpe_COND, chain_.folded);
    EndOfOperation();
  }
}

// No operation folds whose left operand is no constant: where nothing has changed since that was
// seen, the operation is not looked at again.
void ChainFold::EndOfOperation() {
  const Level& level = levels_.Back();
  NodeId folded = 0;
  if (level.left_is_constant || !IsAsItWas(level)) folded = ConstFoldOperation(graph_, level.node);
  if (folded != 0) ++folds_;
  Leave();
  if (folded != 0) chain_.folded = folded;
}

void ChainFold::Leave() {
  const Level& level = levels_.Back();
  depth_.Leave();
  chain_ = level.around;
  if (!IsAsItWas(level) && chain_.goes_on) {
    chain_.node = CdfgGetNext(graph_, level.node);
  }
  levels_.Pop();
}
