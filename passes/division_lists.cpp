// Lists of statements and conditions: what becomes of each statement's root, and what a condition
// or a return tests afterwards.
//
//   if (a + b) ...     ->   T = a + b;  if (T) ...
//   if (a < b + c) ... ->   T = b + c;  if (a < T) ...       a comparison stays
//   if (x++) ...       ->   T = x; x = x + 1;  if (T) ...
//
// The pending list ends as: what was taken out of the first statement, the first statement, what
// was taken out of the second, and so on.
#include <cstdio>

#include "cdfg/chain.h"
#include "cdfg/kinds.h"
#include "passes/division.h"
#include "passes/temporaries.h"

namespace {

NodeId RootOf(const CdfgGraph* graph, NodeId statement) {
  return CdfgGetAttr(graph, statement, DfgOpeman_OPE);
}

void SetRoot(CdfgGraph* graph, NodeId statement, NodeId root) {
  CdfgSetAttrNode(graph, statement, DfgOpeman_OPE, root);
}

// Makes the root's value the value of a new temporary.
void AssignRootToTemp(Division& run, NodeId statement, NodeId root) {
  CdfgGraph* graph = run.graph;
  const NodeId variable = MakeTempVar(graph, root, TypeOfValue(run, root));
  SetRoot(graph, statement, MakeAssignment(graph, root, variable, root));
}

// --- Roots ---------------------------------------------------------------------------------------

// *(p + 1) as a root: what the operation was assigned to goes ahead, and the statement becomes the
// reading of its target through the dereferences. A condition that stays has its prev for target.
void DereferenceRoot(Division& run, NodeId statement, NodeId operation) {
  CdfgGraph* graph = run.graph;
  const std::int32_t count = TakeDereferences(graph, operation);
  if (count == 0) return;
  const NodeId root = RootOf(graph, statement);
  AppendPending(run, MakeStatement(graph, root));
  const NodeId reference = CopyAsReference(graph, CdfgGetPrev(graph, root));
  if (reference == 0) return;
  CdfgSetAttrInt(graph, CdfgGetNext(graph, reference), DfgPort_POINTERCNT, count);
  AssignRootToTemp(run, statement, reference);
}

Deep<> DivideOperationRoot(Division& run, NodeId statement, NodeId root) {
  co_await DivideOperands(run, root);
  if (const NodeId edge = RewriteAssignment(run, root, Within::Statement)) {
    SetRoot(run.graph, statement, edge);
  } else if (!run.keeps_root) {
    AssignRootToTemp(run, statement, root);
  }
  DereferenceRoot(run, statement, root);
}

Deep<> DivideAssignmentRoot(Division& run, NodeId root) {
  co_await DivideRightSide(run, root, ValueOf(run.graph, root));
  co_await DivideLeftSide(run, root);
}

Deep<> DivideCallRoot(Division& run, NodeId statement, NodeId root, ListMode mode) {
  co_await DivideArguments(run, root);
  if (mode == ListMode::Value) AssignRootToTemp(run, statement, root);
}

Deep<> DivideCastOperand(Division& run, NodeId cast) {
  CdfgGraph* graph = run.graph;
  if (const NodeId call = AllocationCallOf(graph, cast)) {
    co_await DivideArguments(run, call);
    co_return;
  }
  const NodeId replacement = co_await DivideSubExpression(run, CdfgGetNext(graph, cast));
  if (replacement == 0) co_return;
  CdfgSetNext(graph, cast, replacement);
  if (CdfgGetKind(graph, replacement) != DFG_EDGE_BLOCKING) CdfgSetPrev(graph, replacement, cast);
}

// As within an expression, the cast goes with its operand for a pointer type only.
Deep<> DivideCastRoot(Division& run, NodeId statement, NodeId cast, ListMode mode) {
  CdfgGraph* graph = run.graph;
  co_await DivideCastOperand(run, cast);
  if (mode == ListMode::Statements) co_return;
  const ExprType type = TypeOfValue(run, cast);
  const NodeId variable = MakeCastVar(graph, cast, type);
  const NodeId value = type.pointer_count >= 1 ? cast : CdfgGetNext(graph, cast);
  SetRoot(graph, statement, MakeAssignment(graph, cast, variable, value));
}

void ReportIllegalRoot(const CdfgGraph* graph, NodeId root) {
  std::printf("ERROR : Illegal node : %d, %d\n", static_cast<int>(root),
              static_cast<int>(CdfgGetKind(graph, root)));
}

Deep<> DivideStatement(Division& run, NodeId statement, ListMode mode) {
  const CdfgGraph* graph = run.graph;
  const NodeId root = RootOf(graph, statement);
  const std::uint32_t kind = CdfgGetKind(graph, root);
  switch (kind) {
    case DFG_OPERATION:
      co_await DivideOperationRoot(run, statement, root);
      break;
    case DFG_EDGE_BLOCKING:
    case DFG_EDGE_NONBLOCKING:
      co_await DivideAssignmentRoot(run, root);
      break;
    case DFG_EDGE_PRESEDE:
      co_await DivideIndexes(run, CdfgLastInChain(graph, root));
      break;
    case DFG_FUNC_CALL:
      co_await DivideCallRoot(run, statement, root, mode);
      break;
    case DFG_SPEC:
      co_await DivideCastRoot(run, statement, root, mode);
      break;
    default:
      if (kind >= DFG_INPUT_PORT && kind <= DFG_INPUT_CONCAT) {
        co_await DivideIndexes(run, root);
      } else {
        ReportIllegalRoot(graph, root);
      }
      break;
  }
}

// --- Conditions ----------------------------------------------------------------------------------

std::int32_t OperatorOf(const CdfgGraph* graph, NodeId operation) {
  return CdfgGetAttrInt(graph, operation, DfgOpe_TYPE);
}

// Looks at the root that the condition ends with and sets the flags.
void Classify(Division& run, NodeId first) {
  const CdfgGraph* graph = run.graph;
  const NodeId root = RootOf(graph, CdfgLastInChain(graph, first));
  const std::uint32_t kind = CdfgGetKind(graph, root);
  if (kind == DFG_OPERATION) {
    const std::int32_t code = OperatorOf(graph, root);
    run.is_post_step = IsPostStep(code);
    run.keeps_root = CdfgIsTruthOperator(code);
  } else if (kind == DFG_EDGE_PRESEDE) {
    const std::uint32_t end = CdfgGetKind(graph, CdfgLastInChain(graph, root));
    run.keeps_root = end != DFG_FUNC_CALL && end != DFG_SPEC;
  }
}

// A statement with the port's position whose root reads the port; 0 for 0.
NodeId MakeReading(CdfgGraph* graph, NodeId port) {
  if (CdfgHasNode(graph, port) == 0) return 0;
  const NodeId statement = CdfgCreateNode(graph, DFG_MANAGE_OPERATION, port);
  SetRoot(graph, statement, CopyAsReference(graph, port));
  return statement;
}

// Takes the last pending statement out of the list.
NodeId UnlinkLast(Division& run) {
  const NodeId last = run.pending.tail;
  const NodeId prev = CdfgGetPrev(run.graph, last);
  if (last == run.pending.head || prev == 0) {
    run.pending = {};
  } else {
    CdfgSetNext(run.graph, prev, 0);
    run.pending.tail = prev;
  }
  CdfgSetPrev(run.graph, last, 0);
  return last;
}

}  // namespace

void DivideList(Division& run, NodeId first, ListMode mode) {
  CdfgGraph* graph = run.graph;
  run.pending = {};
  ChainGuard guard;
  for (NodeId statement = first; statement != 0;) {
    guard.Visit(statement);
    run.declared.reference = 0;
    RunDeep(DivideStatement(run, statement, mode));
    const NodeId next = CdfgGetNext(graph, statement);
    CdfgSetNext(graph, statement, 0);
    CdfgSetPrev(graph, statement, 0);
    AppendPending(run, statement);
    statement = next;
  }
}

void DivideCondition(Division& run, NodeId first) {
  Classify(run, first);
  DivideList(run, first, ListMode::Value);
  run.keeps_root = false;
  run.is_post_step = false;
}

NodeId TakeCondition(Division& run) {
  const CdfgGraph* graph = run.graph;
  if (run.pending.head == 0) return 0;
  if (run.saved_target != 0) return MakeReading(run.graph, run.saved_target);
  const NodeId root = RootOf(graph, run.pending.tail);
  if (CdfgGetKind(graph, root) == DFG_OPERATION && CdfgIsTruthOperator(OperatorOf(graph, root))) {
    return UnlinkLast(run);
  }
  return TakeReturnValue(run);
}

NodeId TakeReturnValue(Division& run) {
  if (run.pending.head == 0) return 0;
  const NodeId root = RootOf(run.graph, run.pending.tail);
  const std::uint32_t kind = CdfgGetKind(run.graph, root);
  if (CdfgIsAssignment(kind)) return MakeReading(run.graph, CdfgGetPrev(run.graph, root));
  return kind == DFG_EDGE_PRESEDE ? UnlinkLast(run) : 0;
}

NodeId MakeDatapath(CdfgGraph* graph, NodeId position, NodeId statements) {
  const NodeId datapath = CdfgCreateNode(graph, CFG_STATE_DATAPATH, position);
  CdfgSetAttrNode(graph, datapath, CfgDatapath_OPELIST, statements);
  CdfgSetPrev(graph, statements, datapath);
  return datapath;
}

void PutInFront(CdfgGraph* graph, NodeId statement, NodeId datapath) {
  const NodeId prev = CdfgGetPrev(graph, statement);
  CdfgLink(graph, datapath, statement);
  CdfgAttachBody(graph, prev, datapath);
}

void PlacePending(Division& run, NodeId statement) {
  if (run.pending.head == 0) return;
  PutInFront(run.graph, statement, MakeDatapath(run.graph, statement, run.pending.head));
}
