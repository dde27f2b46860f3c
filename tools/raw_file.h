// A binary CDFG file record by record, exactly as it stands there.
//
// The graph store keeps what passes need: it drops attribute records of unknown type, merges
// records of the same id and forgets what stands behind a cut. A text form that goes back to the
// same bytes may lose none of that, so it works on this model instead, which any sequence of bytes
// can be turned into and back.
//
// Two flat arrays and views into the file's bytes: about 64 bytes a node and 24 an attribute.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/output.h"

struct RawAttribute {
  std::uint32_t id = 0;
  std::uint32_t type = 0;
  // Types 1, 2, 3, 4 and 6: the value bytes of the file as one unsigned number. Type 5: the number
  // of bytes at `text`. Any other type has no value.
  std::uint64_t bits = 0;
  const char* text = nullptr;
};

struct RawNode {
  std::uint32_t id = 0;
  std::uint32_t kind = 0;
  std::uint32_t prev = 0;
  std::uint32_t next = 0;
  std::uint32_t jump = 0;
  // As stored: the number of attribute records, or a negative number, which stands for none.
  std::int32_t count = 0;
  std::int32_t line = 0;
  std::int32_t column = 0;
  std::size_t first_attribute = 0;  // place in RawFile::attributes
  std::string_view file;            // empty: no file name
};

struct RawFile {
  std::vector<RawNode> nodes;  // in file order
  std::vector<RawAttribute> attributes;
  // What stands behind the last complete node record: empty, or the start of a record that was cut.
  std::string_view tail;
  // Bytes that views above point to and that this object owns. Everything else they point to, it
  // does not: the buffer that a file was parsed from has to outlive it.
  std::vector<std::unique_ptr<char[]>> storage;
};

// The attribute records of a node of `file`, in stored order.
std::span<const RawAttribute> RawAttributesOf(const RawFile& file, const RawNode& node);
// The value of a string attribute; empty for any other type.
std::string_view RawText(const RawAttribute& attribute);

// Takes any bytes; the result points into them.
RawFile ParseRaw(std::string_view bytes);
// The bytes of a file: for the result of ParseRaw, the very bytes it was made from.
void WriteRaw(const RawFile& file, Output* out);
std::string RawBytes(const RawFile& file);
