// Typed constant literals: reads a C type and a value out of a constant's text, and writes both
// back.
//
// A number of the C program is one DFG_INPUT_CONST node, and the spelling that the programmer chose
// is the only record of its type. So whoever wants to compute with constants first asks the text,
// and whoever makes a constant must choose a text that answers the same way:
//
//   "0x1F"  -> int, signed, hexadecimal, 31           31 as unsigned long, decimal -> "31LU"
//   "10UL"  -> unsigned long, decimal, 10             -1 as long long, octal       -> "01777...7LL"
//   "1.5F"  -> float, 1.5                             1.5 as float   -> "1.50000000...0F"
//
// The types are those of the target whatever the host is: int and long have 32 bits, long long has
// 64, long double is the extended format with a significand of 64 bits. Texts come from files, so
// any bytes of any length may arrive here, and a missing text as well; each gives a defined answer.
// Nothing depends on the locale, and nothing here keeps state.
#pragma once

#include <cstdint>
#include <string>

#include "cdfg/graph.h"

// The type codes of literals are DECL_VALTYPE_INT, _LONG, _LONGLONG, _FLOAT and _DOUBLE, and this
// one, for which the vocabulary has no name. A wider type has a higher code.
inline constexpr int kTypeLongDouble = 11;

// The values of DfgInputCnst_BASE.
inline constexpr int kRadixBinary = 1;
inline constexpr int kRadixOctal = 2;
inline constexpr int kRadixDecimal = 3;
inline constexpr int kRadixHexadecimal = 4;

// --- Asking a literal ----------------------------------------------------------------------------

// The type code of the constant node `constant`, by its text alone; a node without text is an int.
// Writes DECL_SIGNED or DECL_UNSIGNED to `signedness` (floating types: DECL_SIGNED) unless null.
int ConstClassify(const CdfgGraph* graph, NodeId constant, int* signedness);

// The radix of a text by its first characters: hexadecimal, octal ("0" itself included) or decimal.
// A missing text is decimal.
int ConstRadix(const char* text);

// The radix in which the result of two operands is written: hexadecimal before octal before
// decimal.
int ConstCombineRadix(int left, int right);

// The value of a text as one type, read like a formatted input of the C library reads it: white
// space in front is skipped, one sign is taken, and the first character that does not fit ends the
// number, so suffixes are ignored. A text that gives no number is 0, like a missing one. A number
// out of range gives the nearest end of the type's range (floating types: an infinity); a minus
// in front of an unsigned number negates it modulo 2^32 or 2^64. The radix goes to `radix` unless
// that is null; floating types have none.
std::int32_t ConstParseInt(const char* text, int* radix);
std::uint32_t ConstParseUInt(const char* text, int* radix);
std::int32_t ConstParseLong(const char* text, int* radix);
std::uint32_t ConstParseULong(const char* text, int* radix);
std::int64_t ConstParseLongLong(const char* text, int* radix);
std::uint64_t ConstParseULongLong(const char* text, int* radix);
float ConstParseFloat(const char* text);
double ConstParseDouble(const char* text);
long double ConstParseLongDouble(const char* text);

// --- Writing a literal ---------------------------------------------------------------------------

// The text of an integer: the low bits of `bits` that `type` has, in `radix` (binary is not
// written: like every other number it counts as decimal). Decimal texts carry all of the type's
// letters, octal and hexadecimal ones no U, so they read back as unsigned by their top bit alone.
std::string ConstPrintInteger(int type, int signedness, int radix, std::uint64_t bits);

// The texts of floating values, with 32 decimals or as many as asked for. An infinity or a NaN has
// no decimal point in its text, which therefore does not read back as a floating type.
std::string ConstPrintFloat(float value);
std::string ConstPrintDouble(double value);
std::string ConstPrintLongDouble(long double value, int decimals);

// Makes a constant node with the source position of the node `position` (0: none) and answers its
// id. Without a text, `value` is written in `radix` as an int; binary is then written, and stored,
// as hexadecimal. With `wrap` 1 a DFG_EDGE_PRESEDE is made in front of the constant and its id is
// the answer, ready to be stored as an operand. Adds one or two nodes and touches no other. A null
// graph gives 0.
NodeId ConstMake(CdfgGraph* graph, const char* text, std::int32_t value, int radix, int width,
                 NodeId position, int wrap);
