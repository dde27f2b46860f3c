// The constructs of a C program as nodes, in the shapes that the front end of the chain writes.
//
// The benchmarks' designs are put together from these: declarations, expressions and statements,
// each with its owner, its links, its file name and its position. Nodes are made in the order of
// the source text, an owner in front of what it owns, like the front end does it.
//
//   sum = sum + i;   ->   Assign(draft, body, Variable(sum),
//                                Operation(CALC_Add, Variable(sum), Variable(i)));
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cdfg/graph.h"

namespace bench {

// Which ids the nodes of a graph get, in the order they are made.
enum class IdPattern : std::uint8_t {
  Dense,        // 1, 2, 3, ... as the front end numbers them
  Gaps,         // 1, 8, 15, ...
  Random,       // any below 2^31, each once
  Descending,   // from 2,900,000,000 downwards
  PowersOfTwo,  // multiples of 256, which differ in no low bit
  Duplicates,   // each id for two nodes
};

// The id of the node made as number `place`, counted from 0. Distinct for up to 12,000,000 places
// (except for Duplicates), and below kLastId.
NodeId IdAt(IdPattern pattern, std::uint32_t place);

// The id that a design with ids other than dense ones gives its last node, so that nodes made later
// are numbered from there.
inline constexpr NodeId kLastId = 3'000'000'000;

// --- What is being written -----------------------------------------------------------------------

// A design in the making, and where in its source the next construct stands.
struct Draft {
  CdfgGraph* graph;
  IdPattern ids = IdPattern::Dense;
  std::string file;
  std::int32_t line = 0;
  std::int32_t column = 1;
};

NodeId AddNode(Draft& draft, std::uint32_t kind);

// A chain that an owner holds by one of its attributes.
struct Chain {
  NodeId owner;
  std::uint32_t attribute;
  NodeId last = 0;
};

void Append(Draft& draft, Chain& chain, NodeId node);

// --- Expressions ---------------------------------------------------------------------------------

// An expression, before it becomes nodes.
struct Term {
  enum class Shape : std::uint8_t { Port, Constant, Operation, Cast, Call };
  Shape shape;
  NodeId target = 0;          // the declaration of a port, the function of a call
  NodeId member = 0;          // for a port of a structure: the declaration of its member
  std::int32_t code = 0;      // operator, value type of a cast, whole value of a constant
  std::string text;           // of a constant; the directive of a call
  std::vector<Term> parts{};  // index, operands or arguments
};

Term Variable(NodeId declaration);
Term Element(NodeId array, Term index);
Term Member(NodeId structure, NodeId member);
Term Number(std::int32_t value);
// `text` as spelt in the source, `whole` its value without the part behind the point.
Term Real(const char* text, std::int32_t whole);
Term Operation(std::uint32_t code, Term left);
Term Operation(std::uint32_t code, Term left, Term right);
Term Cast(std::int32_t value_type, Term operand);
Term Call(NodeId function, std::vector<Term> arguments, const char* directive = "");

// Makes the nodes of an expression and answers its first one, whose prev is `owner`.
NodeId AddExpression(Draft& draft, const Term& term, NodeId owner);
// An int expression of `depth` operations, each an operand of the one before, left and right in
// turn, over the variable.
NodeId AddNestedOperations(Draft& draft, NodeId variable, std::uint32_t depth, NodeId owner);

// --- Declarations --------------------------------------------------------------------------------

struct Type {
  std::int32_t value_type = DECL_VALTYPE_INT;
  std::int32_t length = -1;  // of an array; 0 for a parameter declared []
  NodeId structure = 0;      // the structure that defines it
};

NodeId Declare(Draft& draft, Chain& list, const std::string& name, const Type& type = {});
void Initialise(Draft& draft, NodeId declaration, const Term& value);
// Gives the array an initialiser of `length` numbers.
void InitialiseTable(Draft& draft, NodeId declaration, std::int32_t length);
// A directive such as #pragma module.
NodeId AddDirective(Draft& draft, const std::string& text, NodeId owner);

// struct pair { int low; int high; };
NodeId DefinePair(Draft& draft, Chain& elements);
// The member at a place (from 0) of a variable declared with a structure.
NodeId MemberOf(const Draft& draft, NodeId declaration, int place);
// A group of declarations among elements or statements: the chain to declare in.
Chain OpenDeclarations(Draft& draft, Chain& chain);

struct Function {
  NodeId node;
  Chain arguments;
  Chain declarations;
  Chain body;
};
Function OpenFunction(Draft& draft, Chain& elements, const std::string& name,
                      std::int32_t value_type);

// --- Statements ----------------------------------------------------------------------------------
//
// Each appends to the chain. What is opened is closed by the function named Close.

void Evaluate(Draft& draft, Chain& body, const Term& expression);
void Assign(Draft& draft, Chain& body, const Term& target, const Term& value);
// An empty assignment `target = ;`: answers the edge, whose next is still to be set.
NodeId OpenAssignment(Draft& draft, Chain& body, const Term& target);
void Return(Draft& draft, Chain& body, const Term& value);
void Break(Draft& draft, Chain& body);
// A label, and the jump to it.
NodeId Label(Draft& draft, Chain& body, const std::string& name);
void Goto(Draft& draft, Chain& body, NodeId label);

// A statement with an inside: the node that begins it and the kind of the one that ends it.
struct Open {
  NodeId begin;
  std::uint32_t end_kind;
  Chain parts{};
};
Open OpenBlock(Draft& draft, Chain& body);
Open OpenIf(Draft& draft, Chain& body, const Term& condition);
Open OpenSwitch(Draft& draft, Chain& body, const Term& selector);
Open OpenWhile(Draft& draft, Chain& body, const Term& condition);
// for (variable = 0; variable < limit; ...): CloseFor writes the step.
Open OpenFor(Draft& draft, Chain& body, NodeId variable, const Term& limit);
void CloseFor(Draft& draft, Chain& body, Open& loop, NodeId variable);
void Close(Draft& draft, Chain& body, const Open& open);

// The statements of a branch (CFG_IF_THEN, CFG_IF_ELSE), of a case (the default one without label)
// and of a loop.
Chain OpenBranch(Draft& draft, Open& statement, std::uint32_t kind);
Chain OpenCase(Draft& draft, Open& statement, const Term* label);
Chain OpenLoopBody(Draft& draft, Open& loop);

}  // namespace bench
