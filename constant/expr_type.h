// The C type of an expression, read off declarations, function headers, casts and literal texts.
//
// Nothing is computed and the graph is not changed. Each function fills *type (ExprType, see
// cdfg/edit.h), starting from int, signed, no pointer, no structure, and answers the value type it
// stored. What is missing in the graph reads as 0.
#pragma once

#include <array>
#include <cstdint>

#include "cdfg/edit.h"
#include "cdfg/graph.h"

// Any node that may stand for a value: an operation, a reference, a variable, a constant, a call or
// a cast. Any other node is an int.
std::int32_t TypeOfExpression(const CdfgGraph* graph, NodeId node, ExprType* type);
// A DFG_OPERATION.
std::int32_t TypeOfOperation(const CdfgGraph* graph, NodeId operation, ExprType* type);
// A DFG_INPUT_VAR or DFG_OUTPUT_VAR: the type of its last member, less the levels of indirection
// that the reference takes away.
std::int32_t TypeOfVariable(const CdfgGraph* graph, NodeId variable, ExprType* type);
// A DFG_FUNC_CALL: what the function returns.
std::int32_t TypeOfCall(const CdfgGraph* graph, NodeId call, ExprType* type);

// What has been read off declarations lately, for a pass that asks for the types of many
// expressions and leaves declarations as they are once they are made.
struct DeclaredTypes {
  struct Entry {
    NodeId declaration = 0;  // 0: empty
    std::int32_t value_type = 0;
    std::int32_t signedness = 0;
    std::int64_t indirection = 0;
  };
  std::array<Entry, 8> entries = {};  // by the lowest bits of the declaration
  // A reference whose type is known, for as long as nothing is changed behind it; 0: none.
  NodeId reference = 0;
  ExprType reference_type = {};
};

// TypeOfExpression by what is known.
ExprType TypeByKnown(const CdfgGraph* graph, NodeId node, DeclaredTypes& known);
