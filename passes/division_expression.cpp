// Divides every expression of module code into simple statements.
//
// Each computation nested inside another is taken out into a statement of its own that assigns a
// new temporary variable, and the place where it stood reads the temporary. Afterwards every
// statement is one of
//
//   target = operation of references      target = reference
//   target = call of references           a bare comparison, as a condition
//
//   x = a / (b + c);       ->   T = b + c;  x = a / T;
//   y = x++ + f(g(1));     ->   T0 = x;  x = x + 1;  T1 = g(1);  T2 = f(T1);  y = T0 + T2;
//
// The road of one statement: the walk below finds the list that it stands in; DivideList looks at
// its root; the functions of division_operands.cpp go down into it and append what they take out
// to the pending list; then the statement itself is appended, and the pending list becomes the
// list that it came from, or a new datapath in front of it.
//
// Terms:
//   pending list      the statements made so far of one list or one condition
//   copy-as-reference a copy of a port behind a new DFG_EDGE_PRESEDE, as something to read
//   preparation       the statements that compute what a loop's condition tests
//
// Needs loop bodies that are blocks. Owns the counters of the temporaries, which later passes
// continue.
#include "passes/division_expression.h"

#include <vector>

#include "cdfg/kinds.h"
#include "cdfg/walk.h"
#include "passes/division.h"
#include "passes/module_list.h"

namespace {

void DivideDatapath(Division& run, NodeId datapath) {
  CdfgGraph* graph = run.graph;
  DivideList(run, CdfgGetAttr(graph, datapath, CfgDatapath_OPELIST), ListMode::Statements);
  if (run.pending.head == 0) return;
  CdfgSetAttrNode(graph, datapath, CfgDatapath_OPELIST, run.pending.head);
  CdfgSetPrev(graph, run.pending.head, datapath);
}

// Stores what a condition or a return tests now, and puts the rest in front of the statement.
void Settle(Division& run, NodeId statement, std::uint32_t attribute, NodeId value) {
  if (value != 0) {
    CdfgSetAttrNode(run.graph, statement, attribute, value);
    CdfgSetPrev(run.graph, value, statement);
  }
  PlacePending(run, statement);
}

void DivideBranchCondition(Division& run, NodeId statement, std::uint32_t attribute) {
  const NodeId condition = CdfgGetAttr(run.graph, statement, attribute);
  if (condition == 0) return;
  DivideCondition(run, condition);
  Settle(run, statement, attribute, TakeCondition(run));
  run.saved_target = 0;
}

void DivideReturn(Division& run, NodeId statement) {
  DivideList(run, CdfgGetAttr(run.graph, statement, CfgReturn_EXP), ListMode::Value);
  Settle(run, statement, CfgReturn_EXP, TakeReturnValue(run));
}

// Loops nest, so each one's parts are kept until the walk leaves it.
void DivideLoop(Division& run, std::vector<LoopParts>& loops, NodeId loop, bool is_leaving) {
  if (!is_leaving) {
    loops.push_back({loop});
    return;
  }
  PlacePreparation(run, loops.back());
  loops.pop_back();
}

void DivideStatementAt(Division& run, NodeId statement) {
  const std::uint32_t kind = CdfgGetKind(run.graph, statement);
  if (kind == CFG_STATE_DATAPATH) {
    DivideDatapath(run, statement);
  } else if (kind == CFG_STATE_IF) {
    DivideBranchCondition(run, statement, CfgStateIf_CONDOPE);
  } else if (CdfgIsCase(kind)) {
    DivideBranchCondition(run, statement, CfgStateCase_CONDOPE);
  } else if (kind == CFG_RETURN) {
    DivideReturn(run, statement);
  }
}

void DivideFunction(Division& run, NodeId function) {
  std::vector<LoopParts> loops;
  StatementWalk walk(run.graph, CdfgGetAttr(run.graph, function, CfgFunc_STARTCFG));
  walk.WithLeaves();
  while (const NodeId node = walk.Next()) {
    if (walk.AtPart()) {
      const bool is_loop_part = CdfgIsLoopPart(CdfgGetKind(run.graph, node));
      if (is_loop_part && !walk.Leaving()) DivideLoopPart(run, loops.back(), node);
    } else if (CdfgGetKind(run.graph, node) == CFG_LOOP_BEGIN) {
      DivideLoop(run, loops, node, walk.Leaving());
    } else if (!walk.Leaving()) {
      DivideStatementAt(run, node);
    }
  }
}

}  // namespace

int DivideExpressions(CdfgGraph* graph) {
  Division run{graph};
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) {
    CdfgSetDeclScope(function);
    DivideFunction(run, function);
  }
  return 0;
}
