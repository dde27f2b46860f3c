// The inside of the graph store: how nodes, attributes and strings lie in memory. Only the store
// itself, the file reader and writer, the listing, the walks and cdfg/read_ahead.h include this;
// everybody else uses cdfg/graph.h.
//
//   nodes       chunks of 16384 records of 32 bytes, in creation order; a node's place in that
//               order never changes, and a freed node keeps its place
//   rest        what walks do not ask for, beside the records, so that these stay small
//   ids         while the ids of a graph are 1, 2, 3, ... a node's id is its place + 1 and nothing
//               is kept; nodes that break the row have their ids in an array beside the records
//               and are found through a hash table
//   attributes  eight bytes each, three of them in the node's record; a node with more has all in
//               one contiguous run taken from a pool, and a node with many also has them in a hash
//               table, so that finding one never means searching a long run
//   strings     in an arena, each after its length; so are the few values that do not fit into an
//               attribute; file names are kept once each and numbered
//   user data   an array beside the records, made when the first pass asks for it
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cdfg/graph.h"
#include "cdfg/growable.h"

// --- Attributes and nodes ------------------------------------------------------------------------

// Where something lies in one of the graph's own memories: half the size of a pointer.
using Address = std::uint32_t;

// How an attribute holds its value.
enum class Form : std::uint8_t {
  Short,  // in `value`: the eight bytes, whose upper four are zero, or the address of a string
  Long,   // `value` is the address of a LongValue
  Freed,  // in the first attribute of an empty node: the node is gone
};

struct Attribute {
  std::uint16_t id;   // kFarId: the id is in the LongValue
  std::uint8_t type;  // CdfgValueType, kNoAttribute or kRun
  Form form;
  std::uint32_t value;
};

inline constexpr std::uint16_t kFarId = 0xFFFF;
inline constexpr std::uint8_t kNoAttribute = 0;
inline constexpr std::uint8_t kRun = 0xFF;
inline constexpr Attribute kEmptyAttribute = {kFarId, kNoAttribute, Form::Short, 0};

// What does not fit into an attribute: large ids and large numbers, both rare.
struct LongValue {
  std::uint32_t id;
  std::uint32_t low;
  std::uint32_t high;
};

// In the second attribute of a node whose first one is of type kRun and says where the run is.
struct RunSize {
  std::uint32_t count;
  std::uint32_t capacity;
};
static_assert(sizeof(RunSize) == sizeof(Attribute));

inline constexpr std::uint32_t kOwnAttributes = 3;

struct NodeRecord {
  std::uint32_t kind;
  NodeId next;
  Attribute own[kOwnAttributes];
};
static_assert(sizeof(NodeRecord) == 32);
inline constexpr NodeRecord kEmptyNode = {
    0, 0, {kEmptyAttribute, kEmptyAttribute, kEmptyAttribute}};

struct Position {
  std::uint32_t file_name;  // its number, or kNoFileName
  std::int32_t line;
  std::int32_t column;
};

inline constexpr std::uint32_t kNoFileName = 0;

struct NodeRest {
  NodeId prev;
  NodeId jump;
  Position position;
};
inline constexpr NodeRest kEmptyRest = {0, 0, {kNoFileName, 0, 0}};

inline constexpr std::uint32_t kNoPlace = 0xFFFFFFFFU;
inline constexpr std::size_t kChunkShift = 14;
inline constexpr std::size_t kChunkSize = std::size_t{1} << kChunkShift;

// --- Memories ------------------------------------------------------------------------------------

// An array in chunks that never move. Some chunks may be missing (null).
template <class Element>
struct ChunkedArray {
  Growable<Element*> chunks;
  Growable<void*> blocks;  // what the chunks lie in
};

// Runs of attributes, by capacity; released runs are used again for the same capacity. An address
// is a number of attributes.
struct AttributePool {
  static constexpr std::size_t kChunkShift = 16;
  static constexpr std::size_t kLargestReleased = 64;

  ChunkedArray<Attribute> memory;
  Address next = 0;
  std::size_t left = 0;
  Address free_runs[kLargestReleased + 1] = {};  // linked through their first attribute; 0: none
};

// Strings, each stored as its length (four bytes) and its bytes with a terminating zero, and long
// values. An address is a number of words of four bytes.
struct Arena {
  static constexpr std::size_t kBlockShift = 19;

  Growable<char*> blocks;
  Address next = 0;
  std::size_t left = 0;  // words
};

// A hash table of numbers whose keys the owner can look up from the numbers: open addressing,
// grown at three fifths full, never shrunk.
struct PlaceTable {
  std::uint32_t* slots = nullptr;  // kNoPlace: empty
  std::size_t slot_count = 0;      // a power of two
  std::size_t used = 0;
};

// The same for nodes, with the ids in it, so that no node is looked at but the one that is wanted.
struct IdSlot {
  NodeId id;  // 0: empty
  std::uint32_t place;
};

struct IdTable {
  IdSlot* slots = nullptr;
  std::size_t slot_count = 0;  // a power of two
  std::size_t used = 0;
};

// Attributes of nodes that have many: the node's place and the attribute's index in its run.
struct WideSlot {
  std::uint32_t place;  // kNoPlace: empty
  std::uint32_t index;
};

struct CdfgGraph {
  ChunkedArray<NodeRecord> nodes;
  ChunkedArray<NodeRest> rest;
  std::size_t node_count = 0;
  std::size_t node_room = 0;  // how many nodes there is memory for
  NodeId highest_id = 0;

  std::uint32_t row_length = 0;     // the first nodes, while their ids are 1, 2, 3, ...
  std::uint32_t direct_length = 0;  // the same, or 0 once a later node has the id of one of them
  ChunkedArray<NodeId> ids;         // of nodes outside the row
  IdTable places;

  AttributePool attributes;
  WideSlot* wide_slots = nullptr;
  std::size_t wide_slot_count = 0;
  std::size_t wide_used = 0;

  Arena arena;
  Growable<const char*> file_names;  // by number; number 0 is "no name"
  std::uint32_t last_file_name = 0;  // the number asked for last: most nodes have their neighbour's
  PlaceTable file_numbers;

  ChunkedArray<void*> user_data;

  bool memory_short = false;
};

template <class Element>
Element& ElementAt(const ChunkedArray<Element>& array, std::size_t place) {
  return array.chunks[place >> kChunkShift][place & (kChunkSize - 1)];
}

inline NodeRecord& NodeAt(const CdfgGraph& graph, std::size_t place) {
  return ElementAt(graph.nodes, place);
}
inline NodeRest& RestAt(const CdfgGraph& graph, std::size_t place) {
  return ElementAt(graph.rest, place);
}
// The id of a node that may be freed.
inline NodeId IdAt(const CdfgGraph& graph, std::size_t place) {
  return place < graph.row_length ? static_cast<NodeId>(place + 1) : ElementAt(graph.ids, place);
}

inline bool IsFreed(const NodeRecord& node) { return node.own[0].form == Form::Freed; }

// The place of the node that lookups of `id` find, kNoPlace for none.
std::uint32_t FindPlace(const CdfgGraph* graph, NodeId id);
// Appends an empty node with this id and makes it the highest id. False when memory is short.
bool AppendNode(CdfgGraph& graph, NodeId id);
// Makes room for `count` attributes in a node that has none yet.
void ReserveAttributes(CdfgGraph& graph, std::size_t place, std::uint32_t count);

// Appends an attribute whose id the node does not have yet; -1 when memory is short.
int AddAttributeBits(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                     CdfgValueType type, std::uint64_t bits);
int AddAttributeString(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                       const char* text, std::size_t length);

// The setters of cdfg/graph.h for the node at a place. `bits` holds the value in its lowest `width`
// bytes; the other bytes of an attribute that is there keep what they hold.
int SetAttributeBits(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                     CdfgValueType type, std::uint64_t bits, unsigned width);
int SetAttributeString(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                       const char* text, std::size_t length);
int SetNodeFileName(CdfgGraph& graph, std::size_t place, const char* name, std::size_t length);

// --- Reading attributes --------------------------------------------------------------------------

inline bool HasRun(const NodeRecord& node) { return node.own[0].type == kRun; }
inline RunSize SizeOfRun(const NodeRecord& node) { return std::bit_cast<RunSize>(node.own[1]); }

inline std::uint32_t AttributeCount(const NodeRecord& node) {
  if (HasRun(node)) return SizeOfRun(node).count;
  std::uint32_t count = 0;
  while (count < kOwnAttributes && node.own[count].type != kNoAttribute) ++count;
  return count;
}

inline Attribute* RunAt(const AttributePool& pool, Address run) {
  constexpr Address kInChunk = (Address{1} << AttributePool::kChunkShift) - 1;
  return pool.memory.chunks[run >> AttributePool::kChunkShift] + (run & kInChunk);
}
// The node's attributes side by side.
inline const Attribute* AttributesOf(const CdfgGraph& graph, const NodeRecord& node) {
  return HasRun(node) ? RunAt(graph.attributes, node.own[0].value) : node.own;
}

inline char* BytesAt(const Arena& arena, Address address) {
  constexpr Address kInBlock = (Address{1} << Arena::kBlockShift) - 1;
  constexpr std::size_t kWord = 4;
  return arena.blocks[address >> Arena::kBlockShift] + (address & kInBlock) * kWord;
}
// Not inline: the getters are to stay small.
LongValue LongValueAt(const CdfgGraph& graph, Address address);

inline std::uint32_t IdOf(const CdfgGraph& graph, const Attribute& attribute) {
  if (attribute.form == Form::Short) return attribute.id;
  return LongValueAt(graph, attribute.value).id;
}
// The value's eight bytes, lowest first; of a string, its address.
inline std::uint64_t BitsOf(const CdfgGraph& graph, const Attribute& attribute) {
  if (attribute.form == Form::Short) return attribute.value;
  const LongValue value = LongValueAt(graph, attribute.value);
  return static_cast<std::uint64_t>(value.high) << 32 | value.low;
}
// The string of an attribute of type ATTR_STRING (null allowed).
inline const char* StringOf(const CdfgGraph& graph, const Attribute& attribute) {
  const auto address = static_cast<Address>(BitsOf(graph, attribute));
  return address == 0 ? nullptr : BytesAt(graph.arena, address);
}
// The length of a stored string.
inline std::size_t StoredLength(const char* text) {
  std::uint32_t length;
  std::memcpy(&length, text - sizeof length, sizeof length);
  return length;
}
// The file name of a node, null if it has none.
inline const char* FileNameOf(const CdfgGraph& graph, const Position& position) {
  return position.file_name == kNoFileName ? nullptr : graph.file_names[position.file_name];
}
