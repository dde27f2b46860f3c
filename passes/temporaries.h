// Temporary variables: their names and declarations.
//
// Each maker declares a new variable of the given type, with the source position of the node
// `position`, at the head of the declarations of the current scope (CdfgSetDeclScope), and answers
// the CFG_DECLARE. Its name is made of the maker's prefix and a counter of its own that begins at
// 0, runs through the whole program and passes over names that are taken; it is added to the name
// set.
#pragma once

#include "cdfg/edit.h"
#include "cdfg/graph.h"

// __fpfix_tmp_000000, or the prefix of the command line and the plain number.
NodeId MakeTempVar(CdfgGraph* graph, NodeId position, const ExprType& type);
// __fpfix_cast_000000. A prefix for these would replace it like that of MakeTempVar.
NodeId MakeCastVar(CdfgGraph* graph, NodeId position, const ExprType& type);
// __fpfix_div_000000.
NodeId MakeDivVar(CdfgGraph* graph, NodeId position, const ExprType& type);
// __fpfix_mul_000000.
NodeId MakeMulVar(CdfgGraph* graph, NodeId position, const ExprType& type);
// __fpfix_cnst_000000. No pass makes these; the chain reserves the name.
NodeId MakeConstVar(CdfgGraph* graph, NodeId position, const ExprType& type);

// The prefixes that the command line gives the names of temporary and cast variables; null, the
// default: none. The string is not copied.
void SetTempPrefix(const char* prefix);
void SetCastPrefix(const char* prefix);
const char* GetCastPrefix();

// Sets all counters back to 0 and forgets the prefixes, as at the start of the program.
void ResetTemporaries();

// --- Building with temporaries -------------------------------------------------------------------

// A DFG_OUTPUT_VAR that names the variable, with the position of `position`.
NodeId MakeTarget(CdfgGraph* graph, NodeId position, NodeId variable);
// A DFG_INPUT_VAR that names the variable, with the position of `position`.
NodeId MakeInput(CdfgGraph* graph, NodeId position, NodeId variable);
// A reference to the variable, with the variable's position: a DFG_EDGE_PRESEDE in front of a
// DFG_INPUT_VAR, of which the edge is answered.
NodeId MakeReference(CdfgGraph* graph, NodeId variable);
// A DFG_EDGE_PRESEDE in front of `node`, with the position of `position`.
NodeId MakeEdgeTo(CdfgGraph* graph, NodeId position, NodeId node);
// A new statement with this root, with the root's position.
NodeId MakeStatement(CdfgGraph* graph, NodeId root);
// The assignment of `value` to a variable, with the position of `position`, in no statement yet.
// Answers the edge; its prev is the target.
NodeId MakeAssignment(CdfgGraph* graph, NodeId position, NodeId variable, NodeId value);
