// How a literal's text tells its type, radix and value, and how a value becomes a text again.
//
// Reading an integer is one template over the result type, run with the base that the radix asks
// for; reading a floating number is one template over the library function that converts it.
// Writing an integer is one table of suffixes.
#include "constant/literal.h"

#include <charconv>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <type_traits>

#include "cdfg/edit.h"

static_assert(std::numeric_limits<float>::digits == 24 && std::numeric_limits<float>::is_iec559);
static_assert(std::numeric_limits<double>::digits == 53 && std::numeric_limits<double>::is_iec559);
static_assert(std::numeric_limits<long double>::digits == 64,
              "long double constants need a compiler whose long double is the extended format");

namespace {

bool Has(const char* text, char letter) { return std::strchr(text, letter) != nullptr; }

bool IsSpace(char letter) { return letter == ' ' || (letter >= '\t' && letter <= '\r'); }

char LowerCase(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// The value of a digit in bases up to 16; a character that is no digit gives 255.
unsigned DigitValue(char letter) {
  if (letter >= '0' && letter <= '9') return static_cast<unsigned>(letter - '0');
  const char lower = LowerCase(letter);
  if (lower >= 'a' && lower <= 'f') return static_cast<unsigned>(lower - 'a') + 10;
  return 255;
}

bool HasHexPrefix(const char* text) { return text[0] == '0' && (text[1] == 'x' || text[1] == 'X'); }

bool StartsWith(const char* text, std::string_view lower_case) {
  for (const char letter : lower_case) {
    if (LowerCase(*text++) != letter) return false;
  }
  return true;
}

// The part of a text behind white space and one sign; tells whether the sign was a minus.
const char* SkipSign(const char* text, bool& is_negative) {
  while (IsSpace(*text)) ++text;
  is_negative = *text == '-';
  return *text == '-' || *text == '+' ? text + 1 : text;
}

// --- Integers ------------------------------------------------------------------------------------

// Reads digits of `base` as long as there are any. False when the number is above `limit`.
template <typename Bits>
bool ReadDigits(const char* digits, unsigned base, Bits limit, Bits& value) {
  const Bits last_safe = limit / base;
  for (; DigitValue(*digits) < base; ++digits) {
    const unsigned digit = DigitValue(*digits);
    if (value > last_safe || value * base > limit - digit) return false;
    value = value * base + digit;
  }
  return true;
}

// Reads a number with its sign. In base 16 a prefix may stand behind the sign. What is out of range
// ends at the nearest limit; for an unsigned type that is the upper one, minus or not.
template <typename Integer>
Integer ReadInteger(const char* text, unsigned base) {
  using Bits = std::make_unsigned_t<Integer>;
  using Limits = std::numeric_limits<Integer>;
  bool is_negative = false;
  const char* digits = SkipSign(text, is_negative);
  if (base == 16 && HasHexPrefix(digits)) digits += 2;
  const bool is_below_zero = Limits::is_signed && is_negative;
  const Bits limit = static_cast<Bits>(Limits::max()) + (is_below_zero ? 1 : 0);
  Bits size = 0;
  if (!ReadDigits(digits, base, limit, size)) {
    return is_below_zero ? Limits::min() : Limits::max();
  }
  return static_cast<Integer>(is_negative ? Bits{0} - size : size);
}

// A decimal text is read at its type, so a signed one ends at the signed limits. Octal and
// hexadecimal texts spell bits: they are read unsigned whatever the type.
template <typename Integer>
Integer ParseInteger(const char* text, int* radix) {
  using Bits = std::make_unsigned_t<Integer>;
  const int code = ConstRadix(text);
  if (radix != nullptr) *radix = code;
  if (text == nullptr) return 0;
  if (code == kRadixHexadecimal) return static_cast<Integer>(ReadInteger<Bits>(text + 2, 16));
  if (code == kRadixOctal) return static_cast<Integer>(ReadInteger<Bits>(text, 8));
  return ReadInteger<Integer>(text, 10);
}

// --- Floating numbers ----------------------------------------------------------------------------

// Formatted input takes a character as soon as it may belong to the number, and then cannot go
// back to a shorter number; the strto functions can. So these texts are 0 to the former, but a
// zero or an infinity to the latter: "0x" without a digit, and "infi" that does not go on to
// "infinity".
bool IsBrokenOff(const char* text) {
  bool is_negative = false;
  const char* number = SkipSign(text, is_negative);
  if (HasHexPrefix(number)) return DigitValue(number[2]) >= 16 && number[2] != '.';
  return StartsWith(number, "infi") && !StartsWith(number, "infinity");
}

// The text as the library reads it in a locale with another decimal point: with that point in
// place of the first '.', and cut where the locale's own point would be taken for one.
std::string Localize(std::string_view text, std::string_view point) {
  std::string localized(text.substr(0, text.find(point)));
  const std::size_t dot = localized.find('.');
  if (dot != std::string::npos) localized.replace(dot, 1, point);
  return localized;
}

template <typename Floating>
Floating ParseFloating(const char* text, Floating (*convert)(const char*, char**)) {
  if (text == nullptr || IsBrokenOff(text)) return 0;
  const char* point = std::localeconv()->decimal_point;
  if (std::strcmp(point, ".") == 0) return convert(text, nullptr);
  return convert(Localize(text, point).c_str(), nullptr);
}

template <typename Floating>
std::string PrintFloating(const char* format, int decimals, Floating value) {
  std::string text(127, '\0');  // most values fit at once, the largest have thousands of digits
  const int length = std::snprintf(text.data(), text.size() + 1, format, decimals, value);
  const bool fits = length <= static_cast<int>(text.size());
  text.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
  if (!fits) std::snprintf(text.data(), text.size() + 1, format, decimals, value);
  const std::string_view point = std::localeconv()->decimal_point;
  if (point == ".") return text;
  const std::size_t found = text.find(point);
  return found == std::string::npos ? text : text.replace(found, point.size(), ".");
}

// --- The type of a text --------------------------------------------------------------------------

int ClassifyFloating(const char* text) {
  if (Has(text, 'l') || Has(text, 'L')) return kTypeLongDouble;
  return Has(text, 'f') || Has(text, 'F') ? DECL_VALTYPE_FLOAT : DECL_VALTYPE_DOUBLE;
}

// int, long or long long, by the first 'L', or the first 'l' when there is no 'L'. The letter that
// makes it long long may stand on either side: in "lL" the first 'L' is the second letter.
int IntegerWidth(const char* text) {
  const char* letter = std::strchr(text, 'L');
  if (letter == nullptr) letter = std::strchr(text, 'l');
  if (letter == nullptr) return DECL_VALTYPE_INT;
  const bool doubled = LowerCase(letter[1]) == 'l' || (letter != text && letter[-1] == 'l');
  return doubled ? DECL_VALTYPE_LONGLONG : DECL_VALTYPE_LONG;
}

// Signed unless a letter or, in octal and hexadecimal, the top bit says otherwise. A decimal number
// ends at the signed limits when read, so its top bit is never set.
bool IsUnsigned(const char* text, int type) {
  if (Has(text, 'u') || Has(text, 'U')) return true;
  if (Has(text, '-')) return false;
  return type == DECL_VALTYPE_LONGLONG ? ConstParseLongLong(text, nullptr) < 0
                                       : ConstParseInt(text, nullptr) < 0;
}

int ClassifyText(const char* text, int& signedness) {
  signedness = DECL_SIGNED;
  if (text == nullptr) return DECL_VALTYPE_INT;
  if (Has(text, '.')) return ClassifyFloating(text);
  if (!HasHexPrefix(text) && (Has(text, 'e') || Has(text, 'E'))) return DECL_VALTYPE_DOUBLE;
  const int type = IntegerWidth(text);
  if (IsUnsigned(text, type)) signedness = DECL_UNSIGNED;
  return type;
}

// --- Integer texts -------------------------------------------------------------------------------

struct IntegerForm {
  int type;
  int signedness;
  const char* decimal_suffix;
  const char* bits_suffix;  // octal and hexadecimal
};

constexpr IntegerForm kIntegerForms[] = {
    {DECL_VALTYPE_INT, DECL_SIGNED, "", ""},
    {DECL_VALTYPE_INT, DECL_UNSIGNED, "U", ""},
    {DECL_VALTYPE_LONG, DECL_SIGNED, "L", "L"},
    {DECL_VALTYPE_LONG, DECL_UNSIGNED, "LU", "L"},
    {DECL_VALTYPE_LONGLONG, DECL_SIGNED, "LL", "LL"},
    {DECL_VALTYPE_LONGLONG, DECL_UNSIGNED, "LLU", "LL"},
};

const IntegerForm& FindForm(int type, int signedness) {
  for (const IntegerForm& form : kIntegerForms) {
    if (form.type == type && form.signedness == signedness) return form;
  }
  return kIntegerForms[0];
}

template <typename Integer>
std::string Digits(Integer value, int base) {
  char digits[24];  // 64 bits in octal are 22 digits
  const std::to_chars_result result =
      std::to_chars(std::begin(digits), std::end(digits), value, base);
  return std::string(digits, result.ptr);
}

template <typename Integer>
std::string DecimalDigits(Integer value, int signedness) {
  if (signedness == DECL_UNSIGNED) return Digits(value, 10);
  return Digits(static_cast<std::make_signed_t<Integer>>(value), 10);
}

template <typename Bits>
std::string PrintBits(const IntegerForm& form, int radix, Bits bits) {
  if (radix == kRadixHexadecimal) return "0x" + Digits(bits, 16) + form.bits_suffix;
  if (radix == kRadixOctal) return "0" + Digits(bits, 8) + form.bits_suffix;
  return DecimalDigits(bits, form.signedness) + form.decimal_suffix;
}

}  // namespace

int ConstClassify(const CdfgGraph* graph, NodeId constant, int* signedness) {
  int found = DECL_SIGNED;
  const int type = ClassifyText(CdfgGetAttrStr(graph, constant, DfgInputCnst_STRVALUE), found);
  if (signedness != nullptr) *signedness = found;
  return type;
}

int ConstRadix(const char* text) {
  if (text == nullptr || text[0] != '0') return kRadixDecimal;
  return HasHexPrefix(text) ? kRadixHexadecimal : kRadixOctal;
}

int ConstCombineRadix(int left, int right) {
  if (left == kRadixHexadecimal || right == kRadixHexadecimal) return kRadixHexadecimal;
  if (left == kRadixOctal || right == kRadixOctal) return kRadixOctal;
  return kRadixDecimal;
}

std::int32_t ConstParseInt(const char* text, int* radix) {
  return ParseInteger<std::int32_t>(text, radix);
}
std::uint32_t ConstParseUInt(const char* text, int* radix) {
  return ParseInteger<std::uint32_t>(text, radix);
}
std::int32_t ConstParseLong(const char* text, int* radix) {
  return ParseInteger<std::int32_t>(text, radix);
}
std::uint32_t ConstParseULong(const char* text, int* radix) {
  return ParseInteger<std::uint32_t>(text, radix);
}
std::int64_t ConstParseLongLong(const char* text, int* radix) {
  return ParseInteger<std::int64_t>(text, radix);
}
std::uint64_t ConstParseULongLong(const char* text, int* radix) {
  return ParseInteger<std::uint64_t>(text, radix);
}

float ConstParseFloat(const char* text) { return ParseFloating<float>(text, std::strtof); }
double ConstParseDouble(const char* text) { return ParseFloating<double>(text, std::strtod); }
long double ConstParseLongDouble(const char* text) {
  return ParseFloating<long double>(text, std::strtold);
}

std::string ConstPrintInteger(int type, int signedness, int radix, std::uint64_t bits) {
  const IntegerForm& form = FindForm(type, signedness);
  if (form.type == DECL_VALTYPE_LONGLONG) return PrintBits(form, radix, bits);
  return PrintBits(form, radix, static_cast<std::uint32_t>(bits));
}

std::string ConstPrintFloat(float value) {
  return PrintFloating("%.*fF", 32, static_cast<double>(value));
}
std::string ConstPrintDouble(double value) { return PrintFloating("%.*f", 32, value); }
std::string ConstPrintLongDouble(long double value, int decimals) {
  return PrintFloating("%.*LfL", decimals, value);
}

NodeId ConstMake(CdfgGraph* graph, const char* text, std::int32_t value, int radix, int width,
                 NodeId position, int wrap) {
  if (graph == nullptr) return 0;
  const NodeId constant = CdfgCreateNode(graph, DFG_INPUT_CONST, position);
  std::string written;
  if (text == nullptr) {
    if (radix == kRadixBinary) radix = kRadixHexadecimal;
    written =
        ConstPrintInteger(DECL_VALTYPE_INT, DECL_SIGNED, radix, static_cast<std::uint32_t>(value));
    text = written.c_str();
  }
  CdfgSetAttrStr(graph, constant, DfgInputCnst_STRVALUE, text);
  CdfgSetAttrInt(graph, constant, DfgInputCnst_INTVALUE, value);
  CdfgSetAttrInt(graph, constant, DfgInputCnst_BASE, radix);
  CdfgSetAttrInt(graph, constant, DfgInputCnst_WIDTH, width);
  if (wrap != 1) return constant;
  const NodeId edge = CdfgCreateNode(graph, DFG_EDGE_PRESEDE, position);
  CdfgLink(graph, edge, constant);
  return edge;
}
