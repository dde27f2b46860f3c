// Prints a CDFG file as text: nested as a tree, or flat with one node a line.
//
// Why nested: a graph is read by its structure, and the links that only repeat the structure (a
// chain's next and prev, the first node's way back to its owner) need not be written at all.
//
//   1 CFG_STATE_DATAPATH   OPELIST @2
//   2 DFG_MANAGE_OPERATION prev @1, OPE @4
//   3 DFG_OUTPUT_VAR       next @4
//   4 DFG_EDGE_BLOCKING    prev @3
//
//   1: CFG_STATE_DATAPATH {
//     OPELIST = 2: DFG_MANAGE_OPERATION { OPE = [ 3: DFG_OUTPUT_VAR  *4: DFG_EDGE_BLOCKING ] }
//   }
//
// What stands where is decided beforehand (text_nesting.h). Here every node and every attribute is
// first tried on the rest of its line; where that does not fit, it is taken back and printed over
// several lines. A try ends where the line is full, so tries cost no more than the text does.

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "cdfg/vocabulary.h"
#include "tools/text_form.h"
#include "tools/text_nesting.h"
#include "tools/text_words.h"

namespace {

constexpr std::size_t kWidth = 90;  // of a line behind its indentation
constexpr std::size_t kTailBytesPerLine = 30;

// --- Words ---------------------------------------------------------------------------------------

struct Printer {
  const RawFile& file;
  const TextStyle& style;
  Output* out;
  const Nesting* nesting;  // null: flat
  std::string_view current_file;
  std::size_t line_start = 0;  // in out->text, behind the indentation
};

std::string& Text(Printer* printer) { return printer->out->text; }

void EndLine(Printer* printer) {
  Text(printer) += '\n';
  FlushWhenFull(printer->out);
  printer->line_start = Text(printer).size();
}

void Indent(Printer* printer, std::size_t indent) {
  Text(printer).append(indent, ' ');
  printer->line_start = Text(printer).size();
}

bool LineFits(const Printer& printer, std::size_t more = 0) {
  return printer.out->text.size() - printer.line_start + more <= kWidth;
}

template <typename Number>
void AppendNumber(std::string* text, Number number) {
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
  text->append(digits.begin(), end);
}

void AppendHexByte(std::string* text, char byte) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  *text += kDigits[static_cast<unsigned char>(byte) >> 4];
  *text += kDigits[static_cast<unsigned char>(byte) & 15];
}

void AppendEscaped(std::string* text, char character, char quote) {
  if (character == quote || character == '\\') {
    *text += '\\';
    *text += character;
  } else if (character >= ' ' && character <= '~') {
    *text += character;
  } else if (character == '\n') {
    *text += "\\n";
  } else if (character == '\t') {
    *text += "\\t";
  } else {
    *text += "\\x";
    AppendHexByte(text, character);
  }
}

void AppendQuoted(std::string* text, std::string_view string) {
  *text += '"';
  for (const char character : string) AppendEscaped(text, character, '"');
  *text += '"';
}

void AppendId(Printer* printer, std::uint32_t id) {
  if (printer->style.names != nullptr) {
    const auto name = printer->style.names->find(id);
    if (name != printer->style.names->end()) {
      Text(printer) += name->second;
      return;
    }
  }
  AppendNumber(&Text(printer), id);
}

void AppendLink(Printer* printer, std::string_view word, std::uint32_t id) {
  Text(printer).append(word).append("@");
  AppendId(printer, id);
}

void AppendKind(std::string* text, std::uint32_t kind) {
  const std::string_view word = KindWord(kind);
  if (word.empty()) {
    AppendNumber(text, kind);
  } else {
    *text += word;
  }
}

void AppendAttributeName(std::string* text, std::uint32_t kind, std::uint32_t attribute) {
  const std::string_view word = AttributeWord(kind, attribute);
  if (word.empty()) {
    AppendNumber(text, attribute);
  } else {
    *text += word;
  }
}

void AppendInt(std::string* text, std::uint32_t kind, const RawAttribute& attribute) {
  const auto value = static_cast<std::uint32_t>(attribute.bits);
  const std::string_view word = EnumeratorWord(kind, attribute.id, value);
  if (word.empty()) {
    AppendNumber(text, static_cast<std::int32_t>(value));
  } else {
    *text += word;
  }
}

// The shortest digits that read back as the same number; infinities and NaNs by their bits.
void AppendDouble(std::string* text, std::uint64_t bits) {
  const auto value = std::bit_cast<double>(bits);
  std::array<char, 32> digits;
  if (std::isfinite(value)) {
    const auto end = std::to_chars(digits.begin(), digits.end(), value).ptr;
    const std::string_view number(digits.begin(), end);
    text->append(number);
    if (number.find_first_of(".e") == number.npos) *text += ".0";
  } else {
    const auto end = std::to_chars(digits.begin(), digits.end(), bits, 16).ptr;
    text->append("double:0x").append(digits.begin(), end);
  }
}

void AppendValue(Printer* printer, std::uint32_t kind, const RawAttribute& attribute) {
  std::string& text = Text(printer);
  switch (attribute.type) {
    case ATTR_CHAR:
      text += '\'';
      AppendEscaped(&text, static_cast<char>(attribute.bits), '\'');
      text += '\'';
      break;
    case ATTR_INT:
      AppendInt(&text, kind, attribute);
      break;
    case ATTR_LONGLONG:
      AppendNumber(&text, static_cast<std::int64_t>(attribute.bits));
      text += "LL";
      break;
    case ATTR_FLOAT:
      AppendDouble(&text, attribute.bits);
      break;
    case ATTR_STRING:
      AppendQuoted(&text, RawText(attribute));
      break;
    case ATTR_NODE:
      AppendLink(printer, "", static_cast<std::uint32_t>(attribute.bits));
      break;
    default:
      text += "type ";
      AppendNumber(&text, attribute.type);
  }
}

// --- Nodes ---------------------------------------------------------------------------------------

// What a node's place in the text says about its links.
struct Implied {
  std::uint32_t prev = 0;
  std::uint32_t next = 0;
};

// A chain standing in place of a reference to one of its nodes.
struct Chain {
  Place head = kNowhere;
  Place target = kNowhere;   // the node referred to; kNowhere at top level
  std::uint32_t before = 0;  // what the first node's prev is when it is not written
  bool is_starred = false;
  bool has_brackets = false;
};

bool HasMore(const Printer& printer, Place head) {
  return printer.nesting->after[head] != kNowhere;
}

Chain TopChain(const Printer& printer, Place head) {
  Chain chain;
  chain.head = head;
  chain.has_brackets = HasMore(printer, head);
  return chain;
}

// The chain that `reference` to `id` is home to; its head is kNowhere when there is none. A single
// node needs no brackets, except behind a next link, where what follows would be taken for its own.
Chain ChainIn(const Printer& printer, Reference reference, std::uint32_t id, std::uint32_t owner) {
  if (printer.nesting == nullptr) return {};
  const Place target = FindPlace(printer.file, id);
  if (target == kNowhere) return {};
  const Place head = printer.nesting->head[target];
  if (printer.nesting->home[head] != reference) return {};
  const bool is_starred = head != target || (printer.file.nodes[head].prev == 0 && owner != 0);
  const bool has_brackets = HasMore(printer, head) || reference >= kNextLink;
  return {head, target, is_starred ? 0 : owner, is_starred, has_brackets};
}

Implied ImpliedAt(const Printer& printer, const Chain& chain, Place before, Place place) {
  const std::vector<RawNode>& nodes = printer.file.nodes;
  const Place after = printer.nesting->after[place];
  return {place == chain.head ? chain.before : nodes[before].id,
          after == kNowhere ? 0 : nodes[after].id};
}

// Label, kind, position and links, except a next link that has to be written: that may be followed
// by a chain in place.
void AppendHeader(Printer* printer, const RawNode& node, const Implied& implied) {
  std::string& text = Text(printer);
  AppendId(printer, node.id);
  text += ": ";
  AppendKind(&text, node.kind);
  if (node.line != 0 || node.column != 0 || node.file != printer->current_file) {
    text += " at ";
    if (node.file != printer->current_file) {
      AppendQuoted(&text, node.file);
      text += ':';
      printer->current_file = node.file;
    }
    AppendNumber(&text, node.line);
    text += ':';
    AppendNumber(&text, node.column);
  }
  if (node.count < 0) AppendNumber(&text.append(" count "), node.count);
  if (node.prev != implied.prev) AppendLink(printer, " prev ", node.prev);
  if (node.jump != 0) AppendLink(printer, " jump ", node.jump);
}

// --- Nodes on one line: each answers false as soon as the line is too long -----------------------

bool FlatChain(Printer* printer, const Chain& chain);

bool FlatNext(Printer* printer, Place place) {
  const RawNode& node = printer->file.nodes[place];
  const Chain chain = ChainIn(*printer, kNextLink + place, node.next, node.id);
  if (chain.head == kNowhere) {
    AppendLink(printer, " next ", node.next);
    return true;
  }
  Text(printer) += " next ";
  return FlatChain(printer, chain);
}

bool FlatAttribute(Printer* printer, const RawNode& node, const RawAttribute& attribute) {
  AppendAttributeName(&Text(printer), node.kind, attribute.id);
  Text(printer) += " = ";
  if (attribute.type == ATTR_NODE) {
    const auto reference = static_cast<Reference>(&attribute - printer->file.attributes.data());
    const Chain chain =
        ChainIn(*printer, reference, static_cast<std::uint32_t>(attribute.bits), node.id);
    if (chain.head != kNowhere) return FlatChain(printer, chain);
  }
  if (attribute.type == ATTR_STRING && !LineFits(*printer, attribute.bits) &&
      printer->nesting != nullptr) {
    return false;
  }
  AppendValue(printer, node.kind, attribute);
  return true;
}

bool FlatNode(Printer* printer, Place place, const Implied& implied) {
  const bool may_overflow = printer->nesting == nullptr;
  const RawNode& node = printer->file.nodes[place];
  std::string& text = Text(printer);
  AppendHeader(printer, node, implied);
  if (node.next != implied.next && !FlatNext(printer, place)) return false;
  if (node.count > 0) {
    text += " {";
    for (const RawAttribute& attribute : RawAttributesOf(printer->file, node)) {
      text += ' ';
      if (!FlatAttribute(printer, node, attribute)) return false;
      if (!may_overflow && !LineFits(*printer)) return false;
    }
    text += " }";
  }
  return may_overflow || LineFits(*printer);
}

bool FlatChain(Printer* printer, const Chain& chain) {
  if (chain.has_brackets) Text(printer) += "[ ";
  Place before = kNowhere;
  for (Place place = chain.head; place != kNowhere; place = printer->nesting->after[place]) {
    if (before != kNowhere) Text(printer) += "  ";
    if (chain.is_starred && place == chain.target) Text(printer) += '*';
    if (!FlatNode(printer, place, ImpliedAt(*printer, chain, before, place))) return false;
    before = place;
  }
  if (chain.has_brackets) Text(printer) += " ]";
  return LineFits(*printer);
}

// --- Nodes over several lines --------------------------------------------------------------------
//
// Each starts where the line stands and leaves its last line open; `indent` is where the line
// starts that it stands on.

void BrokenChain(Printer* printer, const Chain& chain, std::size_t indent);

// Tries `print` on the rest of the line and takes it back when that does not fit.
template <typename Print>
bool TryFlat(Printer* printer, Print print) {
  const std::size_t start = Text(printer).size();
  const std::string_view current_file = printer->current_file;
  if (print()) return true;
  Text(printer).resize(start);
  printer->current_file = current_file;
  return false;
}

void PrintChain(Printer* printer, const Chain& chain, std::size_t indent) {
  if (TryFlat(printer, [&] { return FlatChain(printer, chain); })) return;
  BrokenChain(printer, chain, indent);
}

void PrintNext(Printer* printer, Place place, std::size_t indent) {
  const RawNode& node = printer->file.nodes[place];
  const Chain chain = ChainIn(*printer, kNextLink + place, node.next, node.id);
  if (chain.head == kNowhere) {
    AppendLink(printer, " next ", node.next);
  } else {
    Text(printer) += " next ";
    PrintChain(printer, chain, indent);
  }
}

void PrintAttribute(Printer* printer, const RawNode& node, const RawAttribute& attribute,
                    std::size_t indent) {
  AppendAttributeName(&Text(printer), node.kind, attribute.id);
  Text(printer) += " = ";
  if (attribute.type == ATTR_NODE) {
    const auto reference = static_cast<Reference>(&attribute - printer->file.attributes.data());
    const Chain chain =
        ChainIn(*printer, reference, static_cast<std::uint32_t>(attribute.bits), node.id);
    if (chain.head != kNowhere) return PrintChain(printer, chain, indent);
  }
  AppendValue(printer, node.kind, attribute);
}

void BrokenNode(Printer* printer, Place place, const Implied& implied, std::size_t indent) {
  const RawNode& node = printer->file.nodes[place];
  AppendHeader(printer, node, implied);
  if (node.next != implied.next) PrintNext(printer, place, indent);
  if (node.count <= 0) return;
  Text(printer) += " {";
  for (const RawAttribute& attribute : RawAttributesOf(printer->file, node)) {
    EndLine(printer);
    Indent(printer, indent + 2);
    PrintAttribute(printer, node, attribute, indent + 2);
  }
  EndLine(printer);
  Indent(printer, indent);
  Text(printer) += '}';
}

// The elements of a chain in brackets, each on its own line.
void PrintElement(Printer* printer, const Chain& chain, Place before, Place place,
                  std::size_t indent) {
  Indent(printer, indent);
  if (chain.is_starred && place == chain.target) Text(printer) += '*';
  const Implied implied = ImpliedAt(*printer, chain, before, place);
  if (TryFlat(printer, [&] { return FlatNode(printer, place, implied); })) return;
  BrokenNode(printer, place, implied, indent);
}

void BrokenChain(Printer* printer, const Chain& chain, std::size_t indent) {
  if (!chain.has_brackets) {
    if (chain.is_starred) Text(printer) += '*';
    BrokenNode(printer, chain.head, ImpliedAt(*printer, chain, kNowhere, chain.head), indent);
    return;
  }
  Text(printer) += '[';
  Place before = kNowhere;
  for (Place place = chain.head; place != kNowhere; place = printer->nesting->after[place]) {
    EndLine(printer);
    PrintElement(printer, chain, before, place, indent + 2);
    before = place;
  }
  EndLine(printer);
  Indent(printer, indent);
  Text(printer) += ']';
}

// --- The whole text ------------------------------------------------------------------------------

void PrintFileOf(Printer* printer, const RawNode& node) {
  if (node.file == printer->current_file) return;
  Text(printer) += "file ";
  AppendQuoted(&Text(printer), node.file);
  EndLine(printer);
  printer->current_file = node.file;
}

void PrintNested(Printer* printer) {
  if (!printer->nesting->in_file_order) {
    Text(printer) += "sorted";
    EndLine(printer);
  }
  for (const Place head : printer->nesting->tops) {
    PrintFileOf(printer, printer->file.nodes[head]);
    PrintChain(printer, TopChain(*printer, head), 0);
    EndLine(printer);
  }
}

void PrintFlat(Printer* printer) {
  for (Place place = 0; place < printer->file.nodes.size(); ++place) {
    PrintFileOf(printer, printer->file.nodes[place]);
    FlatNode(printer, place, {});
    EndLine(printer);
  }
}

void PrintTail(Printer* printer) {
  const std::string_view tail = printer->file.tail;
  for (std::size_t i = 0; i < tail.size(); ++i) {
    if (i == 0) Text(printer) += "tail";
    if (i != 0 && i % kTailBytesPerLine == 0) {
      EndLine(printer);
      Indent(printer, 4);
    }
    Text(printer) += ' ';
    AppendHexByte(&Text(printer), tail[i]);
  }
  if (!tail.empty()) EndLine(printer);
}

}  // namespace

void PrintText(const RawFile& file, const TextStyle& style, Output* out) {
  Printer printer{file, style, out, nullptr, {}, out->text.size()};
  if (style.flat || !IdsAscend(file)) {
    PrintFlat(&printer);
  } else {
    const Nesting nesting = FindNesting(file);
    printer.nesting = &nesting;
    PrintNested(&printer);
  }
  PrintTail(&printer);
  Flush(out);
}

std::string TextOf(const RawFile& file, const TextStyle& style) {
  Output out;
  PrintText(file, style, &out);
  return std::move(out.text);
}
