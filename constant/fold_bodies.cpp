// Folds the constant expressions of module code: of its statements, its declarations with their
// initialisers, and the declarations of the globals that it uses. Globals that it does not use are
// no hardware and keep their initialisers as written.
//
//   int g = 1 + 2;                      int g = 3;
//   f() { int i = 3 + 4;          ->    f() { int i = 7;
//         x[1 + 1] = (2 + 3) * g; }           x[2] = 5 * g; }
//
// Phases:
//   1. every function that is module code: its declarations, then its statements in their order;
//   2. the globals that these functions use now, the last one of the design first.
#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/kinds.h"
#include "constant/arithmetic.h"
#include "constant/fold.h"
#include "constant/fold_steps.h"
#include "constant/used_globals.h"

namespace {

// --- In front of an assignment -------------------------------------------------------------------

// Puts `folded` into the place of an operation in a chain. The successor's prev becomes the
// operation's predecessor and not `folded`: kept.
void Splice(CdfgGraph* graph, NodeId operation, NodeId folded) {
  const NodeId prev = CdfgGetPrev(graph, operation);
  if (prev != 0) {
    CdfgSetPrev(graph, folded, prev);
    CdfgSetNext(graph, prev, folded);
  }
  const NodeId next = CdfgGetNext(graph, operation);
  if (next != 0) {
    CdfgSetNext(graph, folded, next);
    CdfgSetPrev(graph, next, prev);
  }
}

// A left operand that folds is stored as the right one, in place of what stood there, and stays the
// left one as well: kept. Such an operation does not fold itself, since its left operand is none
// that a constant stands behind.
void FoldTargetOperation(CdfgGraph* graph, ChainFold& fold, NodeId operation) {
  constexpr std::uint32_t kReadAndStored[][2] = {
      {DfgOpe_LEFT, DfgOpe_RIGHT}, {DfgOpe_RIGHT, DfgOpe_RIGHT}, {DfgOpe_COND, DfgOpe_COND}};
  for (const auto& [read, stored] : kReadAndStored) {
    const NodeId operand = CdfgGetAttr(graph, operation, read);
    ConstStoreFold(graph, operation, stored, fold.Fold(operand));
  }
  const NodeId folded = ConstFoldOperation(graph, operation);
  if (folded != 0) Splice(graph, operation, folded);
}

void FoldTarget(CdfgGraph* graph, ChainFold& fold, NodeId edge) {
  for (const NodeId node : NextChain(graph, CdfgPrevUntilOperation(graph, edge))) {
    if (node == edge) break;
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_VAR) fold.FoldPort(node);
    if (kind == DFG_OPERATION) FoldTargetOperation(graph, fold, node);
  }
}

// --- Statements ----------------------------------------------------------------------------------

// A cast that is the whole expression needs no rule: what folds behind it is stored there.
void FoldElement(CdfgGraph* graph, ChainFold& fold, NodeId element) {
  const NodeId root = CdfgGetAttr(graph, element, DfgOpeman_OPE);
  if (CdfgIsAssignment(CdfgGetKind(graph, root))) FoldTarget(graph, fold, root);
  ConstStoreFold(graph, element, DfgOpeman_OPE, fold.Fold(root));
}

void FoldOperationList(CdfgGraph* graph, ChainFold& fold, NodeId list) {
  for (const NodeId element : NextChain(graph, list)) FoldElement(graph, fold, element);
}

void FoldDeclaredIn(CdfgGraph* graph, NodeId owner, std::uint32_t attribute) {
  ConstFoldDeclared(graph, CdfgGetAttr(graph, owner, attribute), Initialisers::Fold);
}

void FoldFunction(CdfgGraph* graph, NodeId function) {
  FoldDeclaredIn(graph, function, CfgFunc_DECLARE);
  FoldDeclaredIn(graph, function, CfgFunc_ARGLIST);
  ChainFold fold(graph);
  StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
  while (const NodeId statement = walk.Next()) {
    FoldOperationList(graph, fold, CdfgGetOperationList(graph, statement));
    if (CdfgGetKind(graph, statement) == CFG_DECLARE_DEF) {
      FoldDeclaredIn(graph, statement, CfgDeclDef_DECL);
    }
  }
}

}  // namespace

int FoldBodies(CdfgGraph* graph, FunctionCursor::Test is_module_code) {
  FunctionCursor functions(graph, is_module_code);
  while (const NodeId function = functions.Next()) FoldFunction(graph, function);
  for (const NodeId global : FindUsedGlobals(graph, is_module_code)) {
    ConstFoldDeclaration(graph, global, Initialisers::Fold);
  }
  return 0;
}
