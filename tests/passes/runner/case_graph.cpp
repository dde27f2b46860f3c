#include "tests/passes/runner/case_graph.h"

#include <charconv>
#include <optional>
#include <vector>

#include "tools/raw_file.h"
#include "tools/text_tokens.h"

namespace {

constexpr std::string_view kNew = "new";
constexpr std::string_view kSorted = "sorted\n";

std::size_t OffsetOf(const Lexer& lexer) {
  return static_cast<std::size_t>(lexer.token.text.data() - lexer.text.data());
}

// The number of a whole word of digits.
std::optional<std::uint32_t> NumberIn(std::string_view word) {
  std::uint32_t number = 0;
  const char* const word_end = word.data() + word.size();
  const auto [end, problem] = std::from_chars(word.data(), word_end, number);
  if (problem != std::errc() || end != word_end) return std::nullopt;
  return number;
}

// 3 for new3.
std::optional<std::uint32_t> NewNumber(std::string_view word) {
  if (!word.starts_with(kNew) || word.starts_with("new0")) return std::nullopt;
  return NumberIn(word.substr(kNew.size()));
}

std::optional<std::uint32_t> IdOf(std::string_view word, const CaseNames& names) {
  if (const auto count = NewNumber(word)) return names.last_id + *count;
  const auto found = names.labels.find(std::string(word));
  if (found == names.labels.end()) return std::nullopt;
  return found->second;
}

// --- Names to numbers ----------------------------------------------------------------------------

// A text with names replaced, and where each part of it came from.
struct Numbered {
  struct Part {
    std::size_t offset;  // in `text`
    std::size_t source;
  };
  std::string text;
  std::vector<Part> parts;
};

void AddPart(Numbered* numbered, std::string_view text, std::size_t source) {
  numbered->parts.push_back({numbered->text.size(), source});
  numbered->text += text;
}

std::size_t SourceOffset(const Numbered& numbered, std::size_t offset) {
  std::size_t source = 0;
  for (const Numbered::Part& part : numbered.parts) {
    if (part.offset <= offset) source = part.source + (offset - part.offset);
  }
  return source;
}

// Replaces every label, and every name behind '@', that the case knows.
Numbered WithNumbers(std::string_view text, const CaseNames& names) {
  Numbered numbered;
  if (names.is_sorted) AddPart(&numbered, kSorted, 0);
  std::size_t done = 0;
  bool is_reference = false;
  Lexer lexer{text};
  for (Advance(&lexer); lexer.token.type != TokenType::kEnd; Advance(&lexer)) {
    if (lexer.token.type == TokenType::kName && (is_reference || IsAtLabel(&lexer))) {
      if (const auto id = IdOf(lexer.token.text, names)) {
        const std::size_t offset = OffsetOf(lexer);
        AddPart(&numbered, text.substr(done, offset - done), done);
        AddPart(&numbered, std::to_string(*id), offset);
        done = offset + lexer.token.text.size();
      }
    }
    is_reference = IsPunctuation(lexer, '@');
  }
  AddPart(&numbered, text.substr(done), done);
  return numbered;
}

// --- Labels that go without saying ---------------------------------------------------------------

struct PrintedLabel {
  std::size_t begin;
  std::size_t end;  // of the kind's beginning
  std::string_view word;
  bool is_before_word;  // a kind without a name needs its label in front
};

struct PrintedText {
  std::vector<PrintedLabel> labels;
  std::unordered_set<std::string_view> referred;
};

// The numbers of a position (at 3:4, at "f.c":3:4) look like labels.
bool IsInPosition(const Token& before) { return before.text == "at" || before.text == ":"; }

PrintedText Scan(std::string_view text) {
  PrintedText printed;
  Lexer lexer{text};
  Token before;
  for (Advance(&lexer); lexer.token.type != TokenType::kEnd; Advance(&lexer)) {
    const Token token = lexer.token;
    if (before.text == "@") {
      printed.referred.insert(token.text);
    } else if (!IsInPosition(before) && IsAtLabel(&lexer)) {
      const std::size_t begin = OffsetOf(lexer);
      Advance(&lexer);
      Advance(&lexer);
      const bool is_before_word = lexer.token.type == TokenType::kName;
      printed.labels.push_back({begin, OffsetOf(lexer), token.text, is_before_word});
    }
    before = lexer.token;
  }
  return printed;
}

bool IsImplied(const PrintedLabel& label, std::uint32_t id, std::uint32_t last_id,
               const PrintedText& printed, const CaseNames& names) {
  return id == last_id + 1 && label.is_before_word && !printed.referred.contains(label.word) &&
         !names.by_id.contains(id);
}

std::string WithoutImpliedLabels(std::string_view text, const CaseNames& names) {
  const PrintedText printed = Scan(text);
  std::string result;
  std::size_t done = 0;
  std::uint32_t last_id = 0;
  for (const PrintedLabel& label : printed.labels) {
    const auto named = IdOf(label.word, names);
    const std::uint32_t id = named ? *named : NumberIn(label.word).value_or(0);
    if (IsImplied(label, id, last_id, printed, names)) {
      result += text.substr(done, label.begin - done);
      done = label.end;
    }
    last_id = id;
  }
  result += text.substr(done);
  return result;
}

std::unordered_map<std::uint32_t, std::string> NamesFor(const RawFile& file,
                                                        const CaseNames& names) {
  std::unordered_map<std::uint32_t, std::string> result = names.by_id;
  for (const RawNode& node : file.nodes) {
    const std::string name = NameOfNode(node.id, names);
    if (name.starts_with(kNew)) result.emplace(node.id, name);
  }
  return result;
}

void TakeIds(const RawFile& file, CaseNames* names) {
  names->is_sorted = true;
  names->last_id = 0;
  for (const RawNode& node : file.nodes) {
    if (node.id <= names->last_id) names->is_sorted = false;
    names->last_id = node.id;
    names->ids.insert(node.id);
  }
}

}  // namespace

bool ReadBefore(std::string_view text, std::string* bytes, CaseNames* names, TextError* error) {
  RawFile file;
  *names = CaseNames();
  if (!ParseText(text, &file, &names->labels, error)) return false;
  for (const auto& [label, id] : names->labels) {
    if (!NewNumber(label)) continue;
    *error = ErrorAt(text, text.find(label + ":"),
                     "expected another label: new1, new2, ... are the nodes that the steps make");
    return false;
  }
  names->by_id = NamesById(names->labels);
  TakeIds(file, names);
  *bytes = RawBytes(file);
  return true;
}

bool ReadAfter(std::string_view text, const CaseNames& names, std::string* bytes,
               TextError* error) {
  Numbered numbered;
  try {
    numbered = WithNumbers(text, names);
  } catch (const TextError& thrown) {
    *error = thrown;
    return false;
  }
  RawFile file;
  if (!ParseText(numbered.text, &file, nullptr, error)) {
    *error = ErrorAt(text, SourceOffset(numbered, error->offset), error->message);
    return false;
  }
  *bytes = RawBytes(file);
  return true;
}

std::string PrintAfter(std::string_view bytes, const CaseNames& names) {
  const RawFile file = ParseRaw(bytes);
  const auto names_by_id = NamesFor(file, names);
  TextStyle style;
  style.names = &names_by_id;
  const std::string text = TextOf(file, style);
  std::string_view shown = text;
  if (names.is_sorted && shown.starts_with(kSorted)) shown.remove_prefix(kSorted.size());
  return WithoutImpliedLabels(shown, names);
}

std::string NameOfNode(std::uint32_t id, const CaseNames& names) {
  const auto named = names.by_id.find(id);
  if (named != names.by_id.end()) return named->second;
  if (id > names.last_id && !names.ids.contains(id)) {
    return std::string(kNew) + std::to_string(id - names.last_id);
  }
  return std::to_string(id);
}
