// Pieces of a binary CDFG file, to build input from: big-endian, as cdfg/file.h lays them out.
//
//   const std::string file = Head(1, CFG_ROOT, {.next = 2}, 1) + IntAttribute(2, 7) + Tail();
#pragma once

#include <bit>
#include <cstdint>
#include <string>

#include "cdfg/vocabulary.h"

namespace support {

inline std::string Big(std::uint64_t value, int size) {
  std::string bytes;
  for (int shift = (size - 1) * 8; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<char>(value >> shift & 0xFF));
  }
  return bytes;
}
inline std::string U16(std::uint64_t value) { return Big(value, 2); }
inline std::string U32(std::uint64_t value) { return Big(value, 4); }
inline std::string U64(std::uint64_t value) { return Big(value, 8); }

// A string with its count.
inline std::string Text(const std::string& text) { return U16(text.size()) + text; }

struct Links {
  std::uint32_t prev = 0;
  std::uint32_t next = 0;
  std::uint32_t jump = 0;
};

// A node record up to its attributes.
inline std::string Head(std::uint32_t id, std::uint32_t kind, const Links& links = {},
                        std::int64_t attribute_count = 0) {
  return U32(id) + U32(kind) + U32(links.prev) + U32(links.next) + U32(links.jump) +
         U32(static_cast<std::uint64_t>(attribute_count));
}

// A node record from behind its attributes.
inline std::string Tail(const std::string& file_name = "", std::int64_t line = 0,
                        std::int64_t column = 0) {
  return Text(file_name) + U32(static_cast<std::uint64_t>(line)) +
         U32(static_cast<std::uint64_t>(column));
}

// A whole node without attributes.
inline std::string PlainNode(std::uint32_t id, std::uint32_t kind, const Links& links = {}) {
  return Head(id, kind, links) + Tail();
}

inline std::string CharAttribute(std::uint32_t id, int value) {
  return U32(id) + U32(ATTR_CHAR) + Big(static_cast<std::uint64_t>(value), 1);
}
inline std::string IntAttribute(std::uint32_t id, std::int64_t value) {
  return U32(id) + U32(ATTR_INT) + U32(static_cast<std::uint64_t>(value));
}
inline std::string Int64Attribute(std::uint32_t id, std::int64_t value) {
  return U32(id) + U32(ATTR_LONGLONG) + U64(static_cast<std::uint64_t>(value));
}
inline std::string DoubleAttribute(std::uint32_t id, double value) {
  return U32(id) + U32(ATTR_FLOAT) + U64(std::bit_cast<std::uint64_t>(value));
}
inline std::string StringAttribute(std::uint32_t id, const std::string& value) {
  return U32(id) + U32(ATTR_STRING) + Text(value);
}
inline std::string NodeAttribute(std::uint32_t id, std::uint32_t value) {
  return U32(id) + U32(ATTR_NODE) + U32(value);
}
// A record whose type has no value bytes.
inline std::string UnknownAttribute(std::uint32_t id, std::uint32_t type) {
  return U32(id) + U32(type);
}

}  // namespace support
