#include "cdfg/graph.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <numeric>
#include <string_view>
#include <type_traits>
#include <vector>

#include "cdfg/graph_store.h"
#include "cdfg/hash.h"
#include "cdfg/kinds.h"
#include "cdfg/large_pages.h"
#include "cdfg/memory.h"

namespace {

constexpr std::uint32_t kFirstRun = 4;  // how many attributes have room in it
constexpr std::size_t kPoolChunk = std::size_t{1} << AttributePool::kChunkShift;
constexpr std::size_t kWord = sizeof(std::uint32_t);
constexpr std::size_t kLargestBlock = (std::size_t{1} << Arena::kBlockShift) * kWord;
constexpr std::size_t kUsualBlock = 256 * 1024;  // bytes
// Behind so many chunks or blocks of usual size come large ones, several chunks to the block.
constexpr std::size_t kUsualNodeChunks = 8;
constexpr std::size_t kUsualPoolChunks = 8;
constexpr std::size_t kUsualBlocks = 8;
// Runs and strings up to these sizes share their memory with others, so that no more than an eighth
// of it stays unused; longer ones have a block of their own.
constexpr std::size_t kLongestPooledRun = kPoolChunk / 8;
constexpr std::size_t kLongestPooledText = kLargestBlock / 8 / kWord;  // words
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

// Every getter begins here, nearly always with an id of the row. The node may be a freed one: to
// getters it is an empty node, as good as none.
inline std::uint32_t FindPlaceToRead(const CdfgGraph* graph, NodeId id) {
  if (graph == nullptr) return kNoPlace;
  const std::uint32_t place = id - 1;
  if (place < graph->direct_length) [[likely]]
    return place;
  return FindPlaceOutsideRow(*graph, id);
}

// The same for setters, which leave a freed node alone.
inline std::uint32_t FindLivePlace(const CdfgGraph* graph, NodeId id) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  return place == kNoPlace || IsFreed(NodeAt(*graph, place)) ? kNoPlace : place;
}

// --- Chunked arrays ------------------------------------------------------------------------------

// How many chunks of `chunk_bytes` fill large pages without rest.
constexpr std::size_t ChunksInLargeBlock(std::size_t chunk_bytes) {
  return std::lcm(chunk_bytes, 2 * kLargePage) / chunk_bytes;
}

// Enters a block of new memory as chunks `first`, `first` + 1, ...; those that are there already
// stay. False when memory is short.
template <class Element>
bool AddBlock(ChunkedArray<Element>& array, std::size_t first, std::size_t count,
              std::size_t elements_in_chunk, bool is_large) {
  while (array.chunks.size < first + count) {
    if (!array.chunks.Push(nullptr)) return false;
  }
  const std::size_t size = count * elements_in_chunk * sizeof(Element);
  auto* block = static_cast<Element*>(NewChunk(size, is_large));
  if (block == nullptr) return false;
  if (!array.blocks.Push(block)) {
    std::free(block);
    return false;
  }
  // User data begins as null.
  if constexpr (std::is_pointer_v<Element>) std::fill_n(block, count * elements_in_chunk, nullptr);
  for (std::size_t i = 0; i < count; ++i) {
    Element*& chunk = array.chunks[first + i];
    if (chunk == nullptr) chunk = block + i * elements_in_chunk;
  }
  return true;
}

// Sees to it that there is memory for the element of the node at `place`; false when it is short.
template <class Element>
bool MakeRoomAt(ChunkedArray<Element>& array, std::size_t place) {
  constexpr std::size_t kInLargeBlock = ChunksInLargeBlock(kChunkSize * sizeof(Element));
  const std::size_t number = place >> kChunkShift;
  if (number < array.chunks.size && array.chunks[number] != nullptr) return true;
  const bool is_large = number >= kUsualNodeChunks;
  const std::size_t count = is_large ? kInLargeBlock : 1;
  const std::size_t first =
      is_large ? kUsualNodeChunks + (number - kUsualNodeChunks) / count * count : number;
  return AddBlock(array, first, count, kChunkSize, is_large);
}

template <class Block>
void FreeAll(const Growable<Block>& blocks) {
  for (std::size_t i = 0; i < blocks.size; ++i) std::free(blocks[i]);
}

// --- Making nodes --------------------------------------------------------------------------------

// Makes the node at `place` the one that lookups of its id find, and keeps the id where the place
// does not say it.
bool EnterPlace(CdfgGraph& graph, NodeId id, std::uint32_t place) {
  if (graph.row_length == place && id == place + 1) {
    ++graph.row_length;
    ++graph.direct_length;
    return true;
  }
  if (!MakeRoomAt(graph.ids, place)) return false;
  ElementAt(graph.ids, place) = id;
  if (id == 0) return true;
  if (!MakeRoomForId(graph.places)) return false;
  IdSlot& slot = ProbeId(graph.places, id);
  if (slot.id == 0) ++graph.places.used;
  slot = {id, place};
  if (id <= graph.row_length) graph.direct_length = 0;
  return true;
}

// Memory for the next nodes; false when it is short.
[[gnu::noinline]] bool MakeRoomForNodes(CdfgGraph& graph) {
  const std::size_t place = graph.node_count;
  if (place >= kNoPlace || !MakeRoomAt(graph.nodes, place) || !MakeRoomAt(graph.rest, place)) {
    return false;
  }
  graph.node_room = std::min<std::size_t>((place / kChunkSize + 1) * kChunkSize, kNoPlace);
  return true;
}

// --- Attributes ----------------------------------------------------------------------------------

// Memory for so many attributes in a row and its address, 0 when it is short.
Address AddPoolBlock(AttributePool& pool, std::size_t records, bool is_large) {
  constexpr std::size_t kMostChunks = std::size_t{1} << (32 - AttributePool::kChunkShift);
  // There is no chunk 0, so that no run has the address 0.
  const std::size_t first = std::max<std::size_t>(pool.memory.chunks.size, 1);
  const std::size_t count = (records + kPoolChunk - 1) / kPoolChunk;
  if (first + count > kMostChunks) return 0;
  if (!AddBlock(pool.memory, first, count, std::min(records, kPoolChunk), is_large)) {
    pool.memory.chunks.size = std::min(pool.memory.chunks.size, first);
    return 0;
  }
  return static_cast<Address>(first << AttributePool::kChunkShift);
}

bool RefillPool(AttributePool& pool) {
  constexpr std::size_t kInLargeBlock = ChunksInLargeBlock(kPoolChunk * sizeof(Attribute));
  const bool is_large = pool.memory.chunks.size > kUsualPoolChunks;
  const std::size_t records = is_large ? kInLargeBlock * kPoolChunk : kPoolChunk;
  const Address block = AddPoolBlock(pool, records, is_large);
  if (block == 0) return false;
  pool.next = block;
  pool.left = records;
  return true;
}

// The address of a run, 0 when memory is short.
Address TakeRun(AttributePool& pool, std::uint32_t capacity) {
  if (capacity > kLongestPooledRun) return AddPoolBlock(pool, capacity, false);
  if (capacity <= AttributePool::kLargestReleased && pool.free_runs[capacity] != 0) {
    const Address run = pool.free_runs[capacity];
    pool.free_runs[capacity] = RunAt(pool, run)->value;
    return run;
  }
  if (pool.left < capacity && !RefillPool(pool)) return 0;
  const Address run = pool.next;
  pool.next += capacity;
  pool.left -= capacity;
  return run;
}

// A long run goes back with the graph: nodes that wide are few, and each doubling is paid for.
void GiveRunBack(AttributePool& pool, const NodeRecord& node) {
  if (!HasRun(node)) return;
  const std::uint32_t capacity = SizeOfRun(node).capacity;
  if (capacity > AttributePool::kLargestReleased) return;
  const Address run = node.own[0].value;
  RunAt(pool, run)->value = pool.free_runs[capacity];
  pool.free_runs[capacity] = run;
}

void SetRunSize(NodeRecord& node, RunSize size) { node.own[1] = std::bit_cast<Attribute>(size); }

// Moves the attributes of a node into a run of this capacity.
bool GrowRun(CdfgGraph& graph, NodeRecord& node, std::uint32_t capacity) {
  const Address run = TakeRun(graph.attributes, capacity);
  if (run == 0) return false;
  const std::uint32_t count = AttributeCount(node);
  std::copy_n(AttributesOf(graph, node), count, RunAt(graph.attributes, run));
  GiveRunBack(graph.attributes, node);
  node.own[0] = {kFarId, kRun, Form::Short, run};
  node.own[2] = kEmptyAttribute;
  SetRunSize(node, {count, capacity});
  return true;
}

std::uint32_t IdOfAttribute(const CdfgGraph& graph, std::uint32_t place, std::uint32_t index) {
  return IdOf(graph, AttributesOf(graph, NodeAt(graph, place))[index]);
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
    if (found.place == place && IdOfAttribute(graph, place, found.index) == attribute) return slot;
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
    if (old[i].place == kNoPlace || IsFreed(NodeAt(graph, old[i].place))) continue;
    const std::uint32_t id = IdOfAttribute(graph, old[i].place, old[i].index);
    graph.wide_slots[ProbeWide(graph, old[i].place, id)] = old[i];
  }
  std::free(old);
  return true;
}

bool EnterWide(CdfgGraph& graph, std::uint32_t place, std::uint32_t index) {
  if (!MakeWideRoom(graph)) return false;
  const std::uint32_t id = IdOfAttribute(graph, place, index);
  graph.wide_slots[ProbeWide(graph, place, id)] = {place, index};
  ++graph.wide_used;
  return true;
}

[[gnu::noinline]] Attribute* FindInRun(const CdfgGraph& graph, std::size_t place,
                                       std::uint32_t attribute) {
  const NodeRecord& node = NodeAt(graph, place);
  Attribute* run = RunAt(graph.attributes, node.own[0].value);
  const std::uint32_t count = SizeOfRun(node).count;
  if (count >= kWide) {
    const WideSlot& found =
        graph.wide_slots[ProbeWide(graph, static_cast<std::uint32_t>(place), attribute)];
    return found.place == kNoPlace ? nullptr : &run[found.index];
  }
  // Runs are short: code for long ones would take longer than the search.
#pragma GCC unroll 1
  for (std::uint32_t i = 0; i < count; ++i) {
    if (run[i].id == attribute) return &run[i];
  }
  return nullptr;
}

// An attribute whose id is not in its record, and which is therefore asked for by its long value.
[[gnu::noinline]] Attribute* FindFar(const CdfgGraph& graph, std::size_t place,
                                     std::uint32_t attribute) {
  NodeRecord& node = NodeAt(graph, place);
  const std::uint32_t count = AttributeCount(node);
  if (count >= kWide) return FindInRun(graph, place, attribute);
  Attribute* attributes = HasRun(node) ? RunAt(graph.attributes, node.own[0].value) : node.own;
  for (std::uint32_t i = 0; i < count; ++i) {
    if (IdOf(graph, attributes[i]) == attribute) return &attributes[i];
  }
  return nullptr;
}

Attribute* FindAttribute(const CdfgGraph& graph, std::size_t place, std::uint32_t attribute) {
  if (attribute >= kFarId) [[unlikely]]
    return FindFar(graph, place, attribute);
  NodeRecord& node = NodeAt(graph, place);
  // An empty place, and the mark of a run, have the id of no attribute that is looked for here.
  if (node.own[0].id == attribute) return &node.own[0];
  if (HasRun(node)) return FindInRun(graph, place, attribute);
  if (node.own[1].id == attribute) return &node.own[1];
  return node.own[2].id == attribute ? &node.own[2] : nullptr;
}

// The attribute written behind the last one of a run becomes part of the node.
bool EnterLastOfRun(CdfgGraph& graph, std::size_t place, NodeRecord& node) {
  const RunSize size = SizeOfRun(node);
  const std::uint32_t count = size.count + 1;
  if (count >= kWide) {
    for (std::uint32_t i = count == kWide ? 0 : count - 1; i < count; ++i) {
      if (!EnterWide(graph, static_cast<std::uint32_t>(place), i)) return false;
    }
  }
  SetRunSize(node, {count, size.capacity});
  return true;
}

bool AppendToRun(CdfgGraph& graph, std::size_t place, const Attribute& attribute) {
  NodeRecord& node = NodeAt(graph, place);
  const RunSize size = SizeOfRun(node);
  if (size.count == size.capacity && !GrowRun(graph, node, size.capacity * 2)) return false;
  RunAt(graph.attributes, node.own[0].value)[size.count] = attribute;
  return EnterLastOfRun(graph, place, node);
}

// False when memory is short.
bool AppendRecord(CdfgGraph& graph, std::size_t place, const Attribute& attribute) {
  NodeRecord& node = NodeAt(graph, place);
  if (!HasRun(node)) {
    for (Attribute& own : node.own) {
      if (own.type != kNoAttribute) continue;
      own = attribute;
      return true;
    }
    if (!GrowRun(graph, node, kFirstRun)) return false;
  }
  return AppendToRun(graph, place, attribute);
}

// --- The arena -----------------------------------------------------------------------------------

// The address of a new block with room for so many words, 0 when memory is short.
Address AddArenaBlock(Arena& arena, std::size_t words, bool is_large) {
  constexpr std::size_t kMostBlocks = std::size_t{1} << (32 - Arena::kBlockShift);
  // There is no block 0, so that nothing has the address 0. A text that is longer than a block
  // takes the numbers of the blocks that it fills.
  const std::size_t number = std::max<std::size_t>(arena.blocks.size, 1);
  const std::size_t end = number + (words * kWord + kLargestBlock - 1) / kLargestBlock;
  if (end > kMostBlocks) return 0;
  while (arena.blocks.size < end && arena.blocks.Push(nullptr)) {
  }
  void* block = arena.blocks.size < end ? nullptr : NewChunk(words * kWord, is_large);
  if (block == nullptr) {
    arena.blocks.size = std::min(arena.blocks.size, number);
    return 0;
  }
  arena.blocks[number] = static_cast<char*>(block);
  return static_cast<Address>(number << Arena::kBlockShift);
}

bool RefillArena(Arena& arena) {
  const bool is_large = arena.blocks.size > kUsualBlocks;
  const std::size_t words = (is_large ? kLargestBlock : kUsualBlock) / kWord;
  const Address block = AddArenaBlock(arena, words, is_large);
  if (block == 0) return false;
  arena.next = block;
  arena.left = words;
  return true;
}

// The address of so many unused words, 0 when memory is short.
Address TakeWords(Arena& arena, std::size_t words) {
  if (words > kLongestPooledText) return AddArenaBlock(arena, words, false);
  if (arena.left < words && !RefillArena(arena)) return 0;
  const Address taken = arena.next;
  arena.next += static_cast<Address>(words);
  arena.left -= words;
  return taken;
}

// The address of a stored copy of the text, 0 when memory is short.
Address StoreText(CdfgGraph& graph, std::string_view text) {
  const auto length = static_cast<std::uint32_t>(text.size());
  if (length != text.size()) return 0;
  const Address head = TakeWords(graph.arena, 1 + text.size() / kWord + 1);
  if (head == 0) return 0;
  char* bytes = BytesAt(graph.arena, head);
  std::memcpy(bytes, &length, sizeof length);
  bytes += sizeof length;
  if (!text.empty()) std::memcpy(bytes, text.data(), text.size());
  bytes[text.size()] = '\0';
  return head + 1;
}

// --- Values --------------------------------------------------------------------------------------

bool FitsIntoRecord(std::uint32_t id, std::uint64_t bits) {
  return id < kFarId && bits <= std::numeric_limits<std::uint32_t>::max();
}

void PutLongValue(Arena& arena, Address address, std::uint32_t id, std::uint64_t bits) {
  const LongValue value = {id, static_cast<std::uint32_t>(bits),
                           static_cast<std::uint32_t>(bits >> 32)};
  std::memcpy(BytesAt(arena, address), &value, sizeof value);
}

// Puts the value into a record whose id and type stay; false, with nothing changed, when memory is
// short.
bool PutBits(CdfgGraph& graph, Attribute& attribute, std::uint32_t id, std::uint64_t bits) {
  if (attribute.form == Form::Short) {
    if (FitsIntoRecord(id, bits)) {
      attribute.value = static_cast<std::uint32_t>(bits);
      return true;
    }
    const Address address = TakeWords(graph.arena, sizeof(LongValue) / kWord);
    if (address == 0) return false;
    attribute.form = Form::Long;
    attribute.value = address;
  }
  PutLongValue(graph.arena, attribute.value, id, bits);
  return true;
}

// --- File names ----------------------------------------------------------------------------------

std::string_view FileNameText(const CdfgGraph& graph, std::uint32_t number) {
  const char* name = graph.file_names[number];
  return {name, StoredLength(name)};
}

bool AddFileName(CdfgGraph& graph, std::string_view name) {
  if (graph.file_names.size == 0 && !graph.file_names.Push(nullptr)) return false;
  const Address stored = StoreText(graph, name);
  return stored != 0 && graph.file_names.Push(BytesAt(graph.arena, stored));
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

// --- Shapes of getters and setters ---------------------------------------------------------------

NodeId GetLink(const CdfgGraph* graph, NodeId id, NodeId NodeRest::*link) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  return place == kNoPlace ? 0 : RestAt(*graph, place).*link;
}

int SetLink(CdfgGraph* graph, NodeId id, NodeId NodeRest::*link, NodeId value) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return -1;
  RestAt(*graph, place).*link = value;
  return 0;
}

template <class Field>
Field GetField(const CdfgGraph* graph, NodeId id, Field NodeRecord::*field) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  return place == kNoPlace ? Field{} : NodeAt(*graph, place).*field;
}

template <class Field>
int SetField(CdfgGraph* graph, NodeId id, Field NodeRecord::*field, Field value) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return -1;
  NodeAt(*graph, place).*field = value;
  return 0;
}

std::int32_t GetPosition(const CdfgGraph* graph, NodeId id, std::int32_t Position::*field) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  return place == kNoPlace ? 0 : RestAt(*graph, place).position.*field;
}

int SetPosition(CdfgGraph* graph, NodeId id, std::int32_t Position::*field, std::int32_t value) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return -1;
  RestAt(*graph, place).position.*field = value;
  return 0;
}

const Attribute* GetAttribute(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  return place == kNoPlace ? nullptr : FindAttribute(*graph, place, attribute);
}

std::uint64_t GetBits(const CdfgGraph* graph, NodeId id, std::uint32_t attribute) {
  const Attribute* found = GetAttribute(graph, id, attribute);
  return found == nullptr || found->type == ATTR_STRING ? 0 : BitsOf(*graph, *found);
}

int SetBits(CdfgGraph* graph, NodeId id, std::uint32_t attribute, CdfgValueType type,
            std::uint64_t bits, unsigned width) {
  const std::uint32_t place = FindLivePlace(graph, id);
  return place == kNoPlace ? -1 : SetAttributeBits(*graph, place, attribute, type, bits, width);
}

const Attribute* AttributeAt(const CdfgGraph* graph, NodeId id, std::int32_t place) {
  const std::uint32_t node_place = FindPlaceToRead(graph, id);
  if (node_place == kNoPlace || place < 1) return nullptr;
  const NodeRecord& node = NodeAt(*graph, node_place);
  const auto index = static_cast<std::uint32_t>(place) - 1;
  return index < AttributeCount(node) ? &AttributesOf(*graph, node)[index] : nullptr;
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

[[gnu::noinline]] LongValue LongValueAt(const CdfgGraph& graph, Address address) {
  LongValue value;
  std::memcpy(&value, BytesAt(graph.arena, address), sizeof value);
  return value;
}

std::uint32_t FindPlace(const CdfgGraph* graph, NodeId id) { return FindLivePlace(graph, id); }

bool AppendNode(CdfgGraph& graph, NodeId id) {
  const std::size_t place = graph.node_count;
  if (place == graph.node_room && !MakeRoomForNodes(graph)) return Short(graph) == 0;
  NodeAt(graph, place) = kEmptyNode;
  RestAt(graph, place) = kEmptyRest;
  if (!EnterPlace(graph, id, static_cast<std::uint32_t>(place))) return Short(graph) == 0;
  ++graph.node_count;
  graph.highest_id = id;
  return true;
}

void ReserveAttributes(CdfgGraph& graph, std::size_t place, std::uint32_t count) {
  if (count > kOwnAttributes && !GrowRun(graph, NodeAt(graph, place), count)) Short(graph);
}

int AddAttributeBits(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                     CdfgValueType type, std::uint64_t bits) {
  Attribute record = {static_cast<std::uint16_t>(std::min<std::uint32_t>(attribute, kFarId)),
                      static_cast<std::uint8_t>(type), Form::Short, 0};
  if (!PutBits(graph, record, attribute, bits)) return Short(graph);
  return AppendRecord(graph, place, record) ? 0 : Short(graph);
}

int AddAttributeString(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                       const char* text, std::size_t length) {
  Address stored = 0;
  if (text != nullptr) {
    stored = StoreText(graph, {text, length});
    if (stored == 0) return Short(graph);
  }
  return AddAttributeBits(graph, place, attribute, ATTR_STRING, stored);
}

int SetAttributeBits(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                     CdfgValueType type, std::uint64_t bits, unsigned width) {
  Attribute* found = FindAttribute(graph, place, attribute);
  if (found == nullptr) return AddAttributeBits(graph, place, attribute, type, bits);
  const std::uint64_t mask = width == 8 ? ~std::uint64_t{0} : (std::uint64_t{1} << (width * 8)) - 1;
  const std::uint64_t old_bits = found->type == ATTR_STRING ? 0 : BitsOf(graph, *found);
  if (!PutBits(graph, *found, attribute, (old_bits & ~mask) | bits)) return Short(graph);
  found->type = static_cast<std::uint8_t>(type);
  return 0;
}

int SetAttributeString(CdfgGraph& graph, std::size_t place, std::uint32_t attribute,
                       const char* text, std::size_t length) {
  Attribute* found = FindAttribute(graph, place, attribute);
  if (found == nullptr) return AddAttributeString(graph, place, attribute, text, length);
  if (found->type != ATTR_STRING) return -1;
  if (BitsOf(graph, *found) == 0) return 0;
  Address stored = 0;
  if (text != nullptr) {
    stored = StoreText(graph, {text, length});
    if (stored == 0) return Short(graph);
  }
  // The record has had room for an address before.
  return PutBits(graph, *found, attribute, stored) ? 0 : Short(graph);
}

int SetNodeFileName(CdfgGraph& graph, std::size_t place, const char* name, std::size_t length) {
  const std::uint32_t number = NumberOfFileName(graph, {name, length});
  if (number == kNoFileName) return Short(graph);
  RestAt(graph, place).position.file_name = number;
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
  FreeAll(graph->nodes.blocks);
  FreeAll(graph->rest.blocks);
  FreeAll(graph->ids.blocks);
  FreeAll(graph->attributes.memory.blocks);
  FreeAll(graph->arena.blocks);
  FreeAll(graph->user_data.blocks);
  std::free(graph->places.slots);
  std::free(graph->file_numbers.slots);
  std::free(graph->wide_slots);
  graph->~CdfgGraph();
  std::free(graph);
}

NodeId CdfgGetRoot(const CdfgGraph* graph) {
  for (std::size_t place = 0; place < CdfgNodeCount(graph); ++place) {
    const NodeRecord& node = NodeAt(*graph, place);
    if (node.kind == CFG_ROOT && !IsFreed(node)) return IdAt(*graph, place);
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
  return IsFreed(NodeAt(*graph, place)) ? 0 : IdAt(*graph, place);
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
  const std::uint32_t source = FindLivePlace(graph, position);
  if (source != kNoPlace) {
    RestAt(*graph, graph->node_count - 1).position = RestAt(*graph, source).position;
  }
  return id;
}

void CdfgFreeNode(CdfgGraph* graph, NodeId id) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return;
  NodeRecord& node = NodeAt(*graph, place);
  GiveRunBack(graph->attributes, node);
  node = kEmptyNode;
  node.own[0].form = Form::Freed;
  RestAt(*graph, place) = kEmptyRest;
  if (CdfgGetUserData(graph, id) != nullptr) ElementAt(graph->user_data, place) = nullptr;
}

void CdfgFreeTree(CdfgGraph* graph, NodeId id) {
  std::vector<NodeId> pending{id};
  while (!pending.empty()) {
    const NodeId current = pending.back();
    pending.pop_back();
    const std::uint32_t place = FindLivePlace(graph, current);
    if (place == kNoPlace) continue;
    const NodeRecord& node = NodeAt(*graph, place);
    const Attribute* attributes = AttributesOf(*graph, node);
    for (std::uint32_t i = 0; i < AttributeCount(node); ++i) {
      if (attributes[i].type != ATTR_NODE) continue;
      if (CdfgOwnsReference(node.kind, IdOf(*graph, attributes[i])) == 0) continue;
      pending.push_back(static_cast<NodeId>(BitsOf(*graph, attributes[i])));
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
  return FindLivePlace(graph, id) == kNoPlace ? 0 : 1;
}

std::uint32_t CdfgGetKind(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::kind);
}
int CdfgSetKind(CdfgGraph* graph, NodeId id, std::uint32_t kind) {
  return SetField(graph, id, &NodeRecord::kind, kind);
}
NodeId CdfgGetPrev(const CdfgGraph* graph, NodeId id) {
  return GetLink(graph, id, &NodeRest::prev);
}
int CdfgSetPrev(CdfgGraph* graph, NodeId id, NodeId prev) {
  return SetLink(graph, id, &NodeRest::prev, prev);
}
NodeId CdfgGetNext(const CdfgGraph* graph, NodeId id) {
  return GetField(graph, id, &NodeRecord::next);
}
int CdfgSetNext(CdfgGraph* graph, NodeId id, NodeId next) {
  return SetField(graph, id, &NodeRecord::next, next);
}
NodeId CdfgGetJump(const CdfgGraph* graph, NodeId id) {
  return GetLink(graph, id, &NodeRest::jump);
}
int CdfgSetJump(CdfgGraph* graph, NodeId id, NodeId jump) {
  return SetLink(graph, id, &NodeRest::jump, jump);
}
std::int32_t CdfgGetLine(const CdfgGraph* graph, NodeId id) {
  return GetPosition(graph, id, &Position::line);
}
int CdfgSetLine(CdfgGraph* graph, NodeId id, std::int32_t line) {
  return SetPosition(graph, id, &Position::line, line);
}
std::int32_t CdfgGetColumn(const CdfgGraph* graph, NodeId id) {
  return GetPosition(graph, id, &Position::column);
}
int CdfgSetColumn(CdfgGraph* graph, NodeId id, std::int32_t column) {
  return SetPosition(graph, id, &Position::column, column);
}

const char* CdfgGetFileName(const CdfgGraph* graph, NodeId id) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  return place == kNoPlace ? nullptr : FileNameOf(*graph, RestAt(*graph, place).position);
}

int CdfgSetFileName(CdfgGraph* graph, NodeId id, const char* name) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return -1;
  if (name != nullptr) return SetNodeFileName(*graph, place, name, std::strlen(name));
  RestAt(*graph, place).position.file_name = kNoFileName;
  return 0;
}

void* CdfgGetUserData(const CdfgGraph* graph, NodeId id) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  if (place == kNoPlace || graph->user_data.chunks.size <= place >> kChunkShift) return nullptr;
  void** chunk = graph->user_data.chunks[place >> kChunkShift];
  return chunk == nullptr ? nullptr : chunk[place & (kChunkSize - 1)];
}

int CdfgSetUserData(CdfgGraph* graph, NodeId id, void* data) {
  const std::uint32_t place = FindLivePlace(graph, id);
  if (place == kNoPlace) return -1;
  if (!MakeRoomAt(graph->user_data, place)) return Short(*graph);
  ElementAt(graph->user_data, place) = data;
  return 0;
}

// --- Attributes ----------------------------------------------------------------------------------

std::int32_t CdfgGetAttrCount(const CdfgGraph* graph, NodeId id) {
  const std::uint32_t place = FindPlaceToRead(graph, id);
  return place == kNoPlace ? 0 : static_cast<std::int32_t>(AttributeCount(NodeAt(*graph, place)));
}

std::uint32_t CdfgGetAttrIdAt(const CdfgGraph* graph, NodeId id, std::int32_t place) {
  const Attribute* attribute = AttributeAt(graph, id, place);
  return attribute == nullptr ? 0 : IdOf(*graph, *attribute);
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
  return found == nullptr || found->type != ATTR_STRING ? nullptr : StringOf(*graph, *found);
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
