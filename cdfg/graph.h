// The graph store: every node of one control/data-flow graph, reached by id.
//
// A graph is a flat set of numbered nodes in creation order (for a file: file order). A node has a
// kind, three links that hold other nodes' ids (prev, next, jump), a source position, and a list
// of typed attributes whose node references make up the tree and the edges of the program. Passes
// hold ids, never pointers, and ask the store for every field; so each operation here takes
// constant time, whatever the ids look like, and memory follows the number of nodes, not the
// largest id.
//
// Common to all operations: id 0 means "no node". A null graph, id 0 or an unknown id makes a
// getter answer 0, null or 0.0 and a setter answer -1, silently. A setter answers 0 on success, and
// -1 with the node unchanged when memory is short; the shortage is remembered (CdfgMemoryIsShort).
#pragma once

#include <cstddef>
#include <cstdint>

#include "cdfg/vocabulary.h"

using NodeId = std::uint32_t;

struct CdfgGraph;

// --- The graph -----------------------------------------------------------------------------------

// An empty graph, or null when memory is short.
CdfgGraph* CdfgNewGraph();
// Releases the graph and all it holds. Null is allowed.
void CdfgFreeGraph(CdfgGraph* graph);
// The first node in creation order whose kind is CFG_ROOT, 0 if there is none.
NodeId CdfgGetRoot(const CdfgGraph* graph);
// 1 once an operation of this graph has failed for lack of memory, else 0. The driver asks after
// each step, since a setter's -1 is looked at by nobody.
int CdfgMemoryIsShort(const CdfgGraph* graph);

// The nodes by their place in creation order, for listings and checks: how many places there are,
// and the id at a place (from 0). A freed node keeps its place and answers 0, and so does a node
// that was read with id 0.
std::size_t CdfgNodeCount(const CdfgGraph* graph);
NodeId CdfgNodeIdAt(const CdfgGraph* graph, std::size_t place);

// --- Making and releasing nodes ------------------------------------------------------------------

// Adds a node of `kind` and answers its id, which is the highest id plus one; all else in the node
// is empty. 0 when memory is short or the ids are used up.
NodeId CdfgAddNode(CdfgGraph* graph, std::uint32_t kind);
// Adds a node with a given id and kind 0, and makes that id the highest id, even when it is lower
// than before: ids count on from the node read last. When the id is taken, lookups find the new
// node from now on. Answers the id; 0 when memory is short (or the id is 0: such a node is kept
// and written, but never found).
NodeId CdfgAddNodeWithId(CdfgGraph* graph, NodeId id);
// Like CdfgAddNode, and copies file name, line and column from the node `position` unless that is
// 0. Never fails: without memory it prints one line and ends the run with status 255.
NodeId CdfgCreateNode(CdfgGraph* graph, std::uint32_t kind, NodeId position);

// Releases one node: its id is found no more and it is not written. References to it are left.
void CdfgFreeNode(CdfgGraph* graph, NodeId id);
// Releases a node and everything it owns through its node references, directly or not. Nodes that
// are gone already are skipped, so shared and circular references are harmless.
void CdfgFreeTree(CdfgGraph* graph, NodeId id);
// 1 when a node reference in `attribute` of a node of `kind` owns the node it names, 0 when it
// only points at it (a port at its declaration, a call at its typedef, ...).
int CdfgOwnsReference(std::uint32_t kind, std::uint32_t attribute);

// --- Fields of a node ----------------------------------------------------------------------------

// 1 when there is a node with this id, else 0.
int CdfgHasNode(const CdfgGraph* graph, NodeId id);
std::uint32_t CdfgGetKind(const CdfgGraph* graph, NodeId id);
int CdfgSetKind(CdfgGraph* graph, NodeId id, std::uint32_t kind);
NodeId CdfgGetPrev(const CdfgGraph* graph, NodeId id);
int CdfgSetPrev(CdfgGraph* graph, NodeId id, NodeId prev);
NodeId CdfgGetNext(const CdfgGraph* graph, NodeId id);
int CdfgSetNext(CdfgGraph* graph, NodeId id, NodeId next);
NodeId CdfgGetJump(const CdfgGraph* graph, NodeId id);
int CdfgSetJump(CdfgGraph* graph, NodeId id, NodeId jump);
// The source file of the construct, null if it has none; the store owns the string.
const char* CdfgGetFileName(const CdfgGraph* graph, NodeId id);
// Stores a copy; null takes the name away.
int CdfgSetFileName(CdfgGraph* graph, NodeId id, const char* name);
std::int32_t CdfgGetLine(const CdfgGraph* graph, NodeId id);
int CdfgSetLine(CdfgGraph* graph, NodeId id, std::int32_t line);
std::int32_t CdfgGetColumn(const CdfgGraph* graph, NodeId id);
int CdfgSetColumn(CdfgGraph* graph, NodeId id, std::int32_t column);
// A scratch pointer for passes: null at creation, never written to a file, not owned.
void* CdfgGetUserData(const CdfgGraph* graph, NodeId id);
int CdfgSetUserData(CdfgGraph* graph, NodeId id, void* data);

// --- Attributes ----------------------------------------------------------------------------------
//
// A node has at most one attribute of an id. Setting one that is there overwrites it in place,
// type included; setting a new one appends it, so the order of the list is the order in which the
// ids were first set, and that order is what the file shows.

std::int32_t CdfgGetAttrCount(const CdfgGraph* graph, NodeId id);
// The attribute id and the value type at a place of the list, counted from 1; 0 past the end.
std::uint32_t CdfgGetAttrIdAt(const CdfgGraph* graph, NodeId id, std::int32_t place);
std::uint32_t CdfgGetAttrTypeAt(const CdfgGraph* graph, NodeId id, std::int32_t place);

// The getters do not look at the value type: each reads its own width of the same eight bytes,
// which suits a caller who knows what it asked for. The one wall is between strings and the rest:
// a string read as a number is 0, a number read as a string is null.
NodeId CdfgGetAttr(const CdfgGraph* graph, NodeId id, std::uint32_t attribute);
std::int32_t CdfgGetAttrInt(const CdfgGraph* graph, NodeId id, std::uint32_t attribute);
// The store owns the string; it stays valid until the attribute is overwritten or the node freed.
const char* CdfgGetAttrStr(const CdfgGraph* graph, NodeId id, std::uint32_t attribute);
std::int8_t CdfgGetAttrChar(const CdfgGraph* graph, NodeId id, std::uint32_t attribute);
std::int64_t CdfgGetAttrInt64(const CdfgGraph* graph, NodeId id, std::uint32_t attribute);
double CdfgGetAttrDouble(const CdfgGraph* graph, NodeId id, std::uint32_t attribute);

int CdfgSetAttrChar(CdfgGraph* graph, NodeId id, std::uint32_t attribute, std::int8_t value);
int CdfgSetAttrInt(CdfgGraph* graph, NodeId id, std::uint32_t attribute, std::int32_t value);
int CdfgSetAttrInt64(CdfgGraph* graph, NodeId id, std::uint32_t attribute, std::int64_t value);
int CdfgSetAttrDouble(CdfgGraph* graph, NodeId id, std::uint32_t attribute, double value);
int CdfgSetAttrNode(CdfgGraph* graph, NodeId id, std::uint32_t attribute, NodeId value);
// Stores a copy of `value` (or null). -1 and no change when the attribute holds another type. A
// string attribute that is null stays null, whatever is given: kept, callers rely on it.
int CdfgSetAttrStr(CdfgGraph* graph, NodeId id, std::uint32_t attribute, const char* value);
