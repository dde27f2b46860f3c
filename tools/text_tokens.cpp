#include "tools/text_tokens.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <limits>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

#include "cdfg/vocabulary.h"

namespace {

constexpr std::size_t kLongestString = 65535;
constexpr std::size_t kLongestFound = 40;    // of a token in a message
constexpr std::size_t kLongestSource = 120;  // of a source line below a message

// Words that the form itself uses, so that none can be a label.
constexpr std::array<std::string_view, 10> kFormWords = {
    "file", "sorted", "tail", "prev", "next", "jump", "at", "count", "type", "double"};

bool IsLetter(char character) {
  return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
         character == '_';
}

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

int HexDigit(char character) {
  if (IsDigit(character)) return character - '0';
  if (character >= 'a' && character <= 'f') return character - 'a' + 10;
  if (character >= 'A' && character <= 'F') return character - 'A' + 10;
  return -1;
}

bool IsHexNumber(std::string_view number) {
  if (number.starts_with('-')) number.remove_prefix(1);
  return number.starts_with("0x") || number.starts_with("0X");
}

char CharAt(const Lexer& lexer, std::size_t offset) {
  return offset < lexer.text.size() ? lexer.text[offset] : '\0';
}

// --- Where tokens end ----------------------------------------------------------------------------

void SkipBlanks(Lexer* lexer) {
  while (lexer->at < lexer->text.size()) {
    const char character = lexer->text[lexer->at];
    if (character == '#') {
      lexer->at = std::min(lexer->text.find('\n', lexer->at), lexer->text.size());
    } else if (character == ' ' || (character >= '\t' && character <= '\r')) {
      ++lexer->at;
    } else {
      return;
    }
  }
}

std::size_t NameEnd(const Lexer& lexer, std::size_t end) {
  while (IsLetter(CharAt(lexer, end)) || IsDigit(CharAt(lexer, end))) ++end;
  return end;
}

// A sign belongs to a number in front of it and behind the letter of its exponent.
std::size_t NumberEnd(const Lexer& lexer, std::size_t start) {
  const char exponent = IsHexNumber(lexer.text.substr(start, 3)) ? 'p' : 'e';
  for (std::size_t end = start + 1;; ++end) {
    const char character = CharAt(lexer, end);
    const bool is_sign =
        (character == '+' || character == '-') && (CharAt(lexer, end - 1) | 0x20) == exponent;
    if (!IsLetter(character) && !IsDigit(character) && character != '.' && !is_sign) return end;
  }
}

std::size_t QuotedEnd(const Lexer& lexer, std::size_t start) {
  const char quote = lexer.text[start];
  for (std::size_t end = start + 1; end < lexer.text.size(); ++end) {
    const char character = lexer.text[end];
    if (character == quote) return end + 1;
    if (character == '\n') break;
    if (character == '\\') ++end;
  }
  Fail(lexer, lexer.text.substr(start),
       std::string("expected a closing ") + quote + " on the same line, found none");
}

void Take(Lexer* lexer, TokenType type, std::size_t end) {
  lexer->token = {type, lexer->text.substr(lexer->at, end - lexer->at)};
  lexer->at = end;
}

// --- Values --------------------------------------------------------------------------------------

// The value of whole digits with their sign; nothing when they are none or out of range.
template <typename Number>
std::optional<Number> WholeNumber(std::string_view digits) {
  const bool is_negative = digits.starts_with('-');
  if (is_negative) digits.remove_prefix(1);
  const int base = IsHexNumber(digits) ? 16 : 10;
  if (base == 16) digits.remove_prefix(2);
  std::uint64_t size = 0;
  const char* const digits_end = digits.data() + digits.size();
  const auto [end, problem] = std::from_chars(digits.data(), digits_end, size, base);
  if (problem != std::errc() || end != digits_end) return std::nullopt;
  const auto highest = static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
  const std::uint64_t lowest = std::numeric_limits<Number>::is_signed ? highest + 1 : 0;
  if (size > (is_negative ? lowest : highest)) return std::nullopt;
  return static_cast<Number>(is_negative ? 0 - size : size);
}

template <typename Number>
Number TakeNumber(Lexer* lexer, std::string_view what) {
  std::optional<Number> number;
  if (lexer->token.type == TokenType::kNumber) number = WholeNumber<Number>(lexer->token.text);
  if (!number) {
    FailExpected(*lexer, std::string(what) + " from " +
                             std::to_string(std::numeric_limits<Number>::min()) + " to " +
                             std::to_string(std::numeric_limits<Number>::max()));
  }
  Advance(lexer);
  return *number;
}

double DoubleInHand(const Lexer& lexer) {
  std::string_view digits = lexer.token.text;
  const bool is_negative = digits.starts_with('-');
  if (is_negative) digits.remove_prefix(1);
  const bool is_hex = IsHexNumber(digits);
  if (is_hex) digits.remove_prefix(2);
  double value = 0;
  const char* const digits_end = digits.data() + digits.size();
  const auto [end, problem] =
      std::from_chars(digits.data(), digits_end, value,
                      is_hex ? std::chars_format::hex : std::chars_format::general);
  if (problem != std::errc() || end != digits_end) {
    FailExpected(lexer, "a number that a double can hold");
  }
  return is_negative ? -value : value;
}

TypedBits TypedNumberInHand(const Lexer& lexer) {
  const std::string_view number = lexer.token.text;
  if (number.ends_with("LL")) {
    const auto value = WholeNumber<std::int64_t>(number.substr(0, number.size() - 2));
    if (value) return {ATTR_LONGLONG, static_cast<std::uint64_t>(*value)};
    FailExpected(lexer, "a long long from -9223372036854775808LL to 9223372036854775807LL");
  }
  if (number.find_first_of(IsHexNumber(number) ? ".pP" : ".eE") != number.npos) {
    return {ATTR_FLOAT, std::bit_cast<std::uint64_t>(DoubleInHand(lexer))};
  }
  const auto value = WholeNumber<std::int32_t>(number);
  if (value) return {ATTR_INT, static_cast<std::uint32_t>(*value)};
  FailExpected(lexer, "an int from -2147483648 to 2147483647 (a long long ends in LL)");
}

[[noreturn]] void FailEscape(const Lexer& lexer, std::string_view escape) {
  Fail(lexer, escape,
       R"(expected an escape \n, \t, \", \', \\ or \xHH, found ')" + Printable(escape) + "'");
}

// Reads one character of a quoted token at `i` and moves `i` behind it.
char Unescape(const Lexer& lexer, std::string_view quoted, std::size_t* i) {
  if (quoted[*i] != '\\') return quoted[(*i)++];
  const std::string_view escape = quoted.substr(*i, quoted[*i + 1] == 'x' ? 4 : 2);
  *i += escape.size();
  switch (escape[1]) {
    case 'n':
      return '\n';
    case 't':
      return '\t';
    case '\\':
    case '"':
    case '\'':
      return escape[1];
    case 'x':
      if (escape.size() < 4 || HexDigit(escape[2]) < 0 || HexDigit(escape[3]) < 0) break;
      return static_cast<char>(HexDigit(escape[2]) * 16 + HexDigit(escape[3]));
    default:
      break;
  }
  FailEscape(lexer, escape);
}

}  // namespace

TextError ErrorAt(std::string_view text, std::size_t offset, std::string message) {
  const std::string_view before = text.substr(0, offset);
  const std::size_t line_end = before.rfind('\n');
  TextError error;
  error.offset = offset;
  error.line = 1 + static_cast<int>(std::count(before.begin(), before.end(), '\n'));
  error.column = static_cast<int>(line_end == before.npos ? offset + 1 : offset - line_end);
  error.message = std::move(message);
  return error;
}

void Fail(const Lexer& lexer, std::string_view where, const std::string& message) {
  throw ErrorAt(lexer.text, static_cast<std::size_t>(where.data() - lexer.text.data()), message);
}

void FailExpected(const Lexer& lexer, const std::string& expected) {
  Fail(lexer, lexer.token.text, "expected " + expected + ", found " + Found(lexer.token));
}

std::string Found(const Token& token) {
  if (token.type == TokenType::kEnd) return "the end of the text";
  if (token.type == TokenType::kString) return Printable(token.text);
  return "'" + Printable(token.text) + "'";
}

std::string Printable(std::string_view text) {
  std::string printable(text.substr(0, kLongestFound));
  const auto is_control = [](char character) {
    return (character >= 0 && character < ' ') || character == '\x7f';
  };
  std::replace_if(printable.begin(), printable.end(), is_control, '?');
  if (text.size() > kLongestFound) printable += "...";
  return printable;
}

std::string DescribeError(std::string_view path, std::string_view text, const TextError& error) {
  std::string description(path);
  description += ':' + std::to_string(error.line) + ':' + std::to_string(error.column) +
                 ": error: " + error.message + '\n';
  const std::size_t start = error.offset - static_cast<std::size_t>(error.column - 1);
  std::string_view line = text.substr(start, text.find('\n', start) - start);
  std::size_t caret = error.offset - start;
  if (caret > kLongestSource) {
    line.remove_prefix(caret - kLongestSource / 2);
    caret = kLongestSource / 2;
  }
  line = line.substr(0, kLongestSource);
  description.append("  ").append(line).append("\n  ");
  for (const char character : line.substr(0, caret)) description += character == '\t' ? '\t' : ' ';
  return description + "^\n";
}

bool IsLabel(std::string_view word) {
  if (word.empty() || !IsLetter(word[0])) return false;
  const auto is_inner = [](char character) { return IsLetter(character) || IsDigit(character); };
  if (!std::all_of(word.begin(), word.end(), is_inner)) return false;
  return std::find(kFormWords.begin(), kFormWords.end(), word) == kFormWords.end();
}

void Advance(Lexer* lexer) {
  SkipBlanks(lexer);
  const std::size_t start = lexer->at;
  if (start == lexer->text.size()) return Take(lexer, TokenType::kEnd, start);
  const char first = lexer->text[start];
  if (IsLetter(first)) {
    Take(lexer, TokenType::kName, NameEnd(*lexer, start));
  } else if (IsDigit(first) || (first == '-' && IsDigit(CharAt(*lexer, start + 1)))) {
    Take(lexer, TokenType::kNumber, NumberEnd(*lexer, start));
  } else if (first == '"') {
    Take(lexer, TokenType::kString, QuotedEnd(*lexer, start));
  } else if (first == '\'') {
    Take(lexer, TokenType::kChar, QuotedEnd(*lexer, start));
  } else {
    Take(lexer, TokenType::kPunctuation, start + 1);
  }
}

bool IsPunctuation(const Lexer& lexer, char character) {
  return lexer.token.type == TokenType::kPunctuation && lexer.token.text[0] == character;
}

bool IsWord(const Lexer& lexer, std::string_view word) {
  return lexer.token.type == TokenType::kName && lexer.token.text == word;
}

void Expect(Lexer* lexer, char character) {
  if (!IsPunctuation(*lexer, character)) FailExpected(*lexer, std::string("'") + character + "'");
  Advance(lexer);
}

bool IsAtLabel(Lexer* lexer) {
  const TokenType type = lexer->token.type;
  if (type != TokenType::kName && type != TokenType::kNumber) return false;
  SkipBlanks(lexer);
  return CharAt(*lexer, lexer->at) == ':' && !IsWord(*lexer, "double");
}

std::int32_t TakeInt(Lexer* lexer, std::string_view what) {
  return TakeNumber<std::int32_t>(lexer, what);
}

std::uint32_t TakeUnsigned(Lexer* lexer, std::string_view what) {
  return TakeNumber<std::uint32_t>(lexer, what);
}

std::uint64_t TakeUnsigned64(Lexer* lexer, std::string_view what) {
  return TakeNumber<std::uint64_t>(lexer, what);
}

TypedBits TakeTypedNumber(Lexer* lexer) {
  const TypedBits number = TypedNumberInHand(*lexer);
  Advance(lexer);
  return number;
}

char TakeChar(Lexer* lexer) {
  const std::string_view quoted = lexer->token.text;
  std::size_t i = 1;
  const char character = quoted.size() < 3 ? '\0' : Unescape(*lexer, quoted, &i);
  if (i == 1 || i + 1 != quoted.size()) {
    FailExpected(*lexer, "one character between single quotes");
  }
  Advance(lexer);
  return character;
}

std::string_view TakeString(Lexer* lexer, std::unique_ptr<char[]>* copy) {
  const std::string_view quoted = lexer->token.text;
  std::string_view string = quoted.substr(1, quoted.size() - 2);
  if (string.find('\\') != string.npos) {
    *copy = std::make_unique<char[]>(string.size());
    std::size_t size = 0;
    for (std::size_t i = 1; i + 1 < quoted.size();) {
      (*copy)[size++] = Unescape(*lexer, quoted, &i);
    }
    string = {copy->get(), size};
  }
  if (string.size() > kLongestString) {
    Fail(*lexer, quoted,
         "expected a string of at most " + std::to_string(kLongestString) + " bytes, found " +
             std::to_string(string.size()));
  }
  Advance(lexer);
  return string;
}

std::string TakeHexBytes(Lexer* lexer) {
  std::string bytes;
  for (SkipBlanks(lexer); lexer->at < lexer->text.size(); SkipBlanks(lexer)) {
    const int high = HexDigit(CharAt(*lexer, lexer->at));
    const int low = HexDigit(CharAt(*lexer, lexer->at + 1));
    const std::size_t end = NameEnd(*lexer, lexer->at);
    if (high < 0 || low < 0 || end != lexer->at + 2) {
      Take(lexer, TokenType::kName, std::max(end, lexer->at + 1));
      FailExpected(*lexer, "two hexadecimal digits or the end of the text");
    }
    bytes += static_cast<char>(high * 16 + low);
    lexer->at += 2;
  }
  Advance(lexer);
  return bytes;
}
