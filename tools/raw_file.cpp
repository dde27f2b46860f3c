// Binary CDFG records to and from RawFile.
//
// A node record, all numbers big-endian:
//
//   offset  size  field
//        0     4  id
//        4     4  kind
//        8     4  prev
//       12     4  next
//       16     4  jump
//       20     4  attribute count, signed; none follow when it is negative
//       24   ...  attribute records
//        +     2  length n of the file name
//        +     n  file name
//        +     4  line
//        +     4  column
//
// An attribute record: id (4), value type (4), then the value, whose size the type fixes (see
// FixedSize; a string has its own 2-byte length in front; other types have no value).
//
// Reading measures first and fills afterwards: measuring finds the last complete record and how
// many there are, so that filling needs no bounds checks and no growing arrays.

#include "tools/raw_file.h"

#include <algorithm>
#include <cstring>

#include "cdfg/vocabulary.h"

namespace {

constexpr std::size_t kNodeHead = 24;
constexpr std::size_t kAttributeHead = 8;
constexpr std::size_t kStringHead = 2;
constexpr std::size_t kNodeFoot = 8;

std::uint64_t ReadNumber(const char* bytes, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = 0; i < size; ++i)
    number = number << 8 | static_cast<unsigned char>(bytes[i]);
  return number;
}

std::uint32_t Read32(const char* bytes) { return static_cast<std::uint32_t>(ReadNumber(bytes, 4)); }

std::int32_t ReadSigned32(const char* bytes) { return static_cast<std::int32_t>(Read32(bytes)); }

// Size of the value of every type but the string.
std::size_t FixedSize(std::uint32_t type) {
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

// --- Measuring: each moves `at` behind what it names, and answers false when that is cut ---------

struct Measure {
  std::string_view bytes;
  std::size_t at = 0;
};

bool Skip(Measure* measure, std::size_t size) {
  if (measure->bytes.size() - measure->at < size) return false;
  measure->at += size;
  return true;
}

bool SkipString(Measure* measure) {
  const char* head = measure->bytes.data() + measure->at;
  if (!Skip(measure, kStringHead)) return false;
  return Skip(measure, ReadNumber(head, kStringHead));
}

bool SkipAttribute(Measure* measure) {
  const char* head = measure->bytes.data() + measure->at;
  if (!Skip(measure, kAttributeHead)) return false;
  const std::uint32_t type = Read32(head + 4);
  return type == ATTR_STRING ? SkipString(measure) : Skip(measure, FixedSize(type));
}

bool SkipNode(Measure* measure, std::size_t* attributes) {
  const char* head = measure->bytes.data() + measure->at;
  if (!Skip(measure, kNodeHead)) return false;
  const std::int32_t count = ReadSigned32(head + 20);
  for (std::int32_t i = 0; i < count; ++i) {
    if (!SkipAttribute(measure)) return false;
  }
  *attributes += static_cast<std::size_t>(std::max(count, 0));
  return SkipString(measure) && Skip(measure, kNodeFoot);
}

// Makes room for all complete records of `bytes` and answers where they end.
std::size_t MakeRoom(std::string_view bytes, RawFile* file) {
  Measure measure{bytes};
  std::size_t nodes = 0;
  std::size_t attributes = 0;
  std::size_t end = 0;
  while (SkipNode(&measure, &attributes)) {
    ++nodes;
    end = measure.at;
  }
  file->nodes.reserve(nodes);
  file->attributes.reserve(attributes);
  return end;
}

// --- Filling: `at` stands in a complete record and is moved along
// ---------------------------------

std::string_view TakeString(const char** at) {
  const std::size_t size = ReadNumber(*at, kStringHead);
  const std::string_view text(*at + kStringHead, size);
  *at += kStringHead + size;
  return text;
}

RawAttribute TakeAttribute(const char** at) {
  RawAttribute attribute;
  attribute.id = Read32(*at);
  attribute.type = Read32(*at + 4);
  *at += kAttributeHead;
  if (attribute.type == ATTR_STRING) {
    const std::string_view text = TakeString(at);
    attribute.bits = text.size();
    attribute.text = text.data();
  } else {
    const std::size_t size = FixedSize(attribute.type);
    attribute.bits = ReadNumber(*at, size);
    *at += size;
  }
  return attribute;
}

void TakeNode(const char** at, RawFile* file) {
  RawNode node;
  node.id = Read32(*at);
  node.kind = Read32(*at + 4);
  node.prev = Read32(*at + 8);
  node.next = Read32(*at + 12);
  node.jump = Read32(*at + 16);
  node.count = ReadSigned32(*at + 20);
  *at += kNodeHead;
  node.first_attribute = file->attributes.size();
  for (std::int32_t i = 0; i < node.count; ++i) file->attributes.push_back(TakeAttribute(at));
  node.file = TakeString(at);
  node.line = ReadSigned32(*at);
  node.column = ReadSigned32(*at + 4);
  *at += kNodeFoot;
  file->nodes.push_back(node);
}

// --- Writing -------------------------------------------------------------------------------------

void AppendNumber(std::string* text, std::uint64_t number, std::size_t size) {
  char bytes[8];
  for (std::size_t i = size; i > 0; --i, number >>= 8) bytes[i - 1] = static_cast<char>(number);
  text->append(bytes, size);
}

void AppendSigned32(std::string* text, std::int32_t number) {
  AppendNumber(text, static_cast<std::uint32_t>(number), 4);
}

void AppendString(std::string* text, std::string_view string) {
  AppendNumber(text, string.size(), kStringHead);
  text->append(string);
}

void AppendAttribute(std::string* text, const RawAttribute& attribute) {
  AppendNumber(text, attribute.id, 4);
  AppendNumber(text, attribute.type, 4);
  if (attribute.type == ATTR_STRING) {
    AppendString(text, RawText(attribute));
  } else {
    AppendNumber(text, attribute.bits, FixedSize(attribute.type));
  }
}

void AppendNode(std::string* text, const RawFile& file, const RawNode& node) {
  for (const std::uint32_t field : {node.id, node.kind, node.prev, node.next, node.jump}) {
    AppendNumber(text, field, 4);
  }
  AppendSigned32(text, node.count);
  for (const RawAttribute& attribute : RawAttributesOf(file, node)) {
    AppendAttribute(text, attribute);
  }
  AppendString(text, node.file);
  AppendSigned32(text, node.line);
  AppendSigned32(text, node.column);
}

}  // namespace

std::span<const RawAttribute> RawAttributesOf(const RawFile& file, const RawNode& node) {
  if (node.count <= 0) return {};
  return {file.attributes.data() + node.first_attribute, static_cast<std::size_t>(node.count)};
}

std::string_view RawText(const RawAttribute& attribute) {
  if (attribute.type != ATTR_STRING) return {};
  return {attribute.text, static_cast<std::size_t>(attribute.bits)};
}

RawFile ParseRaw(std::string_view bytes) {
  RawFile file;
  const std::size_t complete = MakeRoom(bytes, &file);
  const char* at = bytes.data();
  const char* const end = bytes.data() + complete;
  while (at != end) TakeNode(&at, &file);
  file.tail = bytes.substr(complete);
  return file;
}

void WriteRaw(const RawFile& file, Output* out) {
  for (const RawNode& node : file.nodes) {
    AppendNode(&out->text, file, node);
    FlushWhenFull(out);
  }
  out->text.append(file.tail);
  Flush(out);
}

std::string RawBytes(const RawFile& file) {
  Output out;
  WriteRaw(file, &out);
  return std::move(out.text);
}
