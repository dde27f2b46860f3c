#include "tools/text_words.h"

#include <array>
#include <cstddef>
#include <span>
#include <unordered_map>

#include "cdfg/vocabulary.h"

namespace {

struct KindRow {
  std::uint32_t kind;
  std::string_view name;
  std::string_view list;
};

struct AttributeRow {
  std::string_view list;
  std::uint32_t id;
  std::string_view name;
};

struct EnumeratorRow {
  std::string_view enumeration;
  std::uint32_t value;
  std::string_view name;
};

struct EnumeratedRow {
  std::uint32_t kind;
  std::uint32_t attribute;
  std::string_view enumeration;
};

constexpr KindRow kKinds[] = {
#define ROW(kind, name, list) {kind, #name, #list},
    CDFG_KINDS(ROW)
#undef ROW
};

constexpr AttributeRow kAttributes[] = {
#define ROW(list, id, name) {#list, id, #name},
    CDFG_ATTRIBUTES(ROW)
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

// Behind the first underscore: the prefix of a name has none.
std::string_view ShortName(std::string_view name) { return name.substr(name.find('_') + 1); }

struct ShortRow {
  std::uint32_t id;
  std::string_view word;
};

struct KindEntry {
  std::string_view name;
  std::span<const ShortRow> attributes;
};

// Everything below is looked up once per node or attribute of a file, so it is laid out by number
// and hashed by name.
struct Tables {
  std::array<ShortRow, std::size(kAttributes)> short_rows;
  std::array<KindEntry, NODE_END + 1> kinds;
  std::unordered_map<std::string_view, std::uint32_t> kind_numbers;
  std::unordered_map<std::string_view, std::uint32_t> attribute_numbers;  // by full name
  std::unordered_map<std::string_view, std::uint32_t> enumerator_values;
};

// The rows of a list stand together.
std::span<const ShortRow> RowsOfList(const Tables& tables, std::string_view list) {
  std::size_t first = 0;
  while (first < std::size(kAttributes) && kAttributes[first].list != list) ++first;
  std::size_t end = first;
  while (end < std::size(kAttributes) && kAttributes[end].list == list) ++end;
  return std::span(tables.short_rows).subspan(first, end - first);
}

void FillTables(Tables* tables) {
  for (std::size_t i = 0; i < std::size(kAttributes); ++i) {
    tables->short_rows[i] = {kAttributes[i].id, ShortName(kAttributes[i].name)};
    tables->attribute_numbers.emplace(kAttributes[i].name, kAttributes[i].id);
  }
  for (const KindRow& row : kKinds) {
    tables->kinds[row.kind] = {row.name, RowsOfList(*tables, row.list)};
    tables->kind_numbers.emplace(row.name, row.kind);
  }
  for (const EnumeratorRow& row : kEnumerators) {
    tables->enumerator_values.emplace(row.name, row.value);
  }
}

const Tables& TheTables() {
  static const Tables* const tables = [] {
    auto* made = new Tables;  // lives as long as the program: its rows point into itself
    FillTables(made);
    return made;
  }();
  return *tables;
}

std::span<const ShortRow> AttributesOf(std::uint32_t kind) {
  const Tables& tables = TheTables();
  return kind < tables.kinds.size() ? tables.kinds[kind].attributes : std::span<const ShortRow>();
}

std::optional<std::uint32_t> Find(
    const std::unordered_map<std::string_view, std::uint32_t>& numbers, std::string_view word) {
  const auto found = numbers.find(word);
  return found == numbers.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

std::string_view KindWord(std::uint32_t kind) {
  const Tables& tables = TheTables();
  return kind < tables.kinds.size() ? tables.kinds[kind].name : std::string_view();
}

std::string_view AttributeWord(std::uint32_t kind, std::uint32_t attribute) {
  for (const ShortRow& row : AttributesOf(kind)) {
    if (row.id == attribute) return row.word;
  }
  return {};
}

std::string_view EnumeratorWord(std::uint32_t kind, std::uint32_t attribute, std::uint32_t value) {
  for (const EnumeratedRow& enumerated : kEnumerated) {
    if (enumerated.kind != kind || enumerated.attribute != attribute) continue;
    for (const EnumeratorRow& row : kEnumerators) {
      if (row.value == value && row.enumeration == enumerated.enumeration) return row.name;
    }
  }
  return {};
}

std::optional<std::uint32_t> FindKind(std::string_view word) {
  return Find(TheTables().kind_numbers, word);
}

std::optional<std::uint32_t> FindAttribute(std::uint32_t kind, std::string_view word) {
  for (const ShortRow& row : AttributesOf(kind)) {
    if (row.word == word) return row.id;
  }
  return Find(TheTables().attribute_numbers, word);
}

std::optional<std::uint32_t> FindEnumerator(std::string_view word) {
  return Find(TheTables().enumerator_values, word);
}

std::string AttributeWords(std::uint32_t kind) {
  std::string words;
  for (const ShortRow& row : AttributesOf(kind)) {
    if (!words.empty()) words += ", ";
    words += row.word;
  }
  return words;
}
