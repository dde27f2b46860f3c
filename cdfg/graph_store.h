// The inside of the graph store: how nodes, attributes and strings lie in memory. Only the store
// itself, the file reader and writer and the walks, which read ahead, include this; everybody else
// uses cdfg/graph.h.
//
//   nodes       chunks of 16384 records, in creation order; a node's place in that order never
//               changes, and a freed node keeps its place
//   ids         while the ids of a graph are 1, 2, 3, ... a node's place is its id - 1 and no
//               index is needed; nodes that break the row are found through a hash table of ids
//   attributes  one contiguous run per node, taken from a pool; a node with many attributes also
//               has them in a hash table, so that finding one never means searching a long run
//   strings     in an arena, each after its length; file names are kept once each and numbered
//   user data   an array per chunk of nodes, made when the first pass asks for it
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "cdfg/graph.h"
#include "cdfg/growable.h"

struct Attribute {
  std::uint32_t id;
  std::uint32_t type;  // CdfgValueType
  std::uint64_t bits;  // the value's eight bytes, lowest first; a pointer for a string
};

struct NodeRecord {
  NodeId id;
  std::uint32_t kind;
  NodeId prev;
  NodeId next;
  NodeId jump;
  std::uint32_t attribute_count;
  Attribute* attributes;
  std::uint32_t attribute_capacity;
  std::uint32_t file_name;  // number of the name, kNoFileName or kFreedNode
  std::int32_t line;
  std::int32_t column;
};

inline constexpr std::uint32_t kNoFileName = 0;
inline constexpr std::uint32_t kFreedNode = 0xFFFFFFFFU;
inline constexpr std::uint32_t kNoPlace = 0xFFFFFFFFU;
inline constexpr std::size_t kChunkShift = 14;
inline constexpr std::size_t kChunkSize = std::size_t{1} << kChunkShift;

// Runs of attributes, by capacity; released runs are used again for the same capacity.
struct AttributePool {
  static constexpr std::size_t kLargestRun = 64;

  Attribute* free_runs[kLargestRun + 1] = {};  // linked through their first record's bits
  Attribute* chunk = nullptr;
  std::size_t chunk_left = 0;
  Growable<void*> blocks;
};

// Strings, each stored as its length (four bytes) and its bytes with a terminating zero.
struct StringArena {
  char* chunk = nullptr;
  std::size_t chunk_left = 0;
  Growable<void*> blocks;
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
  Growable<NodeRecord*> chunks;
  Growable<void*> node_blocks;  // what the chunks lie in
  std::size_t node_count = 0;
  NodeId highest_id = 0;

  std::size_t row_length = 0;  // the first nodes, while their ids are 1, 2, 3, ...
  bool row_shadowed = false;   // a later node has the id of one of them
  IdTable places;

  AttributePool attributes;
  WideSlot* wide_slots = nullptr;
  std::size_t wide_slot_count = 0;
  std::size_t wide_used = 0;

  StringArena strings;
  Growable<const char*> file_names;  // by number; number 0 is "no name"
  std::uint32_t last_file_name = 0;  // the number asked for last: most nodes have their neighbour's
  PlaceTable file_numbers;

  Growable<void**> user_data;   // by chunk; null where no node has any
  Growable<void*> user_blocks;  // what they lie in

  bool memory_short = false;
};

inline NodeRecord& NodeAt(const CdfgGraph& graph, std::size_t place) {
  return graph.chunks[place >> kChunkShift][place & (kChunkSize - 1)];
}

inline bool IsFreed(const NodeRecord& node) { return node.file_name == kFreedNode; }

// Asks for the memory that a walk at node `id` will want soon: the records of nodes some way behind
// it in the file, and the attributes of nearer ones. Nodes lie in the order of the source text, and
// most walks go that way too; but they leap over what they skip, by distances that no processor
// guesses. Without this a walk over a large design waits for memory at every statement. (Always
// inline: an ordinary function that only asks counts as doing nothing, and its calls are dropped.)
[[gnu::always_inline]] inline void ReadAhead(const CdfgGraph& graph, NodeId id) {
  constexpr std::size_t kRecordsAhead = 48;
  constexpr std::size_t kAttributesAhead = 24;
  constexpr std::uintptr_t kLine = 64;
  constexpr std::uintptr_t kRecordLines = 8;
  constexpr std::uintptr_t kAttributeLines = 4;
  const std::size_t place = id;
  if (place + kRecordsAhead >= graph.row_length) return;
  const auto records = reinterpret_cast<std::uintptr_t>(&NodeAt(graph, place + kRecordsAhead));
#pragma GCC unroll 8
  for (std::uintptr_t i = 0; i < kRecordLines; ++i) {
    __builtin_prefetch(reinterpret_cast<const void*>(records + i * kLine));
  }
  const auto attributes =
      reinterpret_cast<std::uintptr_t>(NodeAt(graph, place + kAttributesAhead).attributes);
#pragma GCC unroll 4
  for (std::uintptr_t i = 0; i < kAttributeLines; ++i) {
    __builtin_prefetch(reinterpret_cast<const void*>(attributes + i * kLine));
  }
}

// The node that lookups of `id` find, null for none.
NodeRecord* FindNode(const CdfgGraph* graph, NodeId id);
// Appends an empty node with this id and makes it the highest id. False when memory is short.
bool AppendNode(CdfgGraph& graph, NodeId id);
// Makes room for `count` attributes in a node that has none yet.
void ReserveAttributes(CdfgGraph& graph, NodeRecord& node, std::uint32_t count);

// The setters of cdfg/graph.h for the node at a place. `bits` holds the value in its lowest `width`
// bytes; the other bytes of an attribute that is there keep what they hold.
int SetAttributeBits(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                     CdfgValueType type, std::uint64_t bits, unsigned width);
int SetAttributeString(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                       const char* text, std::size_t length);
int SetNodeFileName(CdfgGraph& graph, NodeRecord& node, const char* name, std::size_t length);

// The string of an attribute of type ATTR_STRING (null allowed) and the length of a stored string.
inline const char* StringOf(const Attribute& attribute) {
  return reinterpret_cast<const char*>(static_cast<std::uintptr_t>(attribute.bits));
}
inline std::size_t StoredLength(const char* text) {
  std::uint32_t length;
  std::memcpy(&length, text - sizeof length, sizeof length);
  return length;
}
// The node's file name, null if it has none.
inline const char* FileNameOf(const CdfgGraph& graph, const NodeRecord& node) {
  return node.file_name == kNoFileName ? nullptr : graph.file_names[node.file_name];
}
