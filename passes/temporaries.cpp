#include "passes/temporaries.h"

#include <initializer_list>
#include <string>

#include "cdfg/name_set.h"

namespace {

// One kind of temporary.
struct TempKind {
  const char* name;  // what the number follows, padded to six digits
  int counter = 0;
  const char* prefix = nullptr;  // replaces the name, the number then unpadded
};

constexpr int kPaddedDigits = 6;

TempKind temp_kind{"__fpfix_tmp_"};
TempKind cast_kind{"__fpfix_cast_"};
TempKind div_kind{"__fpfix_div_"};
TempKind mul_kind{"__fpfix_mul_"};
TempKind const_kind{"__fpfix_cnst_"};

NodeId MakeVariable(CdfgGraph* graph, NodeId position, const ExprType& type, TempKind& kind) {
  const std::string& name = kind.prefix == nullptr
                                ? NameSetFresh(kind.name, kPaddedDigits, &kind.counter)
                                : NameSetFresh(kind.prefix, 1, &kind.counter);
  return CdfgDeclareVariable(graph, position, type, name.c_str());
}

void NameVariable(CdfgGraph* graph, NodeId port, NodeId variable) {
  CdfgSetAttrNode(graph, port, DfgPort_DECL, variable);
  CdfgSetAttrStr(graph, port, DfgPort_NAME, CdfgGetAttrStr(graph, variable, CfgDecl_NAME));
}

}  // namespace

NodeId MakeTempVar(CdfgGraph* graph, NodeId position, const ExprType& type) {
  return MakeVariable(graph, position, type, temp_kind);
}

NodeId MakeCastVar(CdfgGraph* graph, NodeId position, const ExprType& type) {
  return MakeVariable(graph, position, type, cast_kind);
}

NodeId MakeDivVar(CdfgGraph* graph, NodeId position, const ExprType& type) {
  return MakeVariable(graph, position, type, div_kind);
}

NodeId MakeMulVar(CdfgGraph* graph, NodeId position, const ExprType& type) {
  return MakeVariable(graph, position, type, mul_kind);
}

NodeId MakeConstVar(CdfgGraph* graph, NodeId position, const ExprType& type) {
  return MakeVariable(graph, position, type, const_kind);
}

void SetTempPrefix(const char* prefix) { temp_kind.prefix = prefix; }

void SetCastPrefix(const char* prefix) { cast_kind.prefix = prefix; }

const char* GetCastPrefix() { return cast_kind.prefix; }

void ResetTemporaries() {
  for (TempKind* kind : {&temp_kind, &cast_kind, &div_kind, &mul_kind, &const_kind}) {
    kind->counter = 0;
    kind->prefix = nullptr;
  }
}

NodeId MakeTarget(CdfgGraph* graph, NodeId position, NodeId variable) {
  const NodeId target = CdfgCreateNode(graph, DFG_OUTPUT_VAR, position);
  NameVariable(graph, target, variable);
  return target;
}

NodeId MakeInput(CdfgGraph* graph, NodeId position, NodeId variable) {
  const NodeId input = CdfgCreateNode(graph, DFG_INPUT_VAR, position);
  NameVariable(graph, input, variable);
  return input;
}

NodeId MakeReference(CdfgGraph* graph, NodeId variable) {
  return MakeEdgeTo(graph, variable, MakeInput(graph, variable, variable));
}

NodeId MakeEdgeTo(CdfgGraph* graph, NodeId position, NodeId node) {
  const NodeId edge = CdfgCreateNode(graph, DFG_EDGE_PRESEDE, position);
  CdfgLink(graph, edge, node);
  return edge;
}

NodeId MakeStatement(CdfgGraph* graph, NodeId root) {
  const NodeId statement = CdfgCreateNode(graph, DFG_MANAGE_OPERATION, root);
  CdfgSetAttrNode(graph, statement, DfgOpeman_OPE, root);
  return statement;
}

NodeId MakeAssignment(CdfgGraph* graph, NodeId position, NodeId variable, NodeId value) {
  const NodeId edge = CdfgCreateNode(graph, DFG_EDGE_BLOCKING, position);
  CdfgLink(graph, MakeTarget(graph, position, variable), edge);
  CdfgLink(graph, edge, value);
  return edge;
}
