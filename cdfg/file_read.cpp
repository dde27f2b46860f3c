#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "cdfg/bytes.h"
#include "cdfg/file.h"
#include "cdfg/graph_store.h"

namespace {

// Room for the longest string (65535 bytes) and much more, so that every elementary read finds its
// bytes side by side in the buffer.
constexpr std::size_t kBufferSize = 256 * 1024;
constexpr std::uint32_t kMostAttributesAhead = 32;

// What a stream has still to give. Once a read has failed, all later ones fail.
struct Source {
  std::FILE* stream;
  unsigned char* buffer;
  std::size_t position = 0;
  std::size_t filled = 0;
  bool ended = false;
};

bool Refill(Source& source, std::size_t size) {
  const std::size_t left = source.filled - source.position;
  std::memmove(source.buffer, source.buffer + source.position, left);
  source.position = 0;
  source.filled = left;
  while (source.filled < size) {
    const std::size_t got =
        std::fread(source.buffer + source.filled, 1, kBufferSize - source.filled, source.stream);
    if (got == 0) return false;
    source.filled += got;
  }
  return true;
}

// What stands in the buffer ends before `size` bytes: the rest of them from the stream.
[[gnu::noinline]] const unsigned char* TakeFromStream(Source& source, std::size_t size) {
  if (source.ended || !Refill(source, size)) {
    source.ended = true;
    source.position = source.filled;
    return nullptr;
  }
  const unsigned char* bytes = source.buffer + source.position;
  source.position += size;
  return bytes;
}

// The next `size` bytes, null when they are not all there.
inline const unsigned char* Take(Source& source, std::size_t size) {
  if (source.filled - source.position < size) return TakeFromStream(source, size);
  const unsigned char* bytes = source.buffer + source.position;
  source.position += size;
  return bytes;
}

struct Text {
  const char* bytes = nullptr;  // null: the read failed
  std::size_t length = 0;
};

Text TakeText(Source& source) {
  const unsigned char* count_bytes = Take(source, 2);
  if (count_bytes == nullptr) return {};
  const std::size_t count = ReadBig16(count_bytes);
  const auto* bytes = reinterpret_cast<const char*>(Take(source, count));
  if (bytes == nullptr) return {};
  return {bytes, strnlen(bytes, count)};
}

unsigned WidthOf(std::uint32_t type) {
  switch (type) {
    case ATTR_CHAR:
      return 1;
    case ATTR_INT:
    case ATTR_NODE:
      return 4;
    case ATTR_LONGLONG:
    case ATTR_FLOAT:
      return 8;
    default:
      return 0;
  }
}

std::uint64_t ReadBits(const unsigned char* bytes, unsigned width) {
  if (width == 4) return ReadBig32(bytes);
  return width == 8 ? ReadBig64(bytes) : bytes[0];
}

// What is being read of one node's attributes.
struct Reading {
  std::size_t place;
  std::uint64_t above = 0;  // no attribute that is there has this id or a higher one
};

// Mostly the ids of a node ascend, and then nothing has to be looked for.
bool IsNew(Reading& reading, std::uint32_t id) {
  if (id < reading.above) return false;
  reading.above = std::uint64_t{id} + 1;
  return true;
}

void ReadStringValue(CdfgGraph& graph, Reading& reading, std::uint32_t id, Source& source) {
  const Text text = TakeText(source);
  if (text.bytes == nullptr) return;
  if (IsNew(reading, id)) {
    AddAttributeString(graph, reading.place, id, text.bytes, text.length);
  } else {
    SetAttributeString(graph, reading.place, id, text.bytes, text.length);
  }
  if (graph.memory_short) std::puts("Error:Cdfg read string short of memory");
}

void ReadPlainValue(CdfgGraph& graph, Reading& reading, std::uint32_t id, std::uint32_t type,
                    Source& source) {
  const unsigned width = WidthOf(type);
  const unsigned char* value = width == 0 ? nullptr : Take(source, width);
  if (value == nullptr) return;
  const std::uint64_t bits = ReadBits(value, width);
  if (IsNew(reading, id)) {
    AddAttributeBits(graph, reading.place, id, static_cast<CdfgValueType>(type), bits);
  } else {
    SetAttributeBits(graph, reading.place, id, static_cast<CdfgValueType>(type), bits, width);
  }
}

// False when there is no further record; a value cut short is left out.
bool ReadAttribute(CdfgGraph& graph, Reading& reading, Source& source) {
  const unsigned char* head = Take(source, 8);
  if (head == nullptr) return false;
  const std::uint32_t id = ReadBig32(head);
  const std::uint32_t type = ReadBig32(head + 4);
  if (type == ATTR_STRING) {
    ReadStringValue(graph, reading, id, source);
  } else {
    ReadPlainValue(graph, reading, id, type, source);
  }
  return true;
}

// Most nodes have their neighbour's file name, which has no zero in it.
bool IsLastFileName(const CdfgGraph& graph, std::string_view name) {
  if (graph.last_file_name == kNoFileName) return false;
  const char* last = graph.file_names[graph.last_file_name];
  return name == std::string_view(last, StoredLength(last));
}

// File name, line and column go into the node only when all three are there.
bool ReadPosition(CdfgGraph& graph, std::size_t place, Source& source) {
  const unsigned char* count_bytes = Take(source, 2);
  if (count_bytes == nullptr) return false;
  const std::size_t count = ReadBig16(count_bytes);
  const unsigned char* bytes = Take(source, count + 8);
  if (bytes == nullptr) return false;
  const auto* name = reinterpret_cast<const char*>(bytes);
  Position& position = RestAt(graph, place).position;
  if (IsLastFileName(graph, {name, count})) {
    position.file_name = graph.last_file_name;
  } else if (const std::size_t length = strnlen(name, count); length != 0) {
    SetNodeFileName(graph, place, name, length);
  }
  position.line = static_cast<std::int32_t>(ReadBig32(bytes + count));
  position.column = static_cast<std::int32_t>(ReadBig32(bytes + count + 4));
  return true;
}

// False at the end of the file, wherever in the record it comes, and when memory is short.
bool ReadNode(CdfgGraph& graph, Source& source) {
  const unsigned char* head = Take(source, 20);
  if (head == nullptr) return false;
  if (!AppendNode(graph, ReadBig32(head))) return false;
  const std::size_t place = graph.node_count - 1;
  NodeRecord& node = NodeAt(graph, place);
  node.kind = ReadBig32(head + 4);
  node.next = ReadBig32(head + 12);
  NodeRest& rest = RestAt(graph, place);
  rest.prev = ReadBig32(head + 8);
  rest.jump = ReadBig32(head + 16);
  const unsigned char* count_bytes = Take(source, 4);
  if (count_bytes == nullptr) return false;
  const auto count = static_cast<std::int32_t>(ReadBig32(count_bytes));
  if (count > 0) {
    ReserveAttributes(graph, place,
                      std::min(static_cast<std::uint32_t>(count), kMostAttributesAhead));
  }
  Reading reading{place};
  std::int32_t left = count;
  while (left > 0 && !graph.memory_short && ReadAttribute(graph, reading, source)) --left;
  return ReadPosition(graph, place, source) && !graph.memory_short;
}

CdfgGraph* SayShortOfMemory() {
  std::puts("Error:Cdfg read short of memory");
  return nullptr;
}

}  // namespace

CdfgGraph* CdfgReadStream(std::FILE* stream) {
  auto* buffer = static_cast<unsigned char*>(std::malloc(kBufferSize));
  CdfgGraph* graph = buffer == nullptr ? nullptr : CdfgNewGraph();
  if (graph == nullptr) {
    std::free(buffer);
    return SayShortOfMemory();
  }
  Source source{stream, buffer};
  while (ReadNode(*graph, source)) {
  }
  std::free(buffer);
  return graph;
}

CdfgGraph* CdfgReadFile(const char* path) {
  errno = 0;
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return errno == ENOMEM ? SayShortOfMemory() : nullptr;
  // Reading goes through a buffer of our own.
  std::setvbuf(stream, nullptr, _IONBF, 0);
  CdfgGraph* graph = CdfgReadStream(stream);
  std::fclose(stream);
  return graph;
}
