#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>

#include "cdfg/bytes.h"
#include "cdfg/file.h"
#include "cdfg/graph_store.h"

namespace {

constexpr std::size_t kBufferSize = 256 * 1024;
// More than any part of a record but a text's bytes: its head, an attribute, a position.
constexpr std::size_t kPartSize = 64;
// File names up to this length are copied as one block of fixed size, which takes no call.
constexpr std::size_t kShortName = 30;

// A file name as it stands in records, with its length in front.
struct EncodedName {
  std::uint32_t number = kNoFileName;
  std::size_t size = 2;  // 0: too long to be kept here
  unsigned char bytes[2 + kShortName] = {};
};

struct Sink {
  std::FILE* stream;
  unsigned char* buffer;
  unsigned char* end;          // behind the bytes collected
  EncodedName last_name = {};  // most nodes have their neighbour's
};

void Flush(Sink& sink) {
  std::fwrite(sink.buffer, 1, static_cast<std::size_t>(sink.end - sink.buffer), sink.stream);
  sink.end = sink.buffer;
}

// Room for one part of a record.
unsigned char* Room(Sink& sink) {
  if (static_cast<std::size_t>(sink.end - sink.buffer) > kBufferSize - kPartSize) Flush(sink);
  return sink.end;
}

void PutBytes(Sink& sink, const char* bytes, std::size_t size) {
  if (static_cast<std::size_t>(sink.end - sink.buffer) + size > kBufferSize) Flush(sink);
  if (size > kBufferSize) {
    std::fwrite(bytes, 1, size, sink.stream);
  } else if (size != 0) {
    std::memcpy(sink.end, bytes, size);
    sink.end += size;
  }
}

void PutText(Sink& sink, const char* text) {
  const std::size_t length = text == nullptr ? 0 : StoredLength(text);
  sink.end = WriteBig16(Room(sink), static_cast<std::uint16_t>(length));
  PutBytes(sink, text, length);
}

void PutAttribute(Sink& sink, const CdfgGraph& graph, const Attribute& attribute) {
  const std::uint64_t bits = BitsOf(graph, attribute);
  unsigned char* end = WriteBig32(Room(sink), IdOf(graph, attribute));
  end = WriteBig32(end, attribute.type);
  switch (attribute.type) {
    case ATTR_CHAR:
      *end++ = static_cast<unsigned char>(bits);
      break;
    case ATTR_INT:
    case ATTR_NODE:
      end = WriteBig32(end, static_cast<std::uint32_t>(bits));
      break;
    case ATTR_LONGLONG:
    case ATTR_FLOAT:
      end = WriteBig64(end, bits);
      break;
    default:
      break;
  }
  sink.end = end;
  if (attribute.type == ATTR_STRING) PutText(sink, StringOf(graph, attribute));
}

EncodedName Encode(const CdfgGraph& graph, std::uint32_t number) {
  EncodedName encoded;
  encoded.number = number;
  const char* name = graph.file_names[number];
  const std::size_t length = StoredLength(name);
  encoded.size = length > kShortName ? 0 : 2 + length;
  if (encoded.size == 0) return encoded;
  std::memcpy(WriteBig16(encoded.bytes, static_cast<std::uint16_t>(length)), name, length);
  return encoded;
}

void PutPosition(Sink& sink, const CdfgGraph& graph, const Position& position) {
  unsigned char* end = Room(sink);
  EncodedName& name = sink.last_name;
  if (position.file_name == kNoFileName) {
    end = WriteBig16(end, 0);
  } else {
    if (name.number != position.file_name) name = Encode(graph, position.file_name);
    if (name.size == 0) {
      PutText(sink, FileNameOf(graph, position));
      end = Room(sink);
    } else {
      std::memcpy(end, name.bytes, sizeof name.bytes);
      end += name.size;
    }
  }
  end = WriteBig32(end, static_cast<std::uint32_t>(position.line));
  sink.end = WriteBig32(end, static_cast<std::uint32_t>(position.column));
}

void PutNode(Sink& sink, const CdfgGraph& graph, std::size_t place, const NodeRecord& node) {
  const std::uint32_t count = AttributeCount(node);
  const NodeRest& rest = RestAt(graph, place);
  unsigned char* end = Room(sink);
  for (const std::uint32_t field :
       {IdAt(graph, place), node.kind, rest.prev, node.next, rest.jump, count}) {
    end = WriteBig32(end, field);
  }
  sink.end = end;
  const Attribute* attributes = AttributesOf(graph, node);
  for (std::uint32_t i = 0; i < count; ++i) PutAttribute(sink, graph, attributes[i]);
  PutPosition(sink, graph, rest.position);
}

void PutGraph(const CdfgGraph& graph, std::FILE* stream, unsigned char* buffer) {
  Sink sink{stream, buffer, buffer, {}};
  for (std::size_t place = 0; place < graph.node_count; ++place) {
    const NodeRecord& node = NodeAt(graph, place);
    if (!IsFreed(node)) PutNode(sink, graph, place, node);
  }
  Flush(sink);
}

int Short(CdfgGraph* graph) {
  graph->memory_short = true;
  return -1;
}

}  // namespace

int CdfgWriteStream(CdfgGraph* graph, std::FILE* stream) {
  if (graph == nullptr) return -1;
  auto* buffer = static_cast<unsigned char*>(std::malloc(kBufferSize));
  if (buffer == nullptr) return Short(graph);
  PutGraph(*graph, stream, buffer);
  std::free(buffer);
  return 0;
}

int CdfgWriteFile(CdfgGraph* graph, const char* path) {
  if (graph == nullptr) return -1;
  // Whatever memory is needed is there before the old file is given up.
  auto* buffer = static_cast<unsigned char*>(std::malloc(kBufferSize));
  if (buffer == nullptr) return Short(graph);
  errno = 0;
  std::FILE* stream = std::fopen(path, "wb");
  const bool is_short = stream == nullptr && errno == ENOMEM;
  if (stream != nullptr) {
    std::setvbuf(stream, nullptr, _IONBF, 0);
    PutGraph(*graph, stream, buffer);
    std::fclose(stream);
  }
  std::free(buffer);
  if (is_short) return Short(graph);
  return stream == nullptr ? -1 : 0;
}
