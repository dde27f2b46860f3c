// Tidies the data-flow nodes of every datapath statement of module code, so that the steps behind
// find one target per assignment, one reference per operand, and conditionals of one floating type.
//
//   1. chained assignments     a = b = c = e        ->  c = e; b = c; a = b
//   2. targets and references  in x <- ref ref y    ->  out x <- ref y
//   3. floating conditionals   d = c ? f : g        ->  T = f; d = c ? T : g
//                              (d, g and T double, f float)
//
// Each runs over a datapath's whole list before the next one begins: the statements that the first
// makes are seen by the other two. Conditions, return values and the lists of loop headers stay as
// they are. Needs the flat statements that expression division leaves; step 3 also needs the first
// statement of a list to have its datapath as prev.
#include "passes/remake_dfg.h"

#include <vector>

#include "cdfg/chain.h"
#include "cdfg/copy.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/kinds.h"
#include "cdfg/walk.h"
#include "constant/expr_type.h"
#include "passes/module_list.h"
#include "passes/temporaries.h"

namespace {

NodeId RootOf(const CdfgGraph* graph, NodeId statement) {
  return CdfgGetAttr(graph, statement, DfgOpeman_OPE);
}

// --- 1. Chained assignments ----------------------------------------------------------------------

bool IsBlocking(const CdfgGraph* graph, NodeId node) {
  return CdfgGetKind(graph, node) == DFG_EDGE_BLOCKING;
}

// The edges of a = b = c, that of a first.
std::vector<NodeId> CollectEdges(const CdfgGraph* graph, NodeId outermost) {
  std::vector<NodeId> edges;
  for (const NodeId node : NextChain(graph, outermost)) {
    if (!IsBlocking(graph, node)) break;
    edges.push_back(node);
  }
  return edges;
}

// Makes `edge` assign the value of the target of `inner`.
void ReadTarget(CdfgGraph* graph, NodeId edge, NodeId inner) {
  const NodeId reference = CdfgCreateNode(graph, DFG_EDGE_PRESEDE, edge);
  CdfgLink(graph, edge, reference);
  const NodeId copy = CdfgCopyInput(graph, CdfgGetPrev(graph, inner));
  CdfgRekindChain(graph, copy, DFG_OUTPUT_VAR, DFG_INPUT_VAR);
  CdfgLink(graph, reference, copy);
}

void InsertBehind(CdfgGraph* graph, NodeId statement, NodeId added) {
  CdfgLink(graph, added, CdfgGetNext(graph, statement));
  CdfgLink(graph, statement, added);
}

// The statement keeps the innermost assignment; the others follow it from the inside outwards.
void SplitAssignments(CdfgGraph* graph, NodeId statement) {
  const NodeId root = RootOf(graph, statement);
  const std::vector<NodeId> edges = CollectEdges(graph, root);
  CdfgSetAttrNode(graph, statement, DfgOpeman_OPE, edges.back());
  NodeId last = statement;
  for (std::size_t i = edges.size() - 1; i-- > 0;) {
    const NodeId split = CdfgCreateNode(graph, DFG_MANAGE_OPERATION, root);
    CdfgSetAttrNode(graph, split, DfgOpeman_OPE, edges[i]);
    ReadTarget(graph, edges[i], edges[i + 1]);
    InsertBehind(graph, last, split);
    last = split;
  }
}

// --- 2. Targets and references -------------------------------------------------------------------

// What kind of chain the walk of references is on.
enum Tag : int { kExpression, kIndexes, kArguments };

bool IsReadPort(std::uint32_t kind) { return kind >= DFG_INPUT_PORT && kind <= DFG_INPUT_CONCAT; }

// Of a run of references only the first stays.
void DropFurtherReferences(CdfgGraph* graph, NodeId reference) {
  const NodeId next = CdfgGetNext(graph, reference);
  if (CdfgGetKind(graph, next) != DFG_EDGE_PRESEDE) return;
  const NodeId behind = CdfgSkipReferences(graph, next);
  CdfgSetNext(graph, reference, behind);
  // The prev of an assignment is its target.
  if (!IsBlocking(graph, behind)) CdfgSetPrev(graph, behind, reference);
}

bool HasNothingInside(const CdfgGraph* graph, NodeId port) {
  return CdfgGetAttr(graph, port, DfgPort_DIMNODE) == 0 &&
         CdfgGetAttr(graph, port, DfgPort_STRSON) == 0;
}

// Whether an operand is clean as it stands: one reference at most, in front of a plain variable, a
// constant or the like. Most are, and cleaning something else does not change that.
bool IsCleanOperand(const CdfgGraph* graph, NodeId first) {
  if (first == 0) return true;
  NodeId value = first;
  std::uint32_t kind = CdfgGetKind(graph, value);
  if (kind == DFG_EDGE_PRESEDE) {
    value = CdfgGetNext(graph, value);
    kind = CdfgGetKind(graph, value);
  }
  if (kind == DFG_EDGE_PRESEDE || kind == DFG_FUNC_CALL || kind == DFG_OPERATION) return false;
  if (IsReadPort(kind) && !HasNothingInside(graph, value)) return false;
  return CdfgGetNext(graph, value) == 0;
}

// The same for what a statement assigns or tests: an operand, or an operation on operands.
bool IsCleanValue(const CdfgGraph* graph, NodeId value) {
  if (CdfgGetKind(graph, value) != DFG_OPERATION) return IsCleanOperand(graph, value);
  return CdfgGetNext(graph, value) == 0 &&
         IsCleanOperand(graph, CdfgGetAttr(graph, value, DfgOpe_LEFT)) &&
         IsCleanOperand(graph, CdfgGetAttr(graph, value, DfgOpe_RIGHT)) &&
         IsCleanOperand(graph, CdfgGetAttr(graph, value, DfgOpe_COND));
}

bool IsCleanTarget(const CdfgGraph* graph, NodeId target) {
  const std::uint32_t kind = CdfgGetKind(graph, target);
  return kind != DFG_INPUT_VAR && (kind != DFG_OUTPUT_VAR || HasNothingInside(graph, target));
}

// The walk of references through one statement after the other.
struct Cleanup {
  CdfgGraph* graph;
  ChainWalk walk;
  std::uint32_t statement = 0;  // how many statements have been begun
  // In which statement each member chain was entered first.
  IdMap<std::uint32_t> members = {};

  explicit Cleanup(CdfgGraph* of) : graph(of), walk(of) {}
};

// Where an index had several indexed members, each is read by a statement of its own and is a
// member in those before it. What an earlier statement has cleaned is clean, so n of them cost n.
bool IsClean(Cleanup& run, NodeId members) {
  const auto [entry, is_new] = run.members.try_emplace(members, run.statement);
  return !is_new && entry->second != run.statement;
}

void CleanPort(Cleanup& run, NodeId port) {
  run.walk.Enter(CdfgGetAttr(run.graph, port, DfgPort_DIMNODE), kIndexes);
  const NodeId members = CdfgGetAttr(run.graph, port, DfgPort_STRSON);
  if (members != 0 && !IsClean(run, members)) run.walk.Enter(members, kExpression);
}

void CleanNode(Cleanup& run, NodeId node) {
  const CdfgGraph* graph = run.graph;
  ChainWalk& walk = run.walk;
  const std::uint32_t kind = CdfgGetKind(graph, node);
  if (kind == DFG_EDGE_PRESEDE) {
    DropFurtherReferences(run.graph, node);
  } else if (IsReadPort(kind)) {
    CleanPort(run, node);
  } else if (kind == DFG_FUNC_CALL) {
    walk.Enter(CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST), kArguments);
  } else if (kind == DFG_OPERATION) {
    for (const std::uint32_t side : {DfgOpe_LEFT, DfgOpe_RIGHT, DfgOpe_COND}) {
      const NodeId operand = CdfgGetAttr(graph, node, side);
      if (!IsCleanOperand(graph, operand)) walk.Enter(operand, kExpression);
    }
  }
}

void CleanReferences(Cleanup& run, NodeId first, Tag tag) {
  const CdfgGraph* graph = run.graph;
  ChainWalk& walk = run.walk;
  walk.Start(first, tag);
  while (const NodeId node = walk.Next()) {
    switch (walk.Tag()) {
      case kIndexes:
        walk.Enter(CdfgGetAttr(graph, node, DfgDim_NODE), kExpression);
        break;
      case kArguments:
        walk.Enter(CdfgGetAttr(graph, node, DfgPortInfo_SIGNAL), kExpression);
        break;
      default:
        CleanNode(run, node);
        break;
    }
  }
}

// Of the target only its own indexes are looked at, not those of its members: kept.
void MakeTargetWritten(Cleanup& run, NodeId target) {
  CdfgGraph* graph = run.graph;
  const std::uint32_t kind = CdfgGetKind(graph, target);
  if (kind != DFG_INPUT_VAR && kind != DFG_OUTPUT_VAR) return;
  CdfgRekindChain(graph, target, DFG_INPUT_VAR, DFG_OUTPUT_VAR);
  CleanReferences(run, CdfgGetAttr(graph, target, DfgPort_DIMNODE), kIndexes);
}

void TidyStatement(Cleanup& run, NodeId statement) {
  ++run.statement;
  const NodeId root = RootOf(run.graph, statement);
  if (IsBlocking(run.graph, root)) MakeTargetWritten(run, CdfgGetPrev(run.graph, root));
  // An edge at the head has nothing to clean; the walk goes on to the value behind it.
  CleanReferences(run, root, kExpression);
}

// --- 3. Floating conditionals --------------------------------------------------------------------

bool IsFloating(const ExprType& type) {
  return type.pointer_count == 0 &&
         (type.value_type == DECL_VALTYPE_FLOAT || type.value_type == DECL_VALTYPE_DOUBLE);
}

bool EndsInVariable(const CdfgGraph* graph, NodeId branch) {
  const std::uint32_t kind = CdfgGetKind(graph, CdfgLastInChain(graph, branch));
  return kind == DFG_INPUT_PORT || kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_PORT ||
         kind == DFG_OUTPUT_VAR;
}

// False, with nothing done, when the statement's prev does not say where it stands.
bool PutInFront(CdfgGraph* graph, NodeId statement, NodeId added) {
  const NodeId prev = CdfgGetPrev(graph, statement);
  const std::uint32_t kind = CdfgGetKind(graph, prev);
  if (kind == CFG_STATE_DATAPATH) {
    CdfgSetAttrNode(graph, prev, CfgDatapath_OPELIST, added);
  } else if (kind == DFG_MANAGE_OPERATION) {
    CdfgSetNext(graph, prev, added);
  } else {
    return false;
  }
  CdfgSetPrev(graph, added, prev);
  CdfgLink(graph, added, statement);
  return true;
}

// Assigns a branch of the other floating type to a temporary of the target's type, in front of the
// statement, and answers what reads the temporary, without a reference. 0 when the branch stays.
// Where the new statement finds no place the branch has been moved under it all the same: kept.
NodeId ConvertBranch(CdfgGraph* graph, NodeId statement, NodeId branch, const ExprType& target) {
  if (!EndsInVariable(graph, branch)) return 0;
  ExprType type;
  TypeOfExpression(graph, branch, &type);
  if (!IsFloating(type) || type.value_type == target.value_type) return 0;
  const NodeId variable = MakeTempVar(graph, branch, target);
  const NodeId assignment = MakeStatement(graph, MakeAssignment(graph, branch, variable, branch));
  if (!PutInFront(graph, statement, assignment)) return 0;
  return MakeInput(graph, branch, variable);
}

bool IsConditional(const CdfgGraph* graph, NodeId value) {
  return CdfgGetKind(graph, value) == DFG_OPERATION &&
         CdfgGetAttrInt(graph, value, DfgOpe_TYPE) == CALC_LogCond;
}

// The conditional that a statement assigns, 0 if it does not.
NodeId AssignedConditional(const CdfgGraph* graph, NodeId root) {
  if (!CdfgIsAssignment(CdfgGetKind(graph, root))) return 0;
  const NodeId value = CdfgGetNext(graph, root);
  return IsConditional(graph, value) ? value : 0;
}

void ConvertBranches(CdfgGraph* graph, NodeId statement) {
  const NodeId root = RootOf(graph, statement);
  const NodeId conditional = AssignedConditional(graph, root);
  if (conditional == 0) return;
  ExprType target;
  TypeOfExpression(graph, CdfgPrevUntilOperation(graph, root), &target);
  if (!IsFloating(target)) return;
  for (const std::uint32_t side : {DfgOpe_LEFT, DfgOpe_RIGHT}) {
    const NodeId branch = CdfgGetAttr(graph, conditional, side);
    const NodeId converted = ConvertBranch(graph, statement, branch, target);
    if (converted == 0) continue;
    CdfgSetAttrNode(graph, conditional, side, converted);
    CdfgSetPrev(graph, converted, conditional);
  }
}

// --- The statements of module code ---------------------------------------------------------------

// Which steps a list needs after step 1.
struct Needs {
  bool cleaning = false;
  bool conversion = false;
};

// Step 1 for one statement.
void SplitStatement(CdfgGraph* graph, NodeId statement, Needs& needs) {
  NodeId root = RootOf(graph, statement);
  const std::uint32_t kind = CdfgGetKind(graph, root);
  NodeId value = root;
  if (CdfgIsAssignment(kind)) {
    value = CdfgGetNext(graph, root);
    if (kind == DFG_EDGE_BLOCKING && IsBlocking(graph, value)) {
      SplitAssignments(graph, statement);
      needs = {true, true};  // in a damaged graph new nodes may hide what was looked at
      root = RootOf(graph, statement);
      value = CdfgGetNext(graph, root);
    }
    if (IsConditional(graph, value)) needs.conversion = true;
  }
  if (needs.cleaning) return;
  const bool is_clean =
      IsCleanValue(graph, value) &&
      (kind != DFG_EDGE_BLOCKING || IsCleanTarget(graph, CdfgGetPrev(graph, root)));
  if (!is_clean) needs.cleaning = true;
}

void RemakeDatapath(Cleanup& run, NodeId datapath) {
  CdfgGraph* graph = run.graph;
  const NodeId first = CdfgGetAttr(graph, datapath, CfgDatapath_OPELIST);
  Needs needs;
  // Meets the statements that it makes; none of them is chained.
  for (const NodeId statement : NextChain(graph, first)) SplitStatement(graph, statement, needs);
  if (needs.cleaning) {
    for (const NodeId statement : NextChain(graph, first)) TidyStatement(run, statement);
  }
  if (needs.conversion) {
    for (const NodeId statement : NextChain(graph, first)) ConvertBranches(graph, statement);
  }
}

void RemakeFunction(CdfgGraph* graph, NodeId function) {
  CdfgSetDeclScope(function);
  Cleanup run(graph);
  StatementWalk statements(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
  while (const NodeId node = statements.Next()) {
    if (CdfgGetKind(graph, node) == CFG_STATE_DATAPATH) RemakeDatapath(run, node);
  }
}

}  // namespace

int RemakeDfgNodes(CdfgGraph* graph) {
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) RemakeFunction(graph, function);
  return 0;
}
