#include "cdfg/graph.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <vector>

#include "cdfg/graph_store.h"
#include "cdfg/hash.h"
#include "cdfg/kinds.h"
#include "cdfg/large_pages.h"
#include "cdfg/memory.h"

namespace {

constexpr std::size_t kAttributeChunk = 65536;    // records
constexpr std::size_t kStringChunk = 256 * 1024;  // bytes
// Behind so many chunks of usual size come large ones.
constexpr std::size_t kUsualNodeChunks = 8;
constexpr std::size_t kUsualAttributeChunks = 8;
constexpr std::size_t kUsualStringChunks = 8;
constexpr std::size_t kChunksInLargeBlock = 8;
constexpr std::size_t kChunksInUserBlock = 16;
static_assert(kChunksInUserBlock * kChunkSize * sizeof(void*) % kLargePage == 0);
static_assert(kChunksInLargeBlock * kChunkSize * sizeof(NodeRecord) % kLargePage == 0);
constexpr std::size_t kLargeAttributeChunk = 2 * kLargePage / sizeof(Attribute);
constexpr std::size_t kLargestPooledString = 32 * 1024;
constexpr std::uint32_t kWide = 32;  // from this many attributes on, a node's are hashed

// Remembers that memory was short; what a setter answers then.
int Short(CdfgGraph& graph) {
  graph.memory_short = true;
  return -1;
}

// --- Hash tables ---------------------------------------------------------------------------------

bool IsCrowded(std::size_t used, std::size_t slot_count) { return used * 5 >= slot_count * 3; }

// The slot that holds the number for which `matches` answers true, or the empty slot where it
// belongs. The table is never full.
template <class Matches>
std::size_t ProbeSlot(const PlaceTable& table, std::size_t start, Matches matches) {
  const std::size_t mask = table.slot_count - 1;
  std::size_t slot = start & mask;
  while (table.slots[slot] != kNoPlace && !matches(table.slots[slot])) slot = (slot + 1) & mask;
  return slot;
}

// Doubles the table when it is crowded; `start_of` answers where a number's probing starts.
template <class StartOf>
bool MakeRoom(PlaceTable& table, StartOf start_of) {
  if (table.slots != nullptr && !IsCrowded(table.used + 1, table.slot_count)) return true;
  PlaceTable larger;
  larger.slot_count = table.slots == nullptr ? 64 : table.slot_count * 2;
  larger.used = table.used;
  larger.slots =
      static_cast<std::uint32_t*>(std::malloc(larger.slot_count * sizeof(std::uint32_t)));
  if (larger.slots == nullptr) return false;
  std::fill_n(larger.slots, larger.slot_count, kNoPlace);
  for (std::size_t i = 0; table.slots != nullptr && i < table.slot_count; ++i) {
    const std::uint32_t number = table.slots[i];
    if (number == kNoPlace) continue;
    larger.slots[ProbeSlot(larger, start_of(number), [](std::uint32_t) { return false; })] = number;
  }
  std::free(table.slots);
  table = larger;
  return true;
}

// --- Finding nodes -------------------------------------------------------------------------------

// The slot that holds the id, or the empty slot where it belongs. The table is never full.
IdSlot& ProbeId(const IdTable& table, NodeId id) {
  const std::size_t mask = table.slot_count - 1;
  std::size_t slot = IdHash{}(id)&mask;
  while (table.slots[slot].id != 0 && table.slots[slot].id != id) slot = (slot + 1) & mask;
  return table.slots[slot];
}

// Doubles the table when it is crowded.
bool MakeRoomForId(IdTable& table) {
  if (table.slots != nullptr && !IsCrowded(table.used + 1, table.slot_count)) return true;
  IdTable larger;
  larger.slot_count = table.slots == nullptr ? 64 : table.slot_count * 2;
  larger.used = table.used;
  larger.slots = static_cast<IdSlot*>(std::calloc(larger.slot_count, sizeof(IdSlot)));
  if (larger.slots == nullptr) return false;
  for (std::size_t i = 0; table.slots != nullptr && i < table.slot_count; ++i) {
    if (table.slots[i].id != 0) ProbeId(larger, table.slots[i].id) = table.slots[i];
  }
  std::free(table.slots);
  table = larger;
  return true;
}

// What a lookup does when the row does not settle it.
[[gnu::noinline]] std::uint32_t FindPlaceOutsideRow(const CdfgGraph& graph, NodeId id) {
  if (id == 0) return kNoPlace;
  if (graph.places.slots != nullptr) {
    const IdSlot& slot = ProbeId(graph.places, id);
    if (slot.id != 0) return slot.place;
  }
  return id <= graph.row_length ? id - 1 : kNoPlace;
}

// Every getter and setter begins here, nearly always with an id of the row.
inline std::uint32_t FindLivePlace(const CdfgGraph* graph, NodeId id) {
  if (graph == nullptr) return kNoPlace;
  std::uint32_t place = id - 1;
  if (place >= graph->row_length || graph->row_shadowed) [[unlikely]] {
    place = FindPlaceOutsideRow(*graph, id);
    if (place == kNoPlace) return kNoPlace;
  }
  return IsFreed(NodeAt(*graph, place)) ? kNoPlace : place;
}

// Makes the node at `place` the one that lookups of its id find.
bool EnterPlace(CdfgGraph& graph, NodeId id, std::uint32_t place) {
  if (id == 0) return true;
  if (graph.row_length == place && id == place + 1) {
    ++graph.row_length;
    return true;
  }
  if (!MakeRoomForId(graph.places)) return false;
  IdSlot& slot = ProbeId(graph.places, id);
  if (slot.id == 0) ++graph.places.used;
  slot = {id, place};
  if (id <= graph.row_length) graph.row_shadowed = true;
  return true;
}

// Memory for some chunks of nodes side by side; false when it is short.
bool AddNodeBlock(CdfgGraph& graph, std::size_t chunk_count, bool is_large) {
  constexpr std::size_t kChunkBytes = kChunkSize * sizeof(NodeRecord);
  auto* block = static_cast<NodeRecord*>(NewChunk(chunk_count * kChunkBytes, is_large));
  if (block == nullptr) return false;
  if (!graph.node_blocks.Push(block)) {
    std::free(block);
    return false;
  }
  // Where a list cannot grow, the chunks that are not in it are given up.
  std::size_t added = 0;
  while (added < chunk_count && graph.chunks.Push(block + added * kChunkSize)) ++added;
  return added > 0;
}

bool HasRoomForNode(CdfgGraph& graph) {
  if (graph.node_count < graph.chunks.size * kChunkSize) return true;
  if (graph.node_count >= kNoPlace) return false;
  const bool is_large = graph.chunks.size >= kUsualNodeChunks;
  return AddNodeBlock(graph, is_large ? kChunksInLargeBlock : 1, is_large);
}

// --- Attributes ----------------------------------------------------------------------------------

Attribute* NewAttributeChunk(AttributePool& pool, std::size_t records) {
  const bool is_large = records == kLargeAttributeChunk;
  auto* chunk = static_cast<Attribute*>(NewChunk(records * sizeof(Attribute), is_large));
  if (chunk != nullptr && !pool.blocks.Push(chunk)) {
    std::free(chunk);
    return nullptr;
  }
  return chunk;
}

Attribute* TakeRun(AttributePool& pool, std::uint32_t capacity) {
  if (capacity > AttributePool::kLargestRun) return NewAttributeChunk(pool, capacity);
  Attribute*& free_run = pool.free_runs[capacity];
  if (free_run != nullptr) {
    Attribute* run = free_run;
    std::memcpy(&free_run, &run->bits, sizeof free_run);
    return run;
  }
  if (pool.chunk_left < capacity) {
    const bool is_large = pool.blocks.size >= kUsualAttributeChunks;
    const std::size_t records = is_large ? kLargeAttributeChunk : kAttributeChunk;
    Attribute* chunk = NewAttributeChunk(pool, records);
    if (chunk == nullptr) return nullptr;
    pool.chunk = chunk;
    pool.chunk_left = records;
  }
  Attribute* run = pool.chunk;
  pool.chunk += capacity;
  pool.chunk_left -= capacity;
  return run;
}

// A long run goes back with the graph: nodes that wide are few, and each doubling is paid for.
void GiveRunBack(AttributePool& pool, Attribute* run, std::uint32_t capacity) {
  if (capacity == 0 || capacity > AttributePool::kLargestRun) return;
  static_assert(sizeof(Attribute*) <= sizeof(run->bits));
  std::memcpy(&run->bits, &pool.free_runs[capacity], sizeof(Attribute*));
  pool.free_runs[capacity] = run;
}

bool GrowRun(CdfgGraph& graph, NodeRecord& node, std::uint32_t capacity) {
  Attribute* run = TakeRun(graph.attributes, capacity);
  if (run == nullptr) return false;
  if (node.attribute_count != 0) {
    std::memcpy(run, node.attributes, node.attribute_count * sizeof(Attribute));
  }
  GiveRunBack(graph.attributes, node.attributes, node.attribute_capacity);
  node.attributes = run;
  node.attribute_capacity = capacity;
  return true;
}

std::size_t WideStart(std::uint32_t place, std::uint32_t attribute) {
  const std::uint64_t key = (static_cast<std::uint64_t>(place) << 32) | attribute;
  return static_cast<std::size_t>(MixBits(hash::seed ^ key));
}

std::size_t ProbeWide(const CdfgGraph& graph, std::uint32_t place, std::uint32_t attribute) {
  const std::size_t mask = graph.wide_slot_count - 1;
  std::size_t slot = WideStart(place, attribute) & mask;
  for (;; slot = (slot + 1) & mask) {
    const WideSlot& found = graph.wide_slots[slot];
    if (found.place == kNoPlace) return slot;
    if (found.place == place && NodeAt(graph, place).attributes[found.index].id == attribute) {
      return slot;
    }
  }
}

bool MakeWideRoom(CdfgGraph& graph) {
  if (graph.wide_slots != nullptr && !IsCrowded(graph.wide_used + 1, graph.wide_slot_count)) {
    return true;
  }
  const std::size_t old_count = graph.wide_slot_count;
  const std::size_t new_count = old_count == 0 ? 256 : old_count * 2;
  auto* larger = static_cast<WideSlot*>(std::malloc(new_count * sizeof(WideSlot)));
  if (larger == nullptr) return false;
  std::fill_n(larger, new_count, WideSlot{kNoPlace, 0});
  WideSlot* old = graph.wide_slots;
  graph.wide_slots = larger;
  graph.wide_slot_count = new_count;
  for (std::size_t i = 0; i < old_count; ++i) {
    if (old[i].place == kNoPlace) continue;
    const std::uint32_t id = NodeAt(graph, old[i].place).attributes[old[i].index].id;
    graph.wide_slots[ProbeWide(graph, old[i].place, id)] = old[i];
  }
  std::free(old);
  return true;
}

bool EnterWide(CdfgGraph& graph, std::uint32_t place, std::uint32_t index) {
  if (!MakeWideRoom(graph)) return false;
  const std::uint32_t id = NodeAt(graph, place).attributes[index].id;
  graph.wide_slots[ProbeWide(graph, place, id)] = {place, index};
  ++graph.wide_used;
  return true;
}

Attribute* FindAttribute(const CdfgGraph& graph, std::size_t place, std::uint32_t attribute) {
  const NodeRecord& node = NodeAt(graph, place);
  if (node.attribute_count >= kWide) {
    const WideSlot& found =
        graph.wide_slots[ProbeWide(graph, static_cast<std::uint32_t>(place), attribute)];
    return found.place == kNoPlace ? nullptr : &node.attributes[found.index];
  }
  for (std::uint32_t i = 0; i < node.attribute_count; ++i) {
    if (node.attributes[i].id == attribute) return &node.attributes[i];
  }
  return nullptr;
}

std::uint32_t NextCapacity(std::uint32_t capacity) { return capacity == 0 ? 2 : capacity * 2; }

// The record written behind the last one becomes part of the node.
bool EnterLastAttribute(CdfgGraph& graph, std::size_t place, NodeRecord& node) {
  const std::uint32_t count = node.attribute_count + 1;
  if (count >= kWide) {
    for (std::uint32_t i = count == kWide ? 0 : count - 1; i < count; ++i) {
      if (!EnterWide(graph, static_cast<std::uint32_t>(place), i)) return false;
    }
  }
  node.attribute_count = count;
  return true;
}

int AppendAttribute(CdfgGraph& graph, std::size_t place, const Attribute& attribute) {
  NodeRecord& node = NodeAt(graph, place);
  if (node.attribute_count == node.attribute_capacity &&
      !GrowRun(graph, node, NextCapacity(node.attribute_capacity))) {
    return Short(graph);
  }
  node.attributes[node.attribute_count] = attribute;
  return EnterLastAttribute(graph, place, node) ? 0 : Short(graph);
}

std::uint64_t BitsOf(const char* text) {
  return static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(text));
}

// --- Strings -------------------------------------------------------------------------------------

char* TakeBytes(StringArena& arena, std::size_t size) {
  const bool own_block = size > kLargestPooledString;
  if (own_block || arena.chunk_left < size) {
    const bool is_large = !own_block && arena.blocks.size >= kUsualStringChunks;
    const std::size_t chunk_size = is_large ? kLargePage : kStringChunk;
    const std::size_t block_size = own_block ? size : chunk_size;
    auto* block = static_cast<char*>(NewChunk(block_size, is_large));
    if (block == nullptr) return nullptr;
    if (!arena.blocks.Push(block)) {
      std::free(block);
      return nullptr;
    }
    if (own_block) return block;
    arena.chunk = block;
    arena.chunk_left = block_size;
  }
  char* bytes = arena.chunk;
  arena.chunk += size;
  arena.chunk_left -= size;
  return bytes;
}

// A stored copy of the text, null when memory is short.
const char* StoreString(CdfgGraph& graph, std::string_view text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  if (length != text.size()) return nullptr;
  char* bytes = TakeBytes(graph.strings, sizeof length + text.size() + 1);
  if (bytes == nullptr) return nullptr;
  std::memcpy(bytes, &length, sizeof length);
  bytes += sizeof length;
  if (!text.empty()) std::memcpy(bytes, text.data(), text.size());
  bytes[text.size()] = '\0';
  return bytes;
}

std::string_view FileNameText(const CdfgGraph& graph, std::uint32_t number) {
  const char* name = graph.file_names[number];
  return {name, StoredLength(name)};
}

bool AddFileName(CdfgGraph& graph, std::string_view name) {
  if (graph.file_names.size == 0 && !graph.file_names.Push(nullptr)) return false;
  const char* stored = StoreString(graph, name);
  return stored != nullptr && graph.file_names.Push(stored);
}

// The number of a file name, entered when it is new; kNoFileName when memory is short.
std::uint32_t FindOrAddFileName(CdfgGraph& graph, std::string_view name) {
  const auto start_of_text = [&](std::string_view text) { return TextHash{}(text); };
  const auto start_of = [&](std::uint32_t number) {
    return start_of_text(FileNameText(graph, number));
  };
  if (!MakeRoom(graph.file_numbers, start_of)) return kNoFileName;
  const std::size_t slot =
      ProbeSlot(graph.file_numbers, start_of_text(name),
                [&](std::uint32_t number) { return FileNameText(graph, number) == name; });
  if (graph.file_numbers.slots[slot] != kNoPlace) return graph.file_numbers.slots[slot];
  if (!AddFileName(graph, name)) return kNoFileName;
  ++graph.file_numbers.used;
  graph.file_numbers.slots[slot] = static_cast<std::uint32_t>(graph.file_names.size - 1);
  return graph.file_numbers.slots[slot];
}

std::uint32_t NumberOfFileName(CdfgGraph& graph, std::string_view name) {
  const std::uint32_t last = graph.last_file_name;
  if (last != kNoFileName && FileNameText(graph, last) == name) return last;
  graph.last_file_name = FindOrAddFileName(graph, name);
  return graph.last_file_name;
}

// --- User data -----------------------------------------------------------------------------------

// Empty user data for some chunks of nodes side by side; false when memory is short.
bool AddUserData(CdfgGraph& graph, std::size_t first, std::size_t count) {
  constexpr std::size_t kChunkBytes = kChunkSize * sizeof(void*);
  while (graph.user_data.size < first + count) {
    if (!graph.user_data.Push(nullptr)) return false;
  }
  auto* block = static_cast<void**>(NewChunk(count * kChunkBytes, count > 1));
  if (block == nullptr) return false;
  if (!graph.user_blocks.Push(block)) {
    std::free(block);
    return false;
  }
  std::fill_n(block, count * kChunkSize, nullptr);
  for (std::size_t i = 0; i < count; ++i) {
    // A chunk that had its own from when the graph was small keeps it.
    void**& chunk = graph.user_data[first + i];
    if (chunk == nullptr) chunk = block + i * kChunkSize;
  }
  return true;
}

// The array of user data that covers a place, made when it is missing; null when memory is short.
void** UserDataChunk(CdfgGraph& graph, std::size_t place) {
  const std::size_t number = place >> kChunkShift;
  if (number >= graph.user_data.size || graph.user_data[number] == nullptr) {
    const bool is_large = graph.chunks.size >= kUsualNodeChunks;
    const std::size_t count = is_large ? kChunksInUserBlock : 1;
    if (!AddUserData(graph, number / count * count, count)) return nullptr;
  }
  return graph.user_data[number];
}

// --- Shapes of getters and setters ---------------------------------------------------------------

template <class Field>
Field GetField(const CdfgGraph* graph, NodeId id, Field NodeRecord::*field) {
  const NodeRecord* node = FindNode(graph, id);
  return node == nullptr ? Field{} : node->*field;
}

template <class Field>
int SetField(CdfgGraph* graph, NodeId id, Field NodeRecord::*field, Field value) {
  NodeRecord* node = FindNode(graph, id);
  if (node == nullptr) return -1;
  node->*field = value;
  return 0;
}

const Attribute* GetAttribute(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  const std::uint32_t place = FindLivePlace(graph, id);
  return place == kNoPlace ? nullptr : FindAttribute(*graph, place, attribute);
}

std::uint64_t GetBits(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  const Attribute* found = GetAttribute(graph, id, attribute);
  return found == nullptr || found->type == ATTR_STRING ? 0 : found->bits;
}

int SetBits(CdfgGraph* graph, NodeId id, std::uint32_t attribute, CdfgValueType type,
            std::uint64_t bits, unsigned width) {
  const std::uint32_t place = FindLivePlace(graph, id);
  return place == kNoPlace ? -1 : SetAttributeBits(*graph, place, attribute, type, bits, width);
}

const Attribute* AttributeAt(const CdfgGraph* graph, NodeId id, std::int32_t place) {
  const NodeRecord* node = FindNode(graph, id);
  if (node == nullptr || place < 1) return nullptr;
  const auto index = static_cast<std::uint32_t>(place) - 1;
  return index < node->attribute_count ? &node->attributes[index] : nullptr;
}

template <class Block>
void FreeAll(const Growable<Block>& blocks) {
  for (std::size_t i = 0; i < blocks.size; ++i) std::free(blocks[i]);
}

struct ReferenceRow {
  std::uint32_t kind;
  std::uint32_t attribute;
};

// References that point at a node without owning it, besides those of ports.
constexpr ReferenceRow kPointingReferences[] = {
    {CFG_FUNCTION, CfgFunc_TYPEDEFLINK},
    {CFG_INSTANCE, CfgInstance_CELL},
    {CFG_TYPEDEF, CfgTDef_STRUCTNODE},
    {CFG_DECLARE, CfgDecl_FIRSTUSE},
    {CFG_DECLARE, CfgDecl_LASTUSE},
    {CFG_DECLARE, CfgDecl_STRUCTORGNODE},
    {CFG_DECLARE, CfgDecl_TYPEDEFLINK},
    {CFG_MEMBER, CfgMember_SIGNAL},
    {DFG_FUNC_CALL, DfgFuncCall_FUNC_RETDECL},
    {DFG_FUNC_CALL, DfgFuncCall_FUNC_TYPEDEFLINK},
    {DFG_SPEC, DfgSpec_TYPEDEFLINK},
    {DFG_POSTFIX, DfgPostfix_STRPARENT},
    {DFG_PORT_INFO, DfgPortInfo_ALIAS},
    {DFG_PORT_LIST, DfgPortList_DECL},
};

bool PortPointsBy(std::uint32_t attribute) {
  return attribute == DfgPort_DECL || attribute == DfgPort_BEFOR || attribute == DfgPort_PREV ||
         attribute == DfgPort_NEXT || attribute == DfgPort_STRPARENT;
}

}  // namespace

// --- Store-internal operations -------------------------------------------------------------------

NodeRecord* FindNode(const CdfgGraph* graph, NodeId id) {
  const std::uint32_t place = FindLivePlace(graph, id);
  return place == kNoPlace ? nullptr : &NodeAt(*graph, place);
}

bool AppendNode(CdfgGraph& graph, NodeId id) {
  const std::size_t place = graph.node_count;
  if (!HasRoomForNode(graph)) return Short(graph) == 0;
  NodeRecord& node = NodeAt(graph, place);
  node = NodeRecord{};
  node.id = id;
  if (!EnterPlace(graph, id, static_cast<std::uint32_t>(place))) return Short(graph) == 0;
  ++graph.node_count;
  graph.highest_id = id;
  return true;
}

void ReserveAttributes(CdfgGraph& graph, NodeRecord& node, std::uint32_t count) {
  if (node.attribute_capacity != 0 || count == 0) return;
  if (!GrowRun(graph, node, count)) Short(graph);
}

int SetAttributeBits(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                     CdfgValueType type, std::uint64_t bits, unsigned width) {
  Attribute* found = FindAttribute(graph, place, attribute);
  if (found == nullptr) return AppendAttribute(graph, place, {attribute, type, bits});
  const std::uint64_t mask = width == 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << (width * 8)) - 1;
  const std::uint64_t old_bits = found->type == ATTR_STRING ? 0 : found->bits;
  found->bits = (old_bits & ~mask) | bits;
  found->type = type;
  return 0;
}

int SetAttributeString(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                       const char* text, std::size_t length) {
  Attribute* found = FindAttribute(graph, place, attribute);
  if (found != nullptr && found->type != ATTR_STRING) return -1;
  if (found != nullptr && StringOf(*found) == nullptr) return 0;
  const char* stored = nullptr;
  if (text != nullptr) {
    stored = StoreString(graph, {text, length});
    if (stored == nullptr) return Short(graph);
  }
  if (found == nullptr)
    return AppendAttribute(graph, place, {attribute, ATTR_STRING, BitsOf(stored)});
  found->bits = BitsOf(stored);
  return 0;
}

int SetNodeFileName(CdfgGraph& graph, NodeRecord& node, const char* name, std::size_t length) {
  const std::uint32_t number = NumberOfFileName(graph, {name, length});
  if (number == kNoFileName) return Short(graph);
  node.file_name = number;
  return 0;
}

// --- The graph -----------------------------------------------------------------------------------

CdfgGraph* CdfgNewGraph() {
  void* block = std::malloc(sizeof(CdfgGraph));
  if (block == nullptr) return nullptr;
  auto* graph = new (block) CdfgGraph;
  return graph;
}

void CdfgFreeGraph(CdfgGraph* graph) {
  if (graph == nullptr) return;
  FreeAll(graph->node_blocks);
  FreeAll(graph->attributes.blocks);
  FreeAll(graph->strings.blocks);
  FreeAll(graph->user_blocks);
  std::free(graph->places.slots);
  std::free(graph->file_numbers.slots);
  std::free(graph->wide_slots);
  graph->~CdfgGraph();
  std::free(graph);
}

NodeId CdfgGetRoot(const CdfgGraph* graph) {
  for (std::size_t place = 0; place < CdfgNodeCount(graph); ++place) {
    const NodeRecord& node = NodeAt(*graph, place);
    if (node.kind == CFG_ROOT && !IsFreed(node)) return node.id;
  }
  return 0;
}

int CdfgMemoryIsShort(const CdfgGraph* graph) {
  return graph != nullptr && graph->memory_short ? 1 : 0;
}

std::size_t CdfgNodeCount(const CdfgGraph* graph) {
  return graph == nullptr ? 0 : graph->node_count;
}

NodeId CdfgNodeIdAt(const CdfgGraph* graph, std::size_t place) {
  if (place >= CdfgNodeCount(graph)) return 0;
  const NodeRecord& node = NodeAt(*graph, place);
  return IsFreed(node) ? 0 : node.id;
}

// --- Making and releasing nodes ------------------------------------------------------------------

NodeId CdfgAddNode(CdfgGraph* graph, std::uint32_t kind) {
  if (graph == nullptr) return 0;
  const NodeId id = graph->highest_id + 1;
  if (id == 0 || !AppendNode(*graph, id)) return 0;
  NodeAt(*graph, graph->node_count - 1).kind = kind;
  return id;
}

NodeId CdfgAddNodeWithId(CdfgGraph* graph, NodeId id) {
  if (graph == nullptr || !AppendNode(*graph, id)) return 0;
  return id;
}

NodeId CdfgCreateNode(CdfgGraph* graph, std::uint32_t kind, NodeId position) {
  const NodeId id = CdfgAddNode(graph, kind);
  if (id == 0) {
    std::puts("kelvo : Error Short of memory. (create node)");
    CdfgStop(255);
  }
  const NodeRecord* source = FindNode(graph, position);
  if (source != nullptr) {
    NodeRecord& node = NodeAt(*graph, graph->node_count - 1);
    node.file_name = source->file_name;
    node.line = source->line;
    node.column = source->column;
  }
  return id;
}

void CdfgFreeNode(CdfgGraph* graph, NodeId id) {
  NodeRecord* node = FindNode(graph, id);
  if (node == nullptr) return;
  // The hash table of wide nodes goes on looking at the records of this one.
  if (node->attribute_count < kWide) {
    GiveRunBack(graph->attributes, node->attributes, node->attribute_capacity);
  }
  node->file_name = kFreedNode;
}

void CdfgFreeTree(CdfgGraph* graph, NodeId id) {
  std::vector<NodeId> pending{id};
  while (!pending.empty()) {
    const NodeId current = pending.back();
    pending.pop_back();
    const NodeRecord* node = FindNode(graph, current);
    if (node == nullptr) continue;
    for (std::uint32_t i = 0; i < node->attribute_count; ++i) {
      const Attribute& attribute = node->attributes[i];
      if (attribute.type != ATTR_NODE || CdfgOwnsReference(node->kind, attribute.id) == 0) continue;
      pending.push_back(static_cast<NodeId>(attribute.bits));
    }
    CdfgFreeNode(graph, current);
  }
}

int CdfgOwnsReference(std::uint32_t kind, std::uint32_t attribute) {
  if (CdfgIsPort(kind)) return PortPointsBy(attribute) ? 0 : 1;
  const auto is_row = [&](const ReferenceRow& row) {
    return row.kind == kind && row.attribute == attribute;
  };
  return std::any_of(std::begin(kPointingReferences), std::end(kPointingReferences), is_row) ? 0
                                                                                             : 1;
}

// --- Fields of a node ----------------------------------------------------------------------------

int CdfgHasNode(const CdfgGraph* graph, NodeId id) {
  return FindNode(graph, id) == nullptr ? 0 : 1;
}

std::uint32_t CdfgGetKind(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::kind);
}
int CdfgSetKind(CdfgGraph* graph, NodeId id, std::uint32_t kind) {
  return SetField(graph, id, &NodeRecord::kind, kind);
}
NodeId CdfgGetPrev(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::prev);
}
int CdfgSetPrev(CdfgGraph* graph, NodeId id, NodeId prev) {
  return SetField(graph, id, &NodeRecord::prev, prev);
}
NodeId CdfgGetNext(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::next);
}
int CdfgSetNext(CdfgGraph* graph, NodeId id, NodeId next) {
  return SetField(graph, id, &NodeRecord::next, next);
}
NodeId CdfgGetJump(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::jump);
}
int CdfgSetJump(CdfgGraph* graph, NodeId id, NodeId jump) {
  return SetField(graph, id, &NodeRecord::jump, jump);
}
std::int32_t CdfgGetLine(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::line);
}
int CdfgSetLine(CdfgGraph* graph, NodeId id, std::int32_t line) {
  return SetField(graph, id, &NodeRecord::line, line);
}
std::int32_t CdfgGetColumn(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::column);
}
int CdfgSetColumn(CdfgGraph* graph, NodeId id, std::int32_t column) {
  return SetField(graph, id, &NodeRecord::column, column);
}

const char* CdfgGetFileName(const CdfgGraph* graph, NodeId id) {
  const NodeRecord* node = FindNode(graph, id);
  return node == nullptr ? nullptr : FileNameOf(*graph, *node);
}

int CdfgSetFileName(CdfgGraph* graph, NodeId id, const char* name) {
  NodeRecord* node = FindNode(graph, id);
  if (node == nullptr) return -1;
  if (name != nullptr) return SetNodeFileName(*graph, *node, name, std::strlen(name));
  node->file_name = kNoFileName;
  return 0;
}

void* CdfgGetUserData(const CdfgGraph* graph, NodeId id) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace || graph->user_data.size <= place >> kChunkShift) return nullptr;
  void** chunk = graph->user_data[place >> kChunkShift];
  return chunk == nullptr ? nullptr : chunk[place & (kChunkSize - 1)];
}

int CdfgSetUserData(CdfgGraph* graph, NodeId id, void* data) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return -1;
  void** chunk = UserDataChunk(*graph, place);
  if (chunk == nullptr) return Short(*graph);
  chunk[place & (kChunkSize - 1)] = data;
  return 0;
}

// --- Attributes ----------------------------------------------------------------------------------

std::int32_t CdfgGetAttrCount(const CdfgGraph* graph, NodeId id) {
  return static_cast<std::int32_t>(GetField(graph, id, &NodeRecord::attribute_count));
}

std::uint32_t CdfgGetAttrIdAt(const CdfgGraph* graph, NodeId id, std::int32_t place) {
  const Attribute* attribute = AttributeAt(graph, id, place);
  return attribute == nullptr ? 0 : attribute->id;
}

std::uint32_t CdfgGetAttrTypeAt(const CdfgGraph* graph, NodeId id, std::int32_t place) {
  const Attribute* attribute = AttributeAt(graph, id, place);
  return attribute == nullptr ? 0 : attribute->type;
}

NodeId CdfgGetAttr(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  return static_cast<NodeId>(GetBits(graph, id, attribute));
}

std::int32_t CdfgGetAttrInt(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  return static_cast<std::int32_t>(GetBits(graph, id, attribute));
}

const char* CdfgGetAttrStr(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  const Attribute* found = GetAttribute(graph, id, attribute);
  return found == nullptr || found->type != ATTR_STRING ? nullptr : StringOf(*found);
}

std::int8_t CdfgGetAttrChar(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  return static_cast<std::int8_t>(GetBits(graph, id, attribute));
}

std::int64_t CdfgGetAttrInt64(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  return static_cast<std::int64_t>(GetBits(graph, id, attribute));
}

double CdfgGetAttrDouble(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  return std::bit_cast<double>(GetBits(graph, id, attribute));
}

int CdfgSetAttrChar(CdfgGraph* graph, NodeId id, std::uint32_t attribute, std::int8_t value) {
  return SetBits(graph, id, attribute, ATTR_CHAR, static_cast<std::uint8_t>(value), 1);
}

int CdfgSetAttrInt(CdfgGraph* graph, NodeId id, std::uint32_t attribute, std::int32_t value) {
  return SetBits(graph, id, attribute, ATTR_INT, static_cast<std::uint32_t>(value), 4);
}

int CdfgSetAttrInt64(CdfgGraph* graph, NodeId id, std::uint32_t attribute, std::int64_t value) {
  return SetBits(graph, id, attribute, ATTR_LONGLONG, static_cast<std::uint64_t>(value), 8);
}

int CdfgSetAttrDouble(CdfgGraph* graph, NodeId id, std::uint32_t attribute, double value) {
  return SetBits(graph, id, attribute, ATTR_FLOAT, std::bit_cast<std::uint64_t>(value), 8);
}

int CdfgSetAttrNode(CdfgGraph* graph, NodeId id, std::uint32_t attribute, NodeId value) {
  return SetBits(graph, id, attribute, ATTR_NODE, value, 4);
}

int CdfgSetAttrStr(CdfgGraph* graph, NodeId id, std::uint32_t attribute, const char* value) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return -1;
  return SetAttributeString(*graph, place, attribute, value,
                            value == nullptr ? 0 : std::strlen(value));
}
