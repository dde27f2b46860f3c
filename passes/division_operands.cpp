// Everything below a statement: operands, casts, indexes, arguments, the two sides of an
// assignment.
//
// One rule serves all of them: what is nested becomes a statement T = nested in the pending list,
// and a reference to T takes its place. So x = f(a + b) * c gives, in this order,
//
//   T0 = a + b;  T1 = f(T0);  x = T1 * c;
//
// The order in which nodes are made here is seen in the file; it follows the order of evaluation.
#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <optional>

#include "cdfg/chain.h"
#include "cdfg/copy.h"
#include "cdfg/kinds.h"
#include "constant/literal.h"
#include "passes/division.h"
#include "passes/temporaries.h"

namespace {

// --- References ----------------------------------------------------------------------------------

NodeId PortOf(const CdfgGraph* graph, NodeId reference) { return CdfgGetNext(graph, reference); }

void SetDereferences(CdfgGraph* graph, NodeId port, std::int32_t count) {
  CdfgSetAttrInt(graph, port, DfgPort_POINTERCNT, count);
}

// The dereferences of an operation taken out move on to what is read instead of it.
void MoveDereferences(CdfgGraph* graph, NodeId operation, NodeId port) {
  const std::int32_t count = TakeDereferences(graph, operation);
  if (count != 0) SetDereferences(graph, port, count);
}

// Links `node` behind `prev`, but an edge keeps its target as prev.
void LinkValueBehind(CdfgGraph* graph, NodeId prev, NodeId node) {
  CdfgSetNext(graph, prev, node);
  if (CdfgGetKind(graph, node) != DFG_EDGE_BLOCKING) CdfgSetPrev(graph, node, prev);
}

// What an expression reads that was rewritten as the assignment `edge`: the old value when one was
// saved, else the target.
NodeId TakeAssignedPort(Division& run, NodeId edge) {
  const NodeId saved = run.saved_target;
  run.saved_target = 0;
  return saved != 0 ? saved : CdfgGetPrev(run.graph, edge);
}

// Takes a value out: a statement that assigns it to a new temporary.
NodeId AssignToTemp(Division& run, NodeId value, const ExprType& type) {
  const NodeId variable = MakeTempVar(run.graph, value, type);
  AssignPending(run, variable, value);
  return variable;
}

NodeId AssignToTemp(Division& run, NodeId value) {
  return AssignToTemp(run, value, TypeOfValue(run, value));
}

// --- Assignment operators ------------------------------------------------------------------------

constexpr std::int32_t kFirstCompound = 50;
constexpr std::int32_t kFirstStep = 60;
constexpr std::int32_t kLastStep = 63;

// The plain operator behind each assignment operator, from a *= b on.
constexpr std::int32_t kPlainOperators[] = {
    CALC_Mul, CALC_Div, CALC_Mod, CALC_Add, CALC_Sub, CALC_RightShift, CALC_LeftShift,
    CALC_And, CALC_Or,  CALC_Xor, CALC_Add, CALC_Add, CALC_Sub,        CALC_Sub};

bool IsAssignmentOperator(std::int32_t code) { return code >= kFirstCompound && code <= kLastStep; }

// The port that an assignment operator reads and assigns.
NodeId AssignedPort(const CdfgGraph* graph, NodeId operation) {
  return CdfgLastInChain(graph, CdfgGetAttr(graph, operation, DfgOpe_LEFT));
}

// x++ used as a value: T = x goes ahead, and T's target is remembered.
void SaveOldValue(Division& run, NodeId port) {
  const NodeId copy = CdfgCopyInput(run.graph, port);
  const NodeId variable = MakeTempVar(run.graph, copy, TypeOfValue(run, copy));
  run.saved_target = CdfgGetPrev(run.graph, AssignPending(run, variable, copy));
}

// a op= b becomes a = a op b.
NodeId AssignOperation(CdfgGraph* graph, NodeId operation, NodeId port, std::int32_t plain) {
  const NodeId target = CopyAsTarget(graph, port);
  const NodeId edge = CdfgCreateNode(graph, DFG_EDGE_BLOCKING, operation);
  CdfgLink(graph, target, edge);
  CdfgLink(graph, edge, operation);
  CdfgSetAttrInt(graph, operation, DfgOpe_TYPE, plain);
  return edge;
}

void SetStepOfOne(CdfgGraph* graph, NodeId operation) {
  const NodeId one = ConstMake(graph, "1", 1, kRadixDecimal, 1, operation, 1);
  CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, one);
  CdfgSetPrev(graph, one, operation);
}

// --- Sub-expressions -----------------------------------------------------------------------------

// Most operands are references to a plain variable or a constant, which nothing is to be done for.
bool IsPlainReference(const CdfgGraph* graph, NodeId node) {
  if (CdfgGetKind(graph, node) != DFG_EDGE_PRESEDE) return false;
  const NodeId leaf = CdfgGetNext(graph, node);
  const std::uint32_t kind = CdfgGetKind(graph, leaf);
  if (CdfgGetNext(graph, leaf) != 0 || kind == DFG_SPEC) return false;
  return !CdfgIsPort(kind) || (CdfgGetAttr(graph, leaf, DfgPort_DIMNODE) == 0 &&
                               CdfgGetAttr(graph, leaf, DfgPort_STRSON) == 0);
}

// Puts the dereferences of an operation taken out onto the reference that replaces it. A second
// reference is made and answered, the first stays unused: kept, it is seen in the ids.
NodeId DereferenceAgain(CdfgGraph* graph, NodeId operation, NodeId reference) {
  const std::int32_t count = TakeDereferences(graph, operation);
  if (count == 0) return reference;
  const NodeId port = PortOf(graph, reference);
  SetDereferences(graph, port, count);
  const NodeId second = MakeReference(graph, CdfgGetAttr(graph, port, DfgPort_DECL));
  SetDereferences(graph, PortOf(graph, second), count);
  return second;
}

// Keeps what is about to be asked for: the type of the reference that an operand has become, which
// reads a new temporary of this type as it is.
void KeepType(Division& run, NodeId reference, const ExprType& type) {
  if (type.value_type == DECL_VALTYPE_STRUCT) return;
  run.declared.reference = reference;
  run.declared.reference_type = {type.value_type, type.signedness, std::max(type.pointer_count, 0)};
}

NodeId TakeAssignmentOut(Division& run, NodeId operation, NodeId edge) {
  AppendPending(run, MakeStatement(run.graph, edge));
  const NodeId reference = CopyAsReference(run.graph, TakeAssignedPort(run, edge));
  return DereferenceAgain(run.graph, operation, reference);
}

// Takes an operation out whose operands are divided. Answers what reads its value.
NodeId TakeOperationOut(Division& run, NodeId operation) {
  if (const NodeId edge = RewriteAssignment(run, operation, Within::Expression)) {
    run.declared.reference = 0;
    return TakeAssignmentOut(run, operation, edge);
  }
  const ExprType type = TypeOfValue(run, operation);
  run.declared.reference = 0;
  const NodeId reference = MakeReference(run.graph, AssignToTemp(run, operation, type));
  const NodeId read = DereferenceAgain(run.graph, operation, reference);
  if (read == reference) KeepType(run, reference, type);
  return read;
}

Deep<NodeId> DivideOperation(Division& run, NodeId operation) {
  co_await DivideOperands(run, operation);
  co_return TakeOperationOut(run, operation);
}

// An assignment used as a value becomes a statement, and its target is read. The bare port is
// answered, not the reference made in front of it: kept.
Deep<NodeId> DivideAssignmentValue(Division& run, NodeId edge) {
  CdfgGraph* graph = run.graph;
  co_await DivideRightSide(run, edge, ValueOf(graph, edge));
  co_await DivideLeftSide(run, edge);
  AppendPending(run, MakeStatement(graph, edge));
  co_return PortOf(graph, CopyAsReference(graph, CdfgGetPrev(graph, edge)));
}

Deep<NodeId> DivideCall(Division& run, NodeId call) {
  co_await DivideArguments(run, call);
  co_return MakeReference(run.graph, AssignToTemp(run, call));
}

// --- Operands ------------------------------------------------------------------------------------

constexpr std::uint32_t kOperands[] = {DfgOpe_LEFT, DfgOpe_RIGHT, DfgOpe_COND};

void EnterOperands(Division& run, NodeId operation) {
  run.depth.Enter(operation);
  run.operands.Push({operation, 0});
}

NodeId LeaveOperands(Division& run) {
  const NodeId operation = run.operands.Back().operation;
  run.operands.Pop();
  run.depth.Leave();
  return operation;
}

// Goes on to the next operand that something is to be done for; 0 behind the last one.
NodeId OperandToDivide(const CdfgGraph* graph, OperandPlace& place) {
  for (; place.operand < std::size(kOperands); ++place.operand) {
    const NodeId operand = CdfgGetAttr(graph, place.operation, kOperands[place.operand]);
    if (operand == 0 || IsPlainReference(graph, operand)) continue;
    const NodeId behind = CdfgSkipReferences(graph, operand);
    return CdfgGetKind(graph, behind) == DFG_SPEC ? behind : operand;
  }
  return 0;
}

// Puts what replaces the operand into its place, 0 if it stays, and goes on behind it.
void ReplaceOperand(CdfgGraph* graph, OperandPlace& place, NodeId replacement) {
  const std::uint32_t attribute = kOperands[place.operand++];
  if (replacement == 0) return;
  CdfgSetAttrNode(graph, place.operation, attribute, replacement);
  CdfgSetPrev(graph, replacement, place.operation);
}

// --- Casts ---------------------------------------------------------------------------------------

// Of casts upon casts only the outermost counts: it gets the operand of the innermost. A call
// behind a reference comes to stand right behind the cast.
void CollapseCasts(CdfgGraph* graph, NodeId cast) {
  NodeId innermost = 0;
  bool has_reference = false;
  NodeId operand = 0;
  for (const NodeId node : NextChain(graph, CdfgGetNext(graph, cast))) {
    operand = node;
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == DFG_SPEC) {
      innermost = node;
    } else if (kind == DFG_EDGE_PRESEDE) {
      has_reference = true;
    } else {
      break;
    }
  }
  if (innermost != 0) CdfgLink(graph, cast, CdfgGetNext(graph, innermost));
  if (has_reference && CdfgGetKind(graph, operand) == DFG_FUNC_CALL) {
    CdfgLink(graph, cast, operand);
  }
}

// The cast's operand is divided and assigned to a cast temporary. For a pointer type the cast goes
// with it; for any other the temporary's declared type does the conversion.
Deep<NodeId> DivideCast(Division& run, NodeId cast) {
  CdfgGraph* graph = run.graph;
  if (const NodeId call = AllocationCallOf(graph, cast)) {
    co_await DivideArguments(run, call);
    co_return 0;
  }
  const DepthScope inside(run.depth, cast);
  CollapseCasts(graph, cast);
  const NodeId operand = co_await DivideSubExpression(run, CdfgGetNext(graph, cast));
  if (operand != 0) LinkValueBehind(graph, cast, operand);
  const ExprType type = TypeOfValue(run, cast);
  const NodeId variable = MakeCastVar(graph, cast, type);
  AssignPending(run, variable, type.pointer_count >= 1 ? cast : CdfgGetNext(graph, cast));
  co_return MakeReference(graph, variable);
}

// --- Indexes -------------------------------------------------------------------------------------

bool IsIndexedVariable(const CdfgGraph* graph, NodeId port) {
  const std::uint32_t kind = CdfgGetKind(graph, port);
  return (kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_VAR) &&
         CdfgGetAttr(graph, port, DfgPort_DIMNODE) != 0;
}

// Divides the indexes of a member chain again from each of its members on: what replaced an index
// the first time may have indexes itself, as in v[s.m[++t.n[i]]]. Once that makes nothing new, it
// makes nothing from any later member on, so a chain of n members costs n.
Deep<> DivideMember(Division& run, NodeId port, bool& is_settled) {
  if (is_settled) co_return;
  const std::size_t nodes = CdfgNodeCount(run.graph);
  co_await DivideIndexes(run, port);
  is_settled = CdfgNodeCount(run.graph) == nodes;
}

// A reference as an index: every port along it is divided and, where it has indexes, taken out. All
// members of one chain have the type of its last, which is looked up once.
Deep<> DivideReferenceIndex(Division& run, NodeId index, NodeId reference) {
  CdfgGraph* graph = run.graph;
  for (const NodeId node : NextChain(graph, reference)) {
    bool is_settled = false;
    std::optional<ExprType> type;
    for (const NodeId port : MemberChain(graph, node)) {
      if (!CdfgIsPort(CdfgGetKind(graph, port))) break;
      co_await DivideMember(run, port, is_settled);
      if (!IsIndexedVariable(graph, port)) continue;
      if (!type) type = TypeOfValue(run, port);
      const NodeId read = MakeReference(graph, AssignToTemp(run, port, *type));
      CdfgSetAttrNode(graph, index, DfgDim_NODE, read);
    }
  }
}

Deep<> DivideIndex(Division& run, NodeId index) {
  CdfgGraph* graph = run.graph;
  const NodeId expression = CdfgGetAttr(graph, index, DfgDim_NODE);
  NodeId replacement = 0;
  switch (CdfgGetKind(graph, expression)) {
    case DFG_FUNC_CALL:
      co_await DivideArguments(run, expression);
      [[fallthrough]];
    case DFG_EDGE_BLOCKING:
    case DFG_EDGE_NONBLOCKING:
    case DFG_OPERATION:
    case DFG_SPEC:
      replacement = co_await DivideSubExpression(run, expression);
      break;
    case DFG_EDGE_PRESEDE:
      co_await DivideReferenceIndex(run, index, expression);
      break;
    default:
      break;
  }
  if (replacement != 0) CdfgSetAttrNode(graph, index, DfgDim_NODE, replacement);
}

}  // namespace

// Operations among the operands are divided in the same call: expressions are operations upon
// operations above all, and a level of them costs some bytes here
// instead of a frame.
Deep<> DivideOperands(Division& run, NodeId operation) {
  Stack<OperandPlace>& places = run.operands;
  const std::size_t outside = places.Size();
  EnterOperands(run, operation);
  for (;;) {
    const NodeId operand = OperandToDivide(run.graph, places.Back());
    if (operand == 0) {
      const NodeId divided = LeaveOperands(run);
      if (places.Size() == outside) co_return;
      ReplaceOperand(run.graph, places.Back(), TakeOperationOut(run, divided));
    } else if (CdfgGetKind(run.graph, operand) == DFG_OPERATION) {
      EnterOperands(run, operand);
    } else {
      run.declared.reference = 0;
      const NodeId replacement = co_await DivideSubExpression(run, operand);
      ReplaceOperand(run.graph, places.Back(), replacement);
    }
  }
}

Deep<NodeId> DivideSubExpression(Division& run, NodeId node) {
  switch (CdfgGetKind(run.graph, node)) {
    case DFG_EDGE_PRESEDE:
      if (CdfgGetKind(run.graph, CdfgGetNext(run.graph, node)) == DFG_SPEC) {
        co_await DivideCast(run, CdfgGetNext(run.graph, node));
      }
      co_await DivideIndexes(run, CdfgLastInChain(run.graph, node));
      co_return 0;
    case DFG_OPERATION:
      co_return co_await DivideOperation(run, node);
    case DFG_EDGE_BLOCKING:
    case DFG_EDGE_NONBLOCKING:
      co_return co_await DivideAssignmentValue(run, node);
    case DFG_FUNC_CALL:
      co_return co_await DivideCall(run, node);
    case DFG_SPEC:
      co_return co_await DivideCast(run, node);
    default:
      co_return 0;
  }
}

// A plain reference put into an argument keeps no prev: kept.
Deep<> DivideArguments(Division& run, NodeId call) {
  CdfgGraph* graph = run.graph;
  const DepthScope inside(run.depth, call);
  for (const NodeId info : NextChain(graph, CdfgGetAttr(graph, call, DfgFuncCall_ARGLIST))) {
    const NodeId argument = CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL);
    if (argument == 0 || IsPlainReference(graph, argument)) continue;
    const NodeId replacement = co_await DivideSubExpression(run, argument);
    if (replacement == 0) continue;
    CdfgSetAttrNode(graph, info, DfgPortInfo_SIGNAL, replacement);
    if (CdfgGetKind(graph, replacement) == DFG_EDGE_BLOCKING) {
      CdfgSetPrev(graph, replacement, info);
    }
  }
}

Deep<> DivideIndexes(Division& run, NodeId port) {
  const CdfgGraph* graph = run.graph;
  if (!CdfgIsPort(CdfgGetKind(graph, port))) co_return;
  const DepthScope inside(run.depth, port);
  for (const NodeId member : MemberChain(graph, port)) {
    if (!CdfgIsPort(CdfgGetKind(graph, member))) break;
    for (const NodeId index : NextChain(graph, CdfgGetAttr(graph, member, DfgPort_DIMNODE))) {
      co_await DivideIndex(run, index);
    }
  }
}

// --- The two sides of an assignment --------------------------------------------------------------

namespace {

// A rewritten value becomes a statement of its own and the assignment reads what it assigned.
void ReadRewritten(Division& run, NodeId edge, NodeId operation, NodeId rewritten) {
  CdfgGraph* graph = run.graph;
  AppendPending(run, MakeStatement(graph, rewritten));
  const NodeId reference = CopyAsReference(graph, TakeAssignedPort(run, rewritten));
  CdfgLink(graph, edge, reference);
  MoveDereferences(graph, operation, PortOf(graph, reference));
}

// An operation stays as the right side unless its result is dereferenced.
Deep<> DivideRightOperation(Division& run, NodeId edge, NodeId operation) {
  CdfgGraph* graph = run.graph;
  co_await DivideOperands(run, operation);
  if (const NodeId rewritten = RewriteAssignment(run, operation, Within::Expression)) {
    ReadRewritten(run, edge, operation, rewritten);
  } else if (CdfgGetAttrInt(graph, operation, DfgOpe_POINNUM) > 0) {
    const NodeId reference = MakeReference(graph, AssignToTemp(run, operation));
    CdfgLink(graph, edge, reference);
    MoveDereferences(graph, operation, PortOf(graph, reference));
  }
}

// Divides a cast and puts what replaces it behind `prev`.
Deep<> DivideRightCast(Division& run, NodeId cast, NodeId prev) {
  const NodeId replacement = co_await DivideCast(run, cast);
  if (replacement != 0 && prev != 0) CdfgLink(run.graph, prev, replacement);
}

}  // namespace

NodeId ValueOf(const CdfgGraph* graph, NodeId edge) {
  for (const NodeId node : NextChain(graph, CdfgGetNext(graph, edge))) {
    if (CdfgGetKind(graph, node) != DFG_EDGE_BLOCKING) return node;
  }
  return 0;
}

Deep<> DivideRightSide(Division& run, NodeId edge, NodeId value) {
  CdfgGraph* graph = run.graph;
  const DepthScope inside(run.depth, edge);
  const NodeId prev = CdfgGetPrev(graph, value);
  const std::uint32_t kind = CdfgGetKind(graph, value);
  switch (kind) {
    case DFG_FUNC_CALL:
      co_await DivideArguments(run, value);
      break;
    case DFG_SPEC:
      co_await DivideRightCast(run, value, prev);
      break;
    case DFG_EDGE_PRESEDE:
      if (CdfgGetKind(graph, CdfgGetNext(graph, value)) == DFG_SPEC) {
        co_await DivideRightCast(run, CdfgGetNext(graph, value), prev);
      }
      co_await DivideIndexes(run, CdfgLastInChain(graph, value));
      break;
    case DFG_OPERATION:
      co_await DivideRightOperation(run, edge, value);
      break;
    default:
      if (kind >= DFG_INPUT_PORT && kind <= DFG_INPUT_VAR) co_await DivideIndexes(run, value);
      break;
  }
}

// A computed target, such as a dereferenced address, is taken out and assigned through.
Deep<> DivideLeftSide(Division& run, NodeId edge) {
  CdfgGraph* graph = run.graph;
  const DepthScope inside(run.depth, edge);
  const NodeId target = CdfgGetPrev(graph, edge);
  const std::uint32_t kind = CdfgGetKind(graph, target);
  if (kind == DFG_INPUT_VAR || (kind >= DFG_OUTPUT_PORT && kind <= DFG_OUTPUT_CONCAT)) {
    co_await DivideIndexes(run, target);
  }
  if (kind != DFG_OPERATION) co_return;
  co_await DivideOperands(run, target);
  NodeId new_target = 0;
  if (const NodeId rewritten = RewriteAssignment(run, target, Within::Expression)) {
    CdfgSetNext(graph, target, 0);
    AppendPending(run, MakeStatement(graph, rewritten));
    new_target = CopyAsTarget(graph, TakeAssignedPort(run, rewritten));
  } else {
    const NodeId variable = MakeTempVar(graph, target, TypeOfValue(run, target));
    const NodeId assignment = AssignPending(run, variable, target);
    CdfgSetNext(graph, target, 0);
    new_target = CdfgCopyInput(graph, CdfgGetPrev(graph, assignment));
  }
  CdfgLink(graph, new_target, edge);
  MoveDereferences(graph, target, new_target);
}

NodeId RewriteAssignment(Division& run, NodeId operation, Within within) {
  CdfgGraph* graph = run.graph;
  const std::int32_t code = CdfgGetAttrInt(graph, operation, DfgOpe_TYPE);
  if (!IsAssignmentOperator(code)) return 0;
  const NodeId port = AssignedPort(graph, operation);
  if (CdfgHasNode(graph, port) == 0) return 0;
  if (IsPostStep(code) && (within == Within::Expression || run.is_post_step)) {
    SaveOldValue(run, port);
  }
  const NodeId edge =
      AssignOperation(graph, operation, port, kPlainOperators[code - kFirstCompound]);
  if (code >= kFirstStep) SetStepOfOne(graph, operation);
  return edge;
}

NodeId AllocationCallOf(const CdfgGraph* graph, NodeId cast) {
  const NodeId call = CdfgLastInChain(graph, cast);
  if (CdfgGetKind(graph, call) != DFG_FUNC_CALL) return 0;
  const char* name = CdfgGetAttrStr(graph, call, DfgFuncCall_NAME);
  if (name == nullptr) return 0;
  for (const char* allocator : {"malloc", "calloc", "realloc"}) {
    if (std::strcmp(name, allocator) == 0) return call;
  }
  return 0;
}

// --- Builders ------------------------------------------------------------------------------------

void AppendPending(Division& run, NodeId statement) {
  if (run.pending.head == 0) {
    run.pending.head = statement;
  } else {
    CdfgLink(run.graph, run.pending.tail, statement);
  }
  run.pending.tail = statement;
}

NodeId AssignPending(Division& run, NodeId variable, NodeId value) {
  const NodeId edge = MakeAssignment(run.graph, value, variable, value);
  AppendPending(run, MakeStatement(run.graph, edge));
  return edge;
}

NodeId CopyAsReference(CdfgGraph* graph, NodeId port) {
  const NodeId copy = CdfgCopyInput(graph, port);
  if (copy == 0) return 0;
  CdfgRekindChain(graph, copy, DFG_OUTPUT_VAR, DFG_INPUT_VAR);
  return MakeEdgeTo(graph, port, copy);
}

NodeId CopyAsTarget(CdfgGraph* graph, NodeId port) {
  const NodeId copy = CdfgCopyInput(graph, port);
  CdfgRekindChain(graph, copy, DFG_INPUT_VAR, DFG_OUTPUT_VAR);
  return copy;
}

std::int32_t TakeDereferences(CdfgGraph* graph, NodeId operation) {
  const std::int32_t count = CdfgGetAttrInt(graph, operation, DfgOpe_POINNUM);
  if (count != 0) CdfgSetAttrInt(graph, operation, DfgOpe_POINNUM, 0);
  return count;
}
