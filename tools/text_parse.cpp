// Reads the text form back into a CDFG file.
//
// One pass over the text, top down, with one token in hand. A node takes its place in the file when
// its kind is met; its attributes gather on a stack until its closing brace, so that those of one
// node end up side by side however deep the nodes between them nest. Names that stand for ids may
// be used before they are defined, so references by name are filled in at the end.
//
// The first error ends the parse: it is thrown as a TextError and caught in ParseText.

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>

#include "cdfg/vocabulary.h"
#include "tools/text_form.h"
#include "tools/text_tokens.h"
#include "tools/text_words.h"

namespace {

constexpr int kDeepest = 1000;  // nested nodes; the parser recurses along them
constexpr std::uint32_t kLastId = std::numeric_limits<std::uint32_t>::max();

// A label that is a name, and where it stands.
struct Label {
  std::uint32_t id;
  std::string_view word;
};

// A link of a node that is given by name.
struct NamedLink {
  std::size_t node;
  std::uint32_t RawNode::*field;
  std::string_view name;
};

// An id that was not written but counted out, and the kind it was given to, as it stands.
struct CountedId {
  std::uint32_t id;
  std::string_view kind;
};

struct Parser {
  RawFile* file;
  Lexer lexer;
  std::string_view current_file = {};
  std::uint32_t last_id = 0;
  int depth = 0;
  bool is_sorted = false;
  // The attributes of all open nodes, outermost first. A reference by name has it in `text` and
  // `bits` until the end, as a string has its bytes.
  std::vector<RawAttribute> open_attributes = {};
  bool has_named_attributes = false;
  std::vector<NamedLink> named_links = {};
  std::unordered_map<std::string_view, Label> labels = {};
  std::vector<CountedId> counted_ids = {};
};

std::string_view TakeBytes(Parser* parser) {
  std::unique_ptr<char[]> copy;
  const std::string_view bytes = TakeString(&parser->lexer, &copy);
  if (copy != nullptr) parser->file->storage.push_back(std::move(copy));
  return bytes;
}

std::string_view TakeFileName(Parser* parser) {
  if (parser->lexer.token.type != TokenType::kString) {
    FailExpected(parser->lexer, "a file name in double quotes");
  }
  return TakeBytes(parser);
}

// --- References ----------------------------------------------------------------------------------

// What stands behind '@': an id, or a name to be filled in at the end.
struct Target {
  std::uint32_t id = 0;
  std::string_view name = {};
};

Target TakeTarget(Parser* parser) {
  Lexer* lexer = &parser->lexer;
  if (!IsPunctuation(*lexer, '@')) FailExpected(*lexer, "'@' and a label");
  Advance(lexer);
  if (lexer->token.type == TokenType::kNumber) return {TakeUnsigned(lexer, "an id")};
  if (lexer->token.type != TokenType::kName) FailExpected(*lexer, "a label behind '@'");
  const std::string_view name = lexer->token.text;
  Advance(lexer);
  return {0, name};
}

void SetLink(Parser* parser, std::size_t node, std::uint32_t RawNode::*field) {
  const Target target = TakeTarget(parser);
  parser->file->nodes[node].*field = target.id;
  if (!target.name.empty()) parser->named_links.push_back({node, field, target.name});
}

void SetReference(Parser* parser, RawAttribute* attribute) {
  const Target target = TakeTarget(parser);
  attribute->type = ATTR_NODE;
  attribute->bits = target.id;
  if (target.name.empty()) return;
  attribute->bits = target.name.size();
  attribute->text = target.name.data();
  parser->has_named_attributes = true;
}

// --- Nodes in place ------------------------------------------------------------------------------

// A node just read, with what its chain needs to know.
struct Parsed {
  std::size_t node = 0;
  bool has_prev = false;
  bool has_next = false;
};

Parsed ParseNode(Parser* parser);

bool IsAtNode(Parser* parser) {
  Lexer* lexer = &parser->lexer;
  if (IsPunctuation(*lexer, '[') || IsPunctuation(*lexer, '*') || IsAtLabel(lexer)) return true;
  return lexer->token.type == TokenType::kName && FindKind(lexer->token.text);
}

// Links a node behind the one before it, where neither says otherwise.
void Join(RawFile* file, const Parsed& before, const Parsed& after) {
  if (!before.has_next) file->nodes[before.node].next = file->nodes[after.node].id;
  if (!after.has_prev) file->nodes[after.node].prev = file->nodes[before.node].id;
}

// Takes nodes defined in place: one, or a chain in brackets. `owner` is what the first one's prev
// becomes unless one is starred; the result is the id of the starred one, else of the first.
// Without an owner nothing refers to them, and so a star has no meaning.
std::uint32_t ParseInPlace(Parser* parser, std::optional<std::uint32_t> owner) {
  Lexer* lexer = &parser->lexer;
  const bool in_brackets = IsPunctuation(*lexer, '[');
  if (in_brackets) Advance(lexer);
  std::optional<std::size_t> starred;
  std::optional<Parsed> first;
  Parsed last;
  do {
    const bool is_starred = owner && IsPunctuation(*lexer, '*');
    if (is_starred && starred) FailExpected(*lexer, "only one starred node in a chain");
    if (is_starred) Advance(lexer);
    const Parsed parsed = ParseNode(parser);
    if (is_starred) starred = parsed.node;
    if (first) Join(parser->file, last, parsed);
    if (!first) first = parsed;
    last = parsed;
  } while (in_brackets && !IsPunctuation(*lexer, ']'));
  if (in_brackets) Advance(lexer);
  std::vector<RawNode>& nodes = parser->file->nodes;
  if (owner && !starred && !first->has_prev) nodes[first->node].prev = *owner;
  return nodes[starred.value_or(first->node)].id;
}

// --- Attributes ----------------------------------------------------------------------------------

std::string AttributesExpected(std::uint32_t kind) {
  const std::string known = AttributeWords(kind);
  if (known.empty()) return "the number of an attribute or '}'";
  return "an attribute of " + std::string(KindWord(kind)) + " (" + known + ") or '}'";
}

std::uint32_t TakeAttributeId(Parser* parser, std::uint32_t kind) {
  Lexer* lexer = &parser->lexer;
  if (lexer->token.type == TokenType::kNumber) return TakeUnsigned(lexer, "an attribute");
  std::optional<std::uint32_t> id;
  if (lexer->token.type == TokenType::kName) id = FindAttribute(kind, lexer->token.text);
  if (!id) FailExpected(*lexer, AttributesExpected(kind));
  Advance(lexer);
  return *id;
}

// type 9
std::uint32_t TakeBareType(Lexer* lexer) {
  Advance(lexer);
  const Token type = lexer->token;
  const std::uint32_t number = TakeUnsigned(lexer, "a value type");
  if (number >= ATTR_CHAR && number <= ATTR_NODE) {
    Fail(*lexer, type.text,
         "expected a value type without a value (not 1 to 6), found " + Found(type));
  }
  return number;
}

TypedBits TakeWordValue(Lexer* lexer) {
  if (IsWord(*lexer, "type")) return {TakeBareType(lexer)};
  if (IsWord(*lexer, "double")) {
    Advance(lexer);
    Expect(lexer, ':');
    return {ATTR_FLOAT, TakeUnsigned64(lexer, "the bits of a double")};
  }
  const std::optional<std::uint32_t> value = FindEnumerator(lexer->token.text);
  if (!value) FailExpected(*lexer, "a value");
  Advance(lexer);
  return {ATTR_INT, *value};
}

TypedBits TakeScalar(Lexer* lexer) {
  switch (lexer->token.type) {
    case TokenType::kNumber:
      return TakeTypedNumber(lexer);
    case TokenType::kChar:
      return {ATTR_CHAR, static_cast<unsigned char>(TakeChar(lexer))};
    case TokenType::kName:
      return TakeWordValue(lexer);
    default:
      FailExpected(*lexer, "a value");
  }
}

void ParseValue(Parser* parser, std::size_t node, RawAttribute* attribute) {
  if (IsAtNode(parser)) {
    attribute->type = ATTR_NODE;
    attribute->bits = ParseInPlace(parser, parser->file->nodes[node].id);
  } else if (IsPunctuation(parser->lexer, '@')) {
    SetReference(parser, attribute);
  } else if (parser->lexer.token.type == TokenType::kString) {
    const std::string_view string = TakeBytes(parser);
    attribute->type = ATTR_STRING;
    attribute->bits = string.size();
    attribute->text = string.data();
  } else {
    const TypedBits scalar = TakeScalar(&parser->lexer);
    attribute->type = scalar.type;
    attribute->bits = scalar.bits;
  }
}

void ParseAttribute(Parser* parser, std::size_t node) {
  RawAttribute attribute;
  attribute.id = TakeAttributeId(parser, parser->file->nodes[node].kind);
  Expect(&parser->lexer, '=');
  ParseValue(parser, node, &attribute);
  parser->open_attributes.push_back(attribute);
}

void ParseAttributes(Parser* parser, std::size_t node) {
  const auto base = static_cast<std::ptrdiff_t>(parser->open_attributes.size());
  Advance(&parser->lexer);
  while (!IsPunctuation(parser->lexer, '}')) ParseAttribute(parser, node);
  Advance(&parser->lexer);
  std::vector<RawAttribute>& open = parser->open_attributes;
  std::vector<RawAttribute>& closed = parser->file->attributes;
  RawNode& closing = parser->file->nodes[node];
  closing.first_attribute = closed.size();
  closing.count = static_cast<std::int32_t>(open.end() - open.begin() - base);
  closed.insert(closed.end(), open.begin() + base, open.end());
  open.erase(open.begin() + base, open.end());
}

// --- The header of a node ------------------------------------------------------------------------

void ParsePosition(Parser* parser, std::size_t node) {
  Lexer* lexer = &parser->lexer;
  if (lexer->token.type == TokenType::kString) {
    parser->current_file = TakeFileName(parser);
    parser->file->nodes[node].file = parser->current_file;
    Expect(lexer, ':');
  }
  parser->file->nodes[node].line = TakeInt(lexer, "a line");
  Expect(lexer, ':');
  parser->file->nodes[node].column = TakeInt(lexer, "a column");
}

void ParseCount(Parser* parser, std::size_t node) {
  const Token token = parser->lexer.token;
  const std::int32_t count = TakeInt(&parser->lexer, "a count");
  if (count >= 0) {
    Fail(parser->lexer, token.text,
         "expected a negative count (others are counted), found " + Found(token));
  }
  parser->file->nodes[node].count = count;
}

void ParsePrev(Parser* parser, std::size_t node) { SetLink(parser, node, &RawNode::prev); }

// In place only in brackets: what follows a bare node would belong to that node.
void ParseNext(Parser* parser, std::size_t node) {
  if (!IsPunctuation(parser->lexer, '[')) return SetLink(parser, node, &RawNode::next);
  const std::uint32_t next = ParseInPlace(parser, parser->file->nodes[node].id);
  parser->file->nodes[node].next = next;
}

void ParseJump(Parser* parser, std::size_t node) { SetLink(parser, node, &RawNode::jump); }

struct HeaderItem {
  std::string_view word;
  void (*parse)(Parser*, std::size_t node);
};

constexpr HeaderItem kHeaderItems[] = {
    {"at", ParsePosition}, {"count", ParseCount}, {"prev", ParsePrev},
    {"next", ParseNext},   {"jump", ParseJump},
};
constexpr std::size_t kPrevItem = 2;
constexpr std::size_t kNextItem = 3;

using SeenItems = std::array<bool, std::size(kHeaderItems)>;

// Takes one item of a header and answers whether there was one.
bool ParseHeaderItem(Parser* parser, std::size_t node, SeenItems* seen) {
  if (parser->lexer.token.type != TokenType::kName) return false;
  for (std::size_t i = 0; i < std::size(kHeaderItems); ++i) {
    if (!IsWord(parser->lexer, kHeaderItems[i].word)) continue;
    if ((*seen)[i]) FailExpected(parser->lexer, "at, count, prev, next and jump only once each");
    (*seen)[i] = true;
    Advance(&parser->lexer);
    kHeaderItems[i].parse(parser, node);
    return true;
  }
  return false;
}

// --- Nodes ---------------------------------------------------------------------------------------

std::string_view TakeNewName(Parser* parser) {
  const Lexer& lexer = parser->lexer;
  const std::string_view word = lexer.token.text;
  if (!IsLabel(word)) FailExpected(lexer, "a label that is no word of the form");
  const auto known = parser->labels.find(word);
  if (known != parser->labels.end()) {
    const std::string_view first = known->second.word;
    const auto offset = static_cast<std::size_t>(first.data() - lexer.text.data());
    const int line = ErrorAt(lexer.text, offset, {}).line;
    FailExpected(lexer, "a new label (line " + std::to_string(line) + " has this one)");
  }
  Advance(&parser->lexer);
  return word;
}

std::uint32_t TakeKind(Lexer* lexer) {
  if (lexer->token.type == TokenType::kNumber) return TakeUnsigned(lexer, "a kind");
  std::optional<std::uint32_t> kind;
  if (lexer->token.type == TokenType::kName) kind = FindKind(lexer->token.text);
  if (!kind) FailExpected(*lexer, "a node kind");
  Advance(lexer);
  return *kind;
}

std::uint32_t CountOn(Parser* parser) {
  if (parser->last_id == kLastId) {
    FailExpected(parser->lexer, "a number as label (the node before has the last id)");
  }
  const std::uint32_t id = parser->last_id + 1;
  parser->counted_ids.push_back({id, parser->lexer.token.text});
  return id;
}

// Takes the label, if there is one, and the kind, and makes the node.
std::size_t BeginNode(Parser* parser) {
  Lexer* lexer = &parser->lexer;
  std::optional<std::uint32_t> id;
  std::string_view name;
  if (IsAtLabel(lexer)) {
    if (lexer->token.type == TokenType::kNumber) {
      id = TakeUnsigned(lexer, "an id");
    } else {
      name = TakeNewName(parser);
    }
    Expect(lexer, ':');
  }
  RawNode node;
  node.id = parser->last_id = id ? *id : CountOn(parser);
  node.kind = TakeKind(lexer);
  node.file = parser->current_file;
  if (!name.empty()) parser->labels.emplace(name, Label{node.id, name});
  parser->file->nodes.push_back(node);
  return parser->file->nodes.size() - 1;
}

Parsed ParseNode(Parser* parser) {
  if (++parser->depth > kDeepest) {
    FailExpected(parser->lexer, "nodes nested at most " + std::to_string(kDeepest) + " deep");
  }
  const std::size_t node = BeginNode(parser);
  SeenItems seen = {};
  while (ParseHeaderItem(parser, node, &seen)) {
  }
  if (IsPunctuation(parser->lexer, '{')) {
    if (parser->file->nodes[node].count < 0) {
      FailExpected(parser->lexer, "no attributes behind a negative count");
    }
    ParseAttributes(parser, node);
  }
  --parser->depth;
  return {node, seen[kPrevItem], seen[kNextItem]};
}

// --- The whole text ------------------------------------------------------------------------------

void ParseTail(Parser* parser) {
  const std::string bytes = TakeHexBytes(&parser->lexer);
  auto copy = std::make_unique<char[]>(bytes.size());
  std::copy(bytes.begin(), bytes.end(), copy.get());
  parser->file->tail = {copy.get(), bytes.size()};
  parser->file->storage.push_back(std::move(copy));
}

void ParseTopLevel(Parser* parser) {
  Lexer* lexer = &parser->lexer;
  if (IsPunctuation(*lexer, '[') || IsAtLabel(lexer)) {
    ParseInPlace(parser, std::nullopt);
  } else if (IsWord(*lexer, "file")) {
    Advance(lexer);
    parser->current_file = TakeFileName(parser);
  } else if (IsWord(*lexer, "sorted")) {
    Advance(lexer);
    parser->is_sorted = true;
  } else if (IsWord(*lexer, "tail")) {
    ParseTail(parser);
  } else {
    ParseNode(parser);
  }
}

std::uint32_t IdOfName(const Parser& parser, std::string_view name) {
  const auto found = parser.labels.find(name);
  if (found == parser.labels.end()) {
    Fail(parser.lexer, name, "expected the label of a node, found '" + Printable(name) + "'");
  }
  return found->second.id;
}

// Fills in the references by name.
void Resolve(Parser* parser) {
  for (const NamedLink& link : parser->named_links) {
    parser->file->nodes[link.node].*link.field = IdOfName(*parser, link.name);
  }
  if (!parser->has_named_attributes) return;
  for (RawAttribute& attribute : parser->file->attributes) {
    if (attribute.type != ATTR_NODE || attribute.text == nullptr) continue;
    const std::string_view name(attribute.text, static_cast<std::size_t>(attribute.bits));
    attribute.bits = IdOfName(*parser, name);
    attribute.text = nullptr;
  }
}

// Two nodes may share an id only where both are given it in so many words: an id that was counted
// out and meets another is a slip of the pen.
void CheckCountedIds(const Parser& parser) {
  if (parser.counted_ids.empty()) return;
  std::unordered_map<std::uint32_t, int> uses;
  for (const CountedId& counted : parser.counted_ids) uses.emplace(counted.id, 0);
  for (const RawNode& node : parser.file->nodes) {
    const auto found = uses.find(node.id);
    if (found != uses.end()) ++found->second;
  }
  for (const CountedId& counted : parser.counted_ids) {
    if (uses[counted.id] < 2) continue;
    Fail(parser.lexer, counted.kind,
         "expected a free id for this node, found " + std::to_string(counted.id) +
             ", which another node has");
  }
}

void SortById(RawFile* file) {
  std::stable_sort(file->nodes.begin(), file->nodes.end(),
                   [](const RawNode& left, const RawNode& right) { return left.id < right.id; });
}

void Parse(Parser* parser) {
  Advance(&parser->lexer);
  while (parser->lexer.token.type != TokenType::kEnd) ParseTopLevel(parser);
  Resolve(parser);
  CheckCountedIds(*parser);
  if (parser->is_sorted) SortById(parser->file);
}

TextLabels LabelsOf(const Parser& parser) {
  TextLabels labels;
  for (const auto& [name, label] : parser.labels) labels.emplace(name, label.id);
  return labels;
}

}  // namespace

bool ParseText(std::string_view text, RawFile* file, TextLabels* labels, TextError* error) {
  *file = RawFile();
  Parser parser{file, Lexer{text}};
  try {
    Parse(&parser);
  } catch (TextError& thrown) {
    *error = std::move(thrown);
    return false;
  }
  if (labels != nullptr) *labels = LabelsOf(parser);
  return true;
}

std::unordered_map<std::uint32_t, std::string> NamesById(const TextLabels& labels) {
  std::unordered_map<std::uint32_t, std::string> names;
  for (const auto& [name, id] : labels) names.emplace(id, name);
  return names;
}
