// What the files of the division expression pass share; nobody else includes this.
//
//   division_expression.cpp   the pass: statements, returns, ifs and cases
//   division_loops.cpp        loops, whose conditions are prepared in several places
//   division_lists.cpp        lists of statements, conditions
//   division_operands.cpp     everything below a statement: operands, casts, indexes, arguments
#pragma once

#include <cstdint>

#include "cdfg/deep.h"
#include "cdfg/edit.h"
#include "cdfg/graph.h"
#include "cdfg/runaway.h"
#include "cdfg/stack.h"
#include "constant/expr_type.h"

// The codes of x++ and x--, the only operators whose value is not what they assign.
constexpr bool IsPostStep(std::int32_t code) { return code == 61 || code == 63; }

// A chain of statements (DFG_MANAGE_OPERATION nodes) as it grows.
struct StatementList {
  NodeId head = 0;
  NodeId tail = 0;
};

// What dividing one statement list leads to besides the statements themselves.
enum class ListMode {
  Statements,  // calls and casts may stand alone
  Value,       // the last statement gives a value: a call or a cast is assigned to a temporary
};

// An operation whose operands are being divided, and the number of the one at hand.
struct OperandPlace {
  NodeId operation;
  std::uint32_t operand;
};

// The state of the pass.
struct Division {
  CdfgGraph* graph;
  // The statements made so far of the list or the condition being divided.
  StatementList pending = {};
  // A condition is divided whose root may stay as the condition itself.
  bool keeps_root = false;
  // A condition is divided whose root is x++ or x--.
  bool is_post_step = false;
  // The target of the temporary that holds the old value of x++ or x--; cleared by who uses it.
  NodeId saved_target = 0;
  DepthGuard depth = {};
  Stack<OperandPlace> operands = {};  // the innermost operation last
  DeclaredTypes declared = {};
};

inline ExprType TypeOfValue(Division& run, NodeId node) {
  return TypeByKnown(run.graph, node, run.declared);
}

// --- division_operands.cpp -----------------------------------------------------------------------

// Divides the operands of an operation and stores what replaces them.
Deep<> DivideOperands(Division& run, NodeId operation);
// Divides an expression within a statement. Answers the reference (or bare port) that replaces it,
// 0 when it stays.
Deep<NodeId> DivideSubExpression(Division& run, NodeId node);
// Divides the arguments of a call; the call stays.
Deep<> DivideArguments(Division& run, NodeId call);
// Divides the indexes of a port and of the members behind it; does nothing for other nodes.
Deep<> DivideIndexes(Division& run, NodeId port);
// Divides what an assignment assigns and what it is assigned to. `edge` is the (first) edge,
// `value` the node behind the run of edges.
Deep<> DivideRightSide(Division& run, NodeId edge, NodeId value);
Deep<> DivideLeftSide(Division& run, NodeId edge);
// The node behind an assignment edge and further blocking edges: the value of a = b = value.
NodeId ValueOf(const CdfgGraph* graph, NodeId edge);

// Whether the rewrite below stands within an expression: then x++ has to leave its old value.
enum class Within { Statement, Expression };
// Rewrites an operation that assigns (a op= b, ++a, a++ and so on) as an assignment of a plain
// operation. Answers its edge, which is in no statement yet; 0 for any other operation.
NodeId RewriteAssignment(Division& run, NodeId operation, Within within);

// The call at the end of a cast's chain when it allocates memory, else 0: its cast stays on it.
NodeId AllocationCallOf(const CdfgGraph* graph, NodeId cast);

// --- Builders ------------------------------------------------------------------------------------

// Appends a statement that is in no list.
void AppendPending(Division& run, NodeId statement);
// A statement that assigns `value` to a variable, with the value's position, appended. Answers the
// edge; its prev is the target.
NodeId AssignPending(Division& run, NodeId variable, NodeId value);
// A copy of a port as something to read: a DFG_EDGE_PRESEDE in front of the copy. 0 for 0.
NodeId CopyAsReference(CdfgGraph* graph, NodeId port);
// A copy of a port as something to assign. 0 for 0.
NodeId CopyAsTarget(CdfgGraph* graph, NodeId port);
// Takes the dereferences of an operation's result away from it and answers how many there were.
std::int32_t TakeDereferences(CdfgGraph* graph, NodeId operation);

// --- division_lists.cpp --------------------------------------------------------------------------

// Divides the statements of a list, leaving them and what they gave rise to in the pending list.
void DivideList(Division& run, NodeId first, ListMode mode);
// The same for a condition, with the flags that its root asks for.
void DivideCondition(Division& run, NodeId first);
// What tests the condition just divided: a new statement, or the last pending one taken out of the
// list; 0 when the condition stays as it is.
NodeId TakeCondition(Division& run);
// The same for the value of a return.
NodeId TakeReturnValue(Division& run);
// Makes the chain a new datapath with the position of `position`.
NodeId MakeDatapath(CdfgGraph* graph, NodeId position, NodeId statements);
// Links a datapath in front of a statement, under whatever the statement stood under.
void PutInFront(CdfgGraph* graph, NodeId statement, NodeId datapath);
// Puts what is pending into a new datapath in front of `statement`; nothing if nothing is pending.
void PlacePending(Division& run, NodeId statement);

// --- division_loops.cpp --------------------------------------------------------------------------

// What one loop has shown of itself while its parts are walked.
struct LoopParts {
  NodeId loop = 0;
  NodeId init = 0;
  NodeId body = 0;
  NodeId step = 0;
  NodeId preparation = 0;  // the statements that the condition needs in front of it
};

// Divides one part of the loop; its body is walked by the caller.
void DivideLoopPart(Division& run, LoopParts& loop, NodeId part);
// To be called after all parts: puts the condition's preparation wherever the condition is reached
// from.
void PlacePreparation(Division& run, const LoopParts& loop);
