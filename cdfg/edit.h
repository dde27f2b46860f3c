// Helpers above the store that every pass shares: chains, bodies, keys, and new declarations.
//
// A statement chain is linked by next and prev; its first node's prev names the owner, whose body
// attribute names the first node. A reference to a structure member is a chain of ports linked by
// DfgPort_STRSON, with DfgPort_STRPARENT back.
#pragma once

#include "cdfg/graph.h"

// --- Chains --------------------------------------------------------------------------------------

// The last node along next, `id` itself when nothing follows it; 0 for 0.
NodeId CdfgLastInChain(const CdfgGraph* graph, NodeId id);
// The first node of the statement that `id` stands in: walks prev until a node whose prev is a
// DFG_MANAGE_OPERATION or that has no prev, and answers it; 0 for 0.
NodeId CdfgPrevUntilOperation(const CdfgGraph* graph, NodeId id);
// Links `next` behind `node`, both ways. A next of 0 ends the chain.
void CdfgLink(CdfgGraph* graph, NodeId node, NodeId next);
// Links `added` behind the last node of the chain of `first` (next and prev). Walks the chain to
// its end, so whoever appends many keeps the last node and appends to that. Answers 0; -1, with
// nothing changed, when an argument is 0 or a node's next is itself.
int CdfgAppend(CdfgGraph* graph, NodeId first, NodeId added);
// Makes `child` the body of `parent`: its body attribute where the kind has one, else its next;
// and `parent` the prev of `child` when that is not 0. A parent of 0 does nothing.
void CdfgAttachBody(CdfgGraph* graph, NodeId parent, NodeId child);
// The first node of the next chain whose attribute 1, read as an integer, is `key`; its attribute 2
// goes to *value. 0, and 0 in *value, when there is none.
NodeId CdfgFindByAttr1(const CdfgGraph* graph, NodeId first, std::int32_t key, std::int32_t* value);
// Gives every node of `old_kind` in the member chain of `first` the kind `new_kind`.
void CdfgRekindChain(CdfgGraph* graph, NodeId first, std::uint32_t old_kind,
                     std::uint32_t new_kind);

// --- New declarations ----------------------------------------------------------------------------

// The C type of an expression, and what a new variable is declared with.
struct ExprType {
  std::int32_t value_type = 4;     // DECL_VALTYPE_*, 3 for short, 11 for long double
  std::int32_t signedness = 1;     // DECL_SIGNED or DECL_UNSIGNED
  std::int32_t pointer_count = 0;  // levels of indirection still there
  NodeId struct_origin = 0;        // for a structure: the node that defines it
  NodeId struct_members = 0;       // for a structure: the structure node with its members
  NodeId typedef_link = 0;         // for a structure: its typedef
};

// Sets the node (a function) that new temporary variables are declared in; 0 for none.
void CdfgSetDeclScope(NodeId scope);

// Makes the declaration of a temporary variable, with the source position of `position`, and puts
// it at the head of the declarations of the scope set, if one is. A structure type gets a copy of
// the structure node of its own. Answers the declaration.
NodeId CdfgDeclareVariable(CdfgGraph* graph, NodeId position, const ExprType& type,
                           const char* name);

// --- Text ----------------------------------------------------------------------------------------

// Lowercases the string in place (ASCII letters) and answers a pointer to its terminating zero.
char* StrToLower(char* text);
