#include "cdfg/names.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "cdfg/vocabulary.h"

namespace {

struct AttributeRow {
  std::string_view list;
  std::uint32_t id;
  const char* name;
};

struct KindRow {
  std::uint32_t kind;
  const char* name;
  std::string_view list;
};

struct EnumeratorRow {
  std::string_view enumeration;
  std::uint32_t value;
  const char* name;
};

struct EnumeratedRow {
  std::uint32_t kind;
  std::uint32_t attribute;
  std::string_view enumeration;
};

constexpr AttributeRow kAttributes[] = {
#define ROW(list, id, name) {#list, id, #name},
    CDFG_ATTRIBUTES(ROW)
#undef ROW
};

constexpr KindRow kKinds[] = {
#define ROW(kind, name, list) {kind, #name, #list},
    CDFG_KINDS(ROW)
#undef ROW
};

constexpr EnumeratorRow kEnumerators[] = {
#define ROW(enumeration, value, name) {#enumeration, value, #name},
    CDFG_ENUMERATORS(ROW)
#undef ROW
};

constexpr EnumeratedRow kEnumerated[] = {
#define ROW(kind, attribute, enumeration) {kind, attribute, #enumeration},
    CDFG_ENUMERATED_ATTRIBUTES(ROW)
#undef ROW
};

constexpr const char* kValueTypes[] = {"",
#define ROW(type, name) #name,
                                       CDFG_VALUE_TYPES(ROW)
#undef ROW
};

// What the names of one kind are read from: its own name and its run of rows in kAttributes.
struct KindEntry {
  const char* name = "";
  std::uint16_t first_attribute = 0;
  std::uint16_t attribute_count = 0;
};

constexpr KindEntry EntryOf(const KindRow& row) {
  KindEntry entry{row.name};
  for (std::size_t i = 0; i < std::size(kAttributes); ++i) {
    if (kAttributes[i].list != row.list) continue;
    if (entry.attribute_count == 0) entry.first_attribute = static_cast<std::uint16_t>(i);
    ++entry.attribute_count;
  }
  return entry;
}

// Indexed by kind number, so that a name costs one step however large the graph is.
constexpr auto kEntries = [] {
  std::array<KindEntry, NODE_END + 1> entries{};
  for (const KindRow& row : kKinds) entries[row.kind] = EntryOf(row);
  return entries;
}();

int WriteName(char* buffer, const char* name) {
  static_assert(kCdfgNameSize >= sizeof("DfgFuncCall_FUNC_TYPEDEFLINK"));
  std::strcpy(buffer, name);
  return 0;
}

const char* AttributeName(std::uint32_t kind, std::uint32_t attribute) {
  if (kind >= kEntries.size()) return "";
  const KindEntry& entry = kEntries[kind];
  for (std::size_t i = 0; i < entry.attribute_count; ++i) {
    const AttributeRow& row = kAttributes[entry.first_attribute + i];
    if (row.id == attribute) return row.name;
  }
  return "";
}

std::string_view EnumerationOf(std::uint32_t kind, std::uint32_t attribute) {
  for (const EnumeratedRow& row : kEnumerated) {
    if (row.kind == kind && row.attribute == attribute) return row.enumeration;
  }
  return {};
}

const char* EnumeratorName(std::string_view enumeration, std::uint32_t value) {
  for (const EnumeratorRow& row : kEnumerators) {
    if (row.enumeration == enumeration && row.value == value) return row.name;
  }
  return "";
}

}  // namespace

int CdfgKindName(char* buffer, std::uint32_t kind) {
  return WriteName(buffer, kind < kEntries.size() ? kEntries[kind].name : "");
}

int CdfgAttrName(char* buffer, std::uint32_t kind, std::uint32_t attribute) {
  return WriteName(buffer, AttributeName(kind, attribute));
}

int CdfgValueName(char* buffer, std::uint32_t kind, std::uint32_t attribute, std::uint32_t value) {
  const std::string_view enumeration = EnumerationOf(kind, attribute);
  return WriteName(buffer, enumeration.empty() ? "" : EnumeratorName(enumeration, value));
}

int CdfgValueTypeName(char* buffer, std::uint32_t type) {
  return WriteName(buffer, type < std::size(kValueTypes) ? kValueTypes[type] : "");
}
