// Whether the statements of module code are flat, as expression division leaves them and all later
// steps take them to be.
//
//   statement   target = value          target: a port
//               condition | simple | call | cast simple      without a target
//   value       operation of simples | call of simples | cast simple | simple
//   condition   a comparison or logical operation of simples
//   simple      reference(s) port | reference(s) constant | port | the cast of an allocation call
//   port        its indexes are simple and read no indexed variable
//
// What is further let through, because the division leaves it so:
//   - until the remake, an edge behind an edge, a = b = c; and as only a has its indexes divided,
//     the targets are no longer looked at when the remake has made b = c a statement;
//   - a cast behind a reference where no operator stands: the division makes its statement but lets
//     the cast stay in an argument, an index and a root;
//   - a call behind a reference, arguments and all, where a cast of it was a whole statement or a
//     condition: the cast looks no further than the reference.
// A case that shows something else that stays nested says "shape: loose".
#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/kinds.h"
#include "cdfg/names.h"
#include "cdfg/walk.h"
#include "passes/module_list.h"
#include "tests/passes/runner/shape.h"

namespace {

struct Flat {
  const CdfgGraph* graph;
  std::vector<std::string>* problems;
  NodeId statement = 0;
  bool has_chains = false;  // a = b = c may still stand in one statement

  std::uint32_t Kind(NodeId node) const { return CdfgGetKind(graph, node); }
  void Report(NodeId node, const char* what) const {
    problems->push_back("statement " + std::to_string(statement) + ": node " +
                        std::to_string(node) + " (" + KindName(graph, node) + ") " + what);
  }
};

bool IsCondition(const CdfgGraph* graph, NodeId node) {
  return CdfgGetKind(graph, node) == DFG_OPERATION &&
         CdfgIsTruthOperator(CdfgGetAttrInt(graph, node, DfgOpe_TYPE));
}

// --- Ports and what stands for a value -----------------------------------------------------------

enum class Where { Plain, Index };

void CheckSimple(const Flat& flat, NodeId node, Where where = Where::Plain);

void CheckPort(const Flat& flat, NodeId port, Where where) {
  for (const NodeId member : MemberChain(flat.graph, port)) {
    const std::uint32_t kind = flat.Kind(member);
    if (!CdfgIsPort(kind)) break;
    const NodeId indexes = CdfgGetAttr(flat.graph, member, DfgPort_DIMNODE);
    const bool is_variable = kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_VAR;
    if (where == Where::Index && is_variable && indexes != 0) {
      flat.Report(member, "is indexed inside an index");
      return;
    }
    for (const NodeId index : NextChain(flat.graph, indexes)) {
      CheckSimple(flat, CdfgGetAttr(flat.graph, index, DfgDim_NODE), Where::Index);
    }
  }
}

void CheckArguments(const Flat& flat, NodeId call) {
  const NodeId first = CdfgGetAttr(flat.graph, call, DfgFuncCall_ARGLIST);
  for (const NodeId info : NextChain(flat.graph, first)) {
    CheckSimple(flat, CdfgGetAttr(flat.graph, info, DfgPortInfo_SIGNAL));
  }
}

bool IsAllocationCall(const CdfgGraph* graph, NodeId node) {
  if (CdfgGetKind(graph, node) != DFG_FUNC_CALL) return false;
  const char* name = CdfgGetAttrStr(graph, node, DfgFuncCall_NAME);
  const std::string_view text = name == nullptr ? "" : name;
  return text == "malloc" || text == "calloc" || text == "realloc";
}

// References and casts, and behind them something that computes nothing.
void CheckSimple(const Flat& flat, NodeId node, Where where) {
  NodeId value = node;
  bool is_cast = false;
  while (flat.Kind(value) == DFG_EDGE_PRESEDE || flat.Kind(value) == DFG_SPEC) {
    is_cast = is_cast || flat.Kind(value) == DFG_SPEC;
    value = CdfgGetNext(flat.graph, value);
  }
  const std::uint32_t kind = flat.Kind(value);
  if (is_cast && IsAllocationCall(flat.graph, value)) {
    CheckArguments(flat, value);
  } else if (kind == DFG_OPERATION || kind == DFG_FUNC_CALL || CdfgIsAssignment(kind)) {
    flat.Report(value, "is nested");
  } else if (CdfgIsPort(kind)) {
    CheckPort(flat, value, where);
  }
}

void CheckOperation(const Flat& flat, NodeId operation) {
  const CdfgGraph* graph = flat.graph;
  const std::int32_t code = CdfgGetAttrInt(graph, operation, DfgOpe_TYPE);
  if (code >= 50 && code <= 63) flat.Report(operation, "is an assignment operator");
  if (CdfgGetAttrInt(graph, operation, DfgOpe_POINNUM) > 0)
    flat.Report(operation, "is dereferenced");
  for (const std::uint32_t operand : {DfgOpe_LEFT, DfgOpe_RIGHT, DfgOpe_COND}) {
    const NodeId node = CdfgGetAttr(graph, operation, operand);
    CheckSimple(flat, node);
    const NodeId behind = CdfgSkipReferences(graph, node);
    if (flat.Kind(behind) == DFG_SPEC && !IsAllocationCall(graph, CdfgLastInChain(graph, behind))) {
      flat.Report(behind, "is a cast as an operand");
    }
  }
}

// --- Statements ----------------------------------------------------------------------------------

void CheckValue(const Flat& flat, NodeId value) {
  const std::uint32_t kind = flat.Kind(value);
  if (kind == DFG_OPERATION) {
    CheckOperation(flat, value);
  } else if (kind == DFG_FUNC_CALL) {
    CheckArguments(flat, value);
  } else {
    CheckSimple(flat, value);
  }
}

// Whether nothing but references and casts, at least one reference, stands in front of a call.
bool IsCallBehindReferences(const Flat& flat, NodeId value) {
  bool has_reference = false;
  while (flat.Kind(value) == DFG_EDGE_PRESEDE || flat.Kind(value) == DFG_SPEC) {
    has_reference = has_reference || flat.Kind(value) == DFG_EDGE_PRESEDE;
    value = CdfgGetNext(flat.graph, value);
  }
  return has_reference && flat.Kind(value) == DFG_FUNC_CALL;
}

void CheckTarget(const Flat& flat, NodeId target) {
  const std::uint32_t kind = flat.Kind(target);
  if (kind == DFG_OPERATION || kind == DFG_FUNC_CALL) flat.Report(target, "is a computed target");
}

void CheckAssignment(const Flat& flat, NodeId edge) {
  CheckTarget(flat, CdfgGetPrev(flat.graph, edge));
  NodeId value = CdfgGetNext(flat.graph, edge);
  if (flat.Kind(value) == DFG_EDGE_BLOCKING && !flat.has_chains) {
    flat.Report(value, "is an assignment behind an assignment");
  }
  while (flat.Kind(value) == DFG_EDGE_BLOCKING) value = CdfgGetNext(flat.graph, value);
  if (!IsCallBehindReferences(flat, value)) CheckValue(flat, value);
}

void CheckStatement(const Flat& flat, NodeId statement, bool is_condition) {
  const NodeId root = CdfgGetAttr(flat.graph, statement, DfgOpeman_OPE);
  const std::uint32_t kind = flat.Kind(root);
  if (CdfgIsAssignment(kind)) {
    CheckAssignment(flat, root);
  } else if (kind == DFG_OPERATION && !(is_condition && IsCondition(flat.graph, root))) {
    flat.Report(root, "has no target");
  } else if (kind == DFG_FUNC_CALL && is_condition) {
    flat.Report(root, "is a call as a condition");
  } else if (kind != DFG_SPEC || !IsCallBehindReferences(flat, root)) {
    CheckValue(flat, root);
  }
}

bool IsTested(std::uint32_t kind) {
  return kind == CFG_STATE_IF || CdfgIsCase(kind) || kind == CFG_LOOP_COND || kind == CFG_RETURN;
}

// --- Links ---------------------------------------------------------------------------------------

// A datapath and its statement name each other, and so do an assignment and its target.
void CheckDatapathLinks(const Flat& flat, NodeId datapath) {
  const NodeId first = CdfgGetAttr(flat.graph, datapath, CfgDatapath_OPELIST);
  if (first == 0) return;
  if (CdfgGetNext(flat.graph, first) != 0) {
    flat.Report(first, "is not the only statement of its datapath");
  }
  if (CdfgGetPrev(flat.graph, first) != datapath) flat.Report(first, "does not lead back");
  const NodeId edge = CdfgGetAttr(flat.graph, first, DfgOpeman_OPE);
  if (!CdfgIsAssignment(flat.Kind(edge))) return;
  const NodeId target = CdfgGetPrev(flat.graph, edge);
  if (target != 0 && CdfgGetNext(flat.graph, target) != edge) {
    flat.Report(target, "does not lead to its edge");
  }
}

// Neighbouring statements name each other, and the first names what it stands in.
void CheckNeighbours(const Flat& flat, NodeId node) {
  const NodeId next = CdfgGetNext(flat.graph, node);
  if (next != 0 && CdfgGetPrev(flat.graph, next) != node) {
    flat.Report(next, "does not lead back to the statement in front of it");
  }
}

template <class Visit>
void ForEachNode(const CdfgGraph* graph, Visit visit) {
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) {
    StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
    while (const NodeId node = walk.Next()) visit(node, walk.AtPart());
  }
}

template <class Visit>
void ForEachStatement(Flat& flat, Visit visit) {
  ForEachNode(flat.graph, [&](NodeId node, bool) {
    for (const NodeId statement : NextChain(flat.graph, CdfgGetOperationList(flat.graph, node))) {
      flat.statement = statement;
      visit(statement, flat.Kind(node));
    }
  });
}

}  // namespace

std::string KindName(const CdfgGraph* graph, NodeId node) {
  char name[64];
  CdfgKindName(name, CdfgGetKind(graph, node));
  return name;
}

void CheckStatementsAreFlat(const CdfgGraph* graph, std::vector<std::string>* problems) {
  Flat flat{graph, problems, 0, true};
  ForEachStatement(flat, [&flat](NodeId statement, std::uint32_t owner) {
    CheckStatement(flat, statement, IsTested(owner));
  });
}

void CheckTargetsAreFlat(const CdfgGraph* graph, std::vector<std::string>* problems) {
  Flat flat{graph, problems};
  ForEachStatement(flat, [&flat](NodeId statement, std::uint32_t) {
    const NodeId edge = CdfgGetAttr(flat.graph, statement, DfgOpeman_OPE);
    if (!CdfgIsAssignment(flat.Kind(edge))) return;
    const NodeId target = CdfgGetPrev(flat.graph, edge);
    if (CdfgIsPort(flat.Kind(target))) CheckPort(flat, target, Where::Plain);
  });
}

// The remake looks at datapaths only; what stands in loop headers and conditions stays as it is.
void CheckDatapathsAreRemade(const CdfgGraph* graph, std::vector<std::string>* problems) {
  Flat flat{graph, problems};
  ForEachStatement(flat, [&flat](NodeId statement, std::uint32_t owner) {
    if (owner != CFG_STATE_DATAPATH) return;
    CheckStatement(flat, statement, false);
    const NodeId edge = CdfgGetAttr(flat.graph, statement, DfgOpeman_OPE);
    if (flat.Kind(edge) != DFG_EDGE_BLOCKING) return;
    const NodeId target = CdfgGetPrev(flat.graph, edge);
    if (flat.Kind(target) == DFG_INPUT_VAR) flat.Report(target, "is assigned");
  });
}

void CheckDatapathsAreSingle(const CdfgGraph* graph, std::vector<std::string>* problems) {
  Flat flat{graph, problems};
  ForEachNode(graph, [&flat](NodeId node, bool is_part) {
    flat.statement = node;
    if (flat.Kind(node) == CFG_STATE_DATAPATH) CheckDatapathLinks(flat, node);
    if (!is_part) CheckNeighbours(flat, node);
  });
}
