// The tokens of the text form: words, numbers, quoted text, single characters, comments; and the
// errors, which all name a token.
//
// The first error ends the reading of a text: it is thrown as a TextError. What is taken for
// granted throughout: every string_view handled here points into Lexer::text, so that its place in
// the text is known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "tools/text_form.h"

enum class TokenType { kEnd, kName, kNumber, kString, kChar, kPunctuation };

struct Token {
  TokenType type = TokenType::kEnd;
  std::string_view text = {};  // as it stands, quotes included
};

struct Lexer {
  std::string_view text;
  std::size_t at = 0;  // behind `token`
  Token token = {};    // the one in hand
};

// --- Errors --------------------------------------------------------------------------------------

TextError ErrorAt(std::string_view text, std::size_t offset, std::string message);
// Throws the error `message` at `where`, a part of the text.
[[noreturn]] void Fail(const Lexer& lexer, std::string_view where, const std::string& message);
// Throws "expected `expected`, found ..." at the token in hand.
[[noreturn]] void FailExpected(const Lexer& lexer, const std::string& expected);
// The two halves of the latter: how a message calls a token or a part of one.
std::string Found(const Token& token);
std::string Printable(std::string_view text);

// --- Moving on -----------------------------------------------------------------------------------

// Takes the next token in hand.
void Advance(Lexer* lexer);
bool IsPunctuation(const Lexer& lexer, char character);
bool IsWord(const Lexer& lexer, std::string_view word);
// Passes this character, or fails.
void Expect(Lexer* lexer, char character);
// Whether the token in hand is a label, which only the ':' behind it tells.
bool IsAtLabel(Lexer* lexer);

// --- Values --------------------------------------------------------------------------------------

// Each passes a whole number in its range, or fails; messages call it `what`.
std::int32_t TakeInt(Lexer* lexer, std::string_view what);
std::uint32_t TakeUnsigned(Lexer* lexer, std::string_view what);
std::uint64_t TakeUnsigned64(Lexer* lexer, std::string_view what);

// Value type and bits as a RawAttribute has them.
struct TypedBits {
  std::uint32_t type = 0;
  std::uint64_t bits = 0;
};

// Passes a number; how it is written fixes the type: 5 is an int, 5LL a long long, 5.0 a double.
TypedBits TakeTypedNumber(Lexer* lexer);
// Passes a character between single quotes.
char TakeChar(Lexer* lexer);
// Passes the string in hand. Its bytes are a part of the text when they stand there just as they
// are; when something is escaped, `copy` is made to hold them.
std::string_view TakeString(Lexer* lexer, std::unique_ptr<char[]>* copy);
// Passes all that is left of the text: pairs of hexadecimal digits.
std::string TakeHexBytes(Lexer* lexer);
