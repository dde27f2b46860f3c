// Gives each operand of a floating multiplication or division a variable of its own: the chain
// behind connects its floating-point units to variables, and a directive chooses the unit by
// standing on the variable's declaration.
//
//   D(x = a * b)    ->    D1(M0 = a) <-> D2(M1 = b) <-> D(x = M0 * M1)
//
// M0 is declared with the type of a, and with a directive "float" or "fixedP" if a has one. Only
// operations that are a statement's root or its value are looked at, so it needs the flat
// statements that expression division leaves; and one statement per datapath, or the copies for a
// later statement are made before an earlier one runs.
#include "passes/mul_div.h"

#include <string_view>

#include "cdfg/chain.h"
#include "cdfg/copy.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/walk.h"
#include "constant/expr_type.h"
#include "constant/literal.h"
#include "passes/module_list.h"
#include "passes/temporaries.h"

namespace {

struct Run {
  CdfgGraph* graph;
  NodeId datapath = 0;    // in front of which the copies go
  std::int32_t code = 0;  // of the operation whose operands are treated
  // The directive that a declaration with directives hands on, 0 for none: its list is read once,
  // however many operands name it.
  IdMap<NodeId> directives;
};

// --- Directives ----------------------------------------------------------------------------------

bool ChoosesUnit(const CdfgGraph* graph, NodeId directive) {
  const char* text = CdfgGetAttrStr(graph, directive, DfgDirective_STR);
  if (text == nullptr) return false;
  return std::string_view(text) == "float" || std::string_view(text) == "fixedP";
}

NodeId FindUnitDirective(const CdfgGraph* graph, NodeId first) {
  for (const NodeId node : NextChain(graph, first)) {
    if (ChoosesUnit(graph, node)) return node;
  }
  return 0;
}

NodeId UnitDirectiveOf(Run& run, NodeId declaration) {
  const NodeId first = CdfgGetAttr(run.graph, declaration, CfgDecl_DIRECTIVE);
  if (first == 0) return 0;
  const auto [entry, is_new] = run.directives.try_emplace(declaration, 0);
  if (is_new) entry->second = FindUnitDirective(run.graph, first);
  return entry->second;
}

void CarryDirective(Run& run, NodeId operand, NodeId variable) {
  CdfgGraph* graph = run.graph;
  if (CdfgGetKind(graph, operand) == DFG_INPUT_CONST) return;
  const NodeId from = UnitDirectiveOf(run, CdfgGetAttr(graph, operand, DfgPort_DECL));
  if (from == 0) return;
  const NodeId directive = CdfgCreateNode(graph, INFO_DIRECTIVE, 0);
  CdfgSetAttrStr(graph, directive, DfgDirective_STR, CdfgGetAttrStr(graph, from, DfgDirective_STR));
  CdfgSetAttrInt(graph, directive, DfgDirective_TYPE,
                 CdfgGetAttrInt(graph, from, DfgDirective_TYPE));
  CdfgSetAttrNode(graph, variable, CfgDecl_DIRECTIVE, directive);
}

// --- One operand ---------------------------------------------------------------------------------

bool IsOperand(std::uint32_t kind) {
  return (kind >= DFG_INPUT_PORT && kind <= DFG_INPUT_VAR) || kind == DFG_INPUT_CONST;
}

bool IsFloating(const ExprType& type) {
  return type.pointer_count <= 0 &&
         (type.value_type == DECL_VALTYPE_FLOAT || type.value_type == DECL_VALTYPE_DOUBLE ||
          type.value_type == kTypeLongDouble);
}

// Name first, declaration second, unlike the other ports that read temporaries: kept, the order of
// attributes shows in the file.
NodeId MakeOperand(CdfgGraph* graph, NodeId position, NodeId variable) {
  const NodeId port = CdfgCreateNode(graph, DFG_INPUT_VAR, position);
  CdfgSetAttrStr(graph, port, DfgPort_NAME, CdfgGetAttrStr(graph, variable, CfgDecl_NAME));
  CdfgSetAttrNode(graph, port, DfgPort_DECL, variable);
  return port;
}

// A datapath that assigns `operand` to the variable that `port` reads.
NodeId MakeCopyDatapath(CdfgGraph* graph, NodeId operand, NodeId port) {
  const NodeId datapath = CdfgCreateNode(graph, CFG_STATE_DATAPATH, operand);
  const NodeId statement = CdfgCreateNode(graph, DFG_MANAGE_OPERATION, operand);
  CdfgSetAttrNode(graph, datapath, CfgDatapath_OPELIST, statement);
  CdfgSetPrev(graph, statement, datapath);
  const NodeId edge = CdfgCreateNode(graph, DFG_EDGE_BLOCKING, operand);
  CdfgSetAttrNode(graph, statement, DfgOpeman_OPE, edge);
  CdfgLink(graph, edge, MakeEdgeTo(graph, operand, operand));
  const NodeId target = CdfgCopyInput(graph, port);
  CdfgRekindChain(graph, target, DFG_INPUT_VAR, DFG_OUTPUT_VAR);
  CdfgLink(graph, target, edge);
  return datapath;
}

// Whatever the current datapath's prev is, it takes the copy as its body or as its next.
void PutInFront(CdfgGraph* graph, NodeId datapath, NodeId added) {
  CdfgAttachBody(graph, CdfgGetPrev(graph, datapath), added);
  CdfgLink(graph, added, datapath);
}

void TreatOperand(Run& run, NodeId operand) {
  CdfgGraph* graph = run.graph;
  const NodeId reference = CdfgGetPrev(graph, operand);
  ExprType type;
  TypeOfExpression(graph, operand, &type);
  if (!IsFloating(type)) return;
  const NodeId variable =
      run.code == CALC_Mul ? MakeMulVar(graph, operand, type) : MakeDivVar(graph, operand, type);
  CarryDirective(run, operand, variable);
  const NodeId port = MakeOperand(graph, operand, variable);
  CdfgLink(graph, reference, port);
  PutInFront(graph, run.datapath, MakeCopyDatapath(graph, operand, port));
}

// --- The statements of module code ---------------------------------------------------------------

void TreatOperands(Run& run, NodeId first) {
  for (const NodeId node : NextChain(run.graph, first)) {
    if (IsOperand(CdfgGetKind(run.graph, node))) TreatOperand(run, node);
  }
}

void TreatNode(Run& run, NodeId node) {
  if (CdfgGetKind(run.graph, node) != DFG_OPERATION) return;
  run.code = CdfgGetAttrInt(run.graph, node, DfgOpe_TYPE);
  if (run.code != CALC_Mul && run.code != CALC_Div) return;
  TreatOperands(run, CdfgGetAttr(run.graph, node, DfgOpe_LEFT));
  TreatOperands(run, CdfgGetAttr(run.graph, node, DfgOpe_RIGHT));
}

void TreatDatapath(Run& run, NodeId datapath) {
  const CdfgGraph* graph = run.graph;
  run.datapath = datapath;
  for (const NodeId statement :
       NextChain(graph, CdfgGetAttr(graph, datapath, CfgDatapath_OPELIST))) {
    const NodeId root = CdfgGetAttr(graph, statement, DfgOpeman_OPE);
    for (const NodeId node : NextChain(graph, root)) TreatNode(run, node);
  }
}

void TreatFunction(Run& run, NodeId function) {
  CdfgSetDeclScope(function);
  StatementWalk statements(run.graph, CdfgGetAttr(run.graph, function, CfgFunc_STARTCFG));
  while (const NodeId node = statements.Next()) {
    if (CdfgGetKind(run.graph, node) == CFG_STATE_DATAPATH) TreatDatapath(run, node);
  }
}

}  // namespace

int MulDivToTemporaries(CdfgGraph* graph) {
  Run run{graph, 0, 0, {}};
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) TreatFunction(run, function);
  return 0;
}
