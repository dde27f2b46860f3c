// What the text of a constant says about its type, radix and value, and which texts are written.
#include "constant/literal.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <climits>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <memory>
#include <string>

namespace {

struct FreeGraph {
  void operator()(CdfgGraph* graph) const { CdfgFreeGraph(graph); }
};
using GraphPtr = std::unique_ptr<CdfgGraph, FreeGraph>;

struct TypeOfText {
  int type;
  int signedness;
  bool operator==(const TypeOfText&) const = default;
};

std::ostream& operator<<(std::ostream& out, const TypeOfText& type) {
  return out << "type " << type.type << " signedness " << type.signedness;
}

TypeOfText Classify(const char* text) {
  const GraphPtr graph(CdfgNewGraph());
  const NodeId node = CdfgAddNode(graph.get(), DFG_INPUT_CONST);
  CdfgSetAttrStr(graph.get(), node, DfgInputCnst_STRVALUE, text);
  TypeOfText found{0, 0};
  found.type = ConstClassify(graph.get(), node, &found.signedness);
  return found;
}

constexpr TypeOfText kInt{4, 1}, kUInt{4, 2}, kLong{5, 1}, kULong{5, 2}, kLLong{6, 1},
    kULLong{6, 2}, kFloat{8, 1}, kDouble{9, 1}, kLDouble{11, 1};

struct ClassifyCase {
  const char* text;
  TypeOfText type;
};

void CheckTypes(std::initializer_list<ClassifyCase> cases) {
  for (const ClassifyCase& one : cases) EXPECT_EQ(Classify(one.text), one.type) << one.text;
}

TEST(LiteralCodes, HaveTheNumbersOfTheChain) {
  EXPECT_EQ(kTypeLongDouble, 11);
  EXPECT_EQ(kRadixBinary, 1);
  EXPECT_EQ(kRadixOctal, 2);
  EXPECT_EQ(kRadixDecimal, 3);
  EXPECT_EQ(kRadixHexadecimal, 4);
}

// --- Classification ------------------------------------------------------------------------------

TEST(Classify, NodeWithoutTextIsAnInt) {
  const GraphPtr graph(CdfgNewGraph());
  const NodeId node = CdfgAddNode(graph.get(), DFG_INPUT_CONST);
  int signedness = 0;
  EXPECT_EQ(ConstClassify(graph.get(), node, &signedness), 4);
  EXPECT_EQ(signedness, 1);
  CdfgSetAttrStr(graph.get(), node, DfgInputCnst_STRVALUE, nullptr);
  EXPECT_EQ(ConstClassify(graph.get(), node, &signedness), 4);
}

TEST(Classify, NonsenseIsAnInt) {
  const GraphPtr graph(CdfgNewGraph());
  const NodeId node = CdfgAddNode(graph.get(), DFG_INPUT_CONST);
  CdfgSetAttrInt(graph.get(), node, DfgInputCnst_STRVALUE, 12);
  int signedness = 0;
  for (const NodeId id : {node, NodeId{0}, NodeId{99}}) {
    EXPECT_EQ(ConstClassify(graph.get(), id, &signedness), 4);
    EXPECT_EQ(signedness, 1);
  }
  EXPECT_EQ(ConstClassify(nullptr, node, &signedness), 4);
  EXPECT_EQ(ConstClassify(graph.get(), node, nullptr), 4);
}

TEST(Classify, ReadsTheTextAlone) {
  const GraphPtr graph(CdfgNewGraph());
  const NodeId node = CdfgAddNode(graph.get(), DFG_INPUT_CONST);
  CdfgSetAttrInt(graph.get(), node, DfgInputCnst_INTVALUE, -1);
  CdfgSetAttrInt(graph.get(), node, DfgInputCnst_BASE, 4);
  CdfgSetAttrStr(graph.get(), node, DfgInputCnst_STRVALUE, "10UL");
  int signedness = 0;
  EXPECT_EQ(ConstClassify(graph.get(), node, &signedness), 5);
  EXPECT_EQ(signedness, 2);
}

TEST(Classify, PointMakesItFloating) {
  CheckTypes({{"1.0", kDouble},
              {"1.", kDouble},
              {".5", kDouble},
              {"1.0f", kFloat},
              {"1.0F", kFloat},
              {"1.5e3", kDouble},
              {"1.5e-3f", kFloat},
              {"1.0L", kLDouble},
              {"1.0l", kLDouble},
              {"1.0fl", kLDouble},
              {"1.5fL", kLDouble},
              {"1.5LF", kLDouble},
              {"0x1.8p3", kDouble},
              {"0x1.fp3", kFloat},  // the f is a digit here, but a letter is
                                    // a letter
              {"1.0u", kDouble},
              {"-1.0", kDouble},
              {".", kDouble},
              {"nan.", kDouble},
              {"inf.", kFloat},
              {"inf.L", kLDouble}});
}

TEST(Classify, ExponentWithoutHexPrefixIsADouble) {
  CheckTypes({{"1e5", kDouble},
              {"1E5", kDouble},
              {"3e4", kDouble},
              {"1e5f", kDouble},
              {"1e5L", kDouble},
              {"01e5", kDouble},
              {"-0x1e5", kDouble},  // the prefix counts at the very start only
              {" 0x1e5", kDouble},
              {"0x1e5", kInt},
              {"0X1E5", kInt},
              {"0xEUL", kULong}});
}

TEST(Classify, LettersGiveTheWidth) {
  CheckTypes({{"10", kInt},       {"10L", kLong},     {"10l", kLong},     {"10LL", kLLong},
              {"10ll", kLLong},   {"10lL", kLLong},   {"10Ll", kLLong},   {"10U", kUInt},
              {"10u", kUInt},     {"10UL", kULong},   {"10LU", kULong},   {"10ul", kULong},
              {"10lu", kULong},   {"10ull", kULLong}, {"10LLU", kULLong}, {"10uLL", kULLong},
              {"10lLu", kULLong}, {"10LUL", kULong},  {"10lul", kULong},  {"0x10L", kLong},
              {"0x10LL", kLLong}, {"010LL", kLLong}});
}

TEST(Classify, TheFirstCapitalDecidesBeforeAnySmallLetter) {
  CheckTypes({{"1l2LL", kLLong}, {"1ll2L", kLong}, {"1l2L", kLong}, {"1L2ll", kLong}});
}

TEST(Classify, TopBitMakesOctalAndHexadecimalUnsigned) {
  CheckTypes({{"0x7FFFFFFF", kInt},
              {"0x80000000", kUInt},
              {"0xFFFFFFFF", kUInt},
              {"0Xffffffff", kUInt},
              {"0xFFFFFFFFL", kULong},
              {"0x7FFFFFFFL", kLong},
              {"0xFFFFFFFFLL", kLLong},
              {"0x7FFFFFFFFFFFFFFFLL", kLLong},
              {"0x8000000000000000LL", kULLong},
              {"0x8000000000000000", kUInt},  // saturates at 32 bits
              {"0x100000000", kUInt},
              {"0x100000000LL", kLLong},
              {"0x10000000000000000LL", kULLong},
              {"017777777777", kInt},
              {"020000000000", kUInt},
              {"037777777777", kUInt},
              {"037777777777L", kULong},
              {"037777777777LL", kLLong},
              {"01777777777777777777777LL", kULLong},
              {"0777777777777777777777LL", kLLong}});
}

TEST(Classify, NotUnsignedBecauseADecimalIsLarge) {
  CheckTypes({{"2147483647", kInt},
              {"2147483648", kInt},
              {"3000000000", kInt},
              {"4294967295", kInt},
              {"4294967296", kInt},
              {"4294967295L", kLong},
              {"9223372036854775808LL", kLLong},
              {"18446744073709551615LL", kLLong},
              {"99999999999999999999999LL", kLLong}});
}

TEST(Classify, MinusIsSignedWithoutLookingAtTheValue) {
  CheckTypes({{"-5", kInt},
              {"-5L", kLong},
              {"-5LL", kLLong},
              {"-5U", kUInt},  // the letter is asked first
              {"0xFFFFFFFF-", kInt},
              {"0x-1", kInt},
              {"-2147483648", kInt}});
}

TEST(Classify, AnyBytesHaveAType) {
  CheckTypes({{"", kInt},
              {"0", kInt},
              {"08", kInt},
              {"0x", kInt},
              {"x", kInt},
              {"U", kUInt},
              {"L", kLong},
              {"lL", kLLong},
              {"\xff\xfe\x80", kInt},
              {"0x+80000000", kUInt},
              {"0x 80000000", kUInt},
              {"0x0x80000000", kUInt}});
}

// --- Radix ---------------------------------------------------------------------------------------

TEST(Radix, FollowsTheFirstCharacters) {
  EXPECT_EQ(ConstRadix(nullptr), 3);
  for (const char* text : {"", "1", "10", "-010", "-0x10", " 0x10", "+0", "x", "U", "\xff", "9"}) {
    EXPECT_EQ(ConstRadix(text), 3) << text;
  }
  for (const char* text : {"0", "00", "017", "08", "0.5", "0b1", "0L", "0 x1"}) {
    EXPECT_EQ(ConstRadix(text), 2) << text;
  }
  for (const char* text : {"0x", "0X", "0x1F", "0X1f", "0xg"}) {
    EXPECT_EQ(ConstRadix(text), 4) << text;
  }
}

TEST(CombineRadix, HexadecimalBeforeOctalBeforeDecimal) {
  const int combined[5][5] = {
      {3, 3, 2, 3, 4}, {3, 3, 2, 3, 4}, {2, 2, 2, 2, 4}, {3, 3, 2, 3, 4}, {4, 4, 4, 4, 4}};
  for (int left = 0; left <= 4; ++left) {
    for (int right = 0; right <= 4; ++right) {
      EXPECT_EQ(ConstCombineRadix(left, right), combined[left][right]) << left << ' ' << right;
    }
  }
}

// --- Integers ------------------------------------------------------------------------------------

struct IntegerCase {
  const char* text;
  int radix;
  std::int32_t as_int;
  std::uint32_t as_uint;
  std::int64_t as_llong;
  std::uint64_t as_ullong;
};

void CheckInteger(const IntegerCase& one) {
  SCOPED_TRACE(one.text == nullptr ? "null" : one.text);
  int radix[6] = {};
  EXPECT_EQ(ConstParseInt(one.text, &radix[0]), one.as_int);
  EXPECT_EQ(ConstParseUInt(one.text, &radix[1]), one.as_uint);
  EXPECT_EQ(ConstParseLong(one.text, &radix[2]), one.as_int);
  EXPECT_EQ(ConstParseULong(one.text, &radix[3]), one.as_uint);
  EXPECT_EQ(ConstParseLongLong(one.text, &radix[4]), one.as_llong);
  EXPECT_EQ(ConstParseULongLong(one.text, &radix[5]), one.as_ullong);
  for (const int found : radix) EXPECT_EQ(found, one.radix);
}

// Texts that mean the same at every type.
IntegerCase Small(const char* text, int radix, std::int32_t value) {
  return {text,  radix,
          value, static_cast<std::uint32_t>(value),
          value, static_cast<std::uint64_t>(std::int64_t{value})};
}

TEST(ParseInteger, ReadsEachRadix) {
  CheckInteger(Small("10", 3, 10));
  CheckInteger(Small("017", 2, 15));
  CheckInteger(Small("0x1F", 4, 31));
  CheckInteger(Small("0X1f", 4, 31));
  CheckInteger(Small("0", 2, 0));
  CheckInteger(Small("00", 2, 0));
  CheckInteger(Small("08", 2, 0));
  CheckInteger(Small("0179", 2, 15));
  CheckInteger(Small("0x1e5", 4, 485));
}

TEST(ParseInteger, IgnoresWhatFollowsTheNumber) {
  CheckInteger(Small("5UL", 3, 5));
  CheckInteger(Small("0x10LLU", 4, 16));
  CheckInteger(Small("010u", 2, 8));
  CheckInteger(Small("2.9", 3, 2));
  CheckInteger(Small("3e4", 3, 3));
  CheckInteger(Small("0.5", 2, 0));
  CheckInteger(Small("12 34", 3, 12));
  CheckInteger(Small("12\xff", 3, 12));
}

TEST(ParseInteger, TakesWhiteSpaceAndOneSign) {
  CheckInteger(Small(" \t\n\v\f\r42", 3, 42));
  CheckInteger(Small("+42", 3, 42));
  CheckInteger(Small("-42", 3, -42));
  CheckInteger(Small(" -42", 3, -42));
  CheckInteger(Small("- 42", 3, 0));
  CheckInteger(Small("+-42", 3, 0));
  CheckInteger(Small("-010", 3, -10));  // decimal: the text does not start with 0
  CheckInteger(Small(" 010", 3, 10));
  CheckInteger(Small("-0x10", 3, 0));
  CheckInteger(
      Small("\xa0"
            "42",
            3, 0));
}

TEST(ParseInteger, TakesSignAndPrefixBehindTheHexPrefix) {
  CheckInteger(Small("0x-1", 4, -1));
  CheckInteger(Small("0x+1f", 4, 31));
  CheckInteger(Small("0x 1f", 4, 31));
  CheckInteger(Small("0x0x1f", 4, 31));
  CheckInteger(Small("0x -0X1f", 4, -31));
  CheckInteger(Small("0x0x0x1f", 4, 0));
}

TEST(ParseInteger, NoNumberIsZero) {
  CheckInteger(Small(nullptr, 3, 0));
  CheckInteger(Small("", 3, 0));
  CheckInteger(Small("x", 3, 0));
  CheckInteger(Small("-", 3, 0));
  CheckInteger(Small("0x", 4, 0));
  CheckInteger(Small("0xg", 4, 0));
  CheckInteger(Small("0x0x", 4, 0));
  CheckInteger(Small("LL", 3, 0));
  CheckInteger(Small("\x80\xff", 3, 0));
}

TEST(ParseInteger, EndsAtTheLimitsOfTheTarget) {
  CheckInteger({"2147483647", 3, INT32_MAX, 0x7FFFFFFF, 2147483647, 2147483647});
  CheckInteger({"2147483648", 3, INT32_MAX, 0x80000000, 2147483648, 2147483648});
  CheckInteger({"4294967295", 3, INT32_MAX, 0xFFFFFFFF, 4294967295, 4294967295});
  CheckInteger({"4294967296", 3, INT32_MAX, 0xFFFFFFFF, 4294967296, 4294967296});
  CheckInteger({"9223372036854775807", 3, INT32_MAX, 0xFFFFFFFF, INT64_MAX, INT64_MAX});
  CheckInteger({"9223372036854775808", 3, INT32_MAX, 0xFFFFFFFF, INT64_MAX, 1ULL << 63});
  CheckInteger({"18446744073709551615", 3, INT32_MAX, 0xFFFFFFFF, INT64_MAX, UINT64_MAX});
  CheckInteger({"18446744073709551616", 3, INT32_MAX, 0xFFFFFFFF, INT64_MAX, UINT64_MAX});
}

TEST(ParseInteger, MinusNegatesUnsignedNumbersButNotBeyondTheLimit) {
  CheckInteger({"-2147483648", 3, INT32_MIN, 0x80000000, -2147483648LL, 0xFFFFFFFF80000000});
  CheckInteger({"-2147483649", 3, INT32_MIN, 0x7FFFFFFF, -2147483649LL, 0xFFFFFFFF7FFFFFFF});
  CheckInteger({"-4294967295", 3, INT32_MIN, 1, -4294967295LL, 0xFFFFFFFF00000001});
  CheckInteger({"-4294967296", 3, INT32_MIN, 0xFFFFFFFF, -4294967296LL, 0xFFFFFFFF00000000});
  CheckInteger({"-9223372036854775808", 3, INT32_MIN, 0xFFFFFFFF, INT64_MIN, 1ULL << 63});
  CheckInteger({"-9223372036854775809", 3, INT32_MIN, 0xFFFFFFFF, INT64_MIN, INT64_MAX});
  CheckInteger({"-18446744073709551615", 3, INT32_MIN, 0xFFFFFFFF, INT64_MIN, 1});
  CheckInteger({"-18446744073709551616", 3, INT32_MIN, 0xFFFFFFFF, INT64_MIN, UINT64_MAX});
}

TEST(ParseInteger, OctalAndHexadecimalSpellBits) {
  CheckInteger({"0x80000000", 4, INT32_MIN, 0x80000000, 0x80000000, 0x80000000});
  CheckInteger({"0xFFFFFFFF", 4, -1, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF});
  CheckInteger({"0x100000000", 4, -1, 0xFFFFFFFF, 0x100000000, 0x100000000});
  CheckInteger({"0x8000000000000000", 4, -1, 0xFFFFFFFF, INT64_MIN, 1ULL << 63});
  CheckInteger({"0x10000000000000000", 4, -1, 0xFFFFFFFF, -1, UINT64_MAX});
  CheckInteger({"0x-FFFFFFFF", 4, 1, 1, -0xFFFFFFFFLL, 0xFFFFFFFF00000001});
  CheckInteger({"0x-100000000", 4, -1, 0xFFFFFFFF, -0x100000000LL, 0xFFFFFFFF00000000});
  CheckInteger({"037777777777", 2, -1, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF});
  CheckInteger({"040000000000", 2, -1, 0xFFFFFFFF, 0x100000000, 0x100000000});
  CheckInteger({"01777777777777777777777", 2, -1, 0xFFFFFFFF, -1, UINT64_MAX});
  CheckInteger({"02000000000000000000000", 2, -1, 0xFFFFFFFF, -1, UINT64_MAX});
}

TEST(ParseInteger, LongTexts) {
  const std::string nines(65536, '9');
  CheckInteger({nines.c_str(), 3, INT32_MAX, 0xFFFFFFFF, INT64_MAX, UINT64_MAX});
  const std::string minus_nines = "-" + nines;
  CheckInteger({minus_nines.c_str(), 3, INT32_MIN, 0xFFFFFFFF, INT64_MIN, UINT64_MAX});
  const std::string zeros = std::string(65536, '0') + "17";
  CheckInteger(Small(zeros.c_str(), 2, 15));
  const std::string spaces = std::string(65536, ' ') + "17";
  CheckInteger(Small(spaces.c_str(), 3, 17));
  const std::string high_bytes(65536, '\xff');
  CheckInteger(Small(high_bytes.c_str(), 3, 0));
}

TEST(ParseInteger, RadixNeedNotBeAskedFor) { EXPECT_EQ(ConstParseInt("0x10", nullptr), 16); }

// --- Floating numbers ----------------------------------------------------------------------------

template <typename Value>
bool SameValue(Value left, Value right) {
  if (std::isnan(left) || std::isnan(right)) {
    return std::isnan(left) && std::isnan(right) && std::signbit(left) == std::signbit(right);
  }
  return left == right && std::signbit(left) == std::signbit(right);
}

// For values that all three types hold.
void CheckFloating(const char* text, double value) {
  SCOPED_TRACE(text == nullptr ? "null" : text);
  EXPECT_TRUE(SameValue(ConstParseFloat(text), static_cast<float>(value)));
  EXPECT_TRUE(SameValue(ConstParseDouble(text), value));
  EXPECT_TRUE(SameValue(ConstParseLongDouble(text), static_cast<long double>(value)));
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(ParseFloating, ReadsDecimalNumbers) {
  CheckFloating("1.5", 1.5);
  CheckFloating("1.5f", 1.5);
  CheckFloating("1.5L", 1.5);
  CheckFloating("1.", 1.0);
  CheckFloating(".5", 0.5);
  CheckFloating("3e4", 30000.0);
  CheckFloating("3E+4", 30000.0);
  CheckFloating("25e-2", 0.25);
  CheckFloating("010.5", 10.5);  // no octal here
  CheckFloating(" \t\n\v\f\r+1.5", 1.5);
  CheckFloating("-1.5", -1.5);
  CheckFloating("-0.0", -0.0);
  CheckFloating("1.5.5", 1.5);
  CheckFloating("1,5", 1.0);
  CheckFloating("1.5e3e3", 1500.0);
}

TEST(ParseFloating, ReadsHexadecimalNumbers) {
  CheckFloating("0x1.8p3", 12.0);
  CheckFloating("-0X1.8P-1", -0.75);
  CheckFloating("0x10", 16.0);
  CheckFloating("0x.8", 0.5);
  CheckFloating("0x1.8", 1.5);
}

TEST(ParseFloating, ReadsInfinityAndNan) {
  CheckFloating("inf.", kInfinity);
  CheckFloating("-INF.", -kInfinity);
  CheckFloating("Infinity.", kInfinity);
  CheckFloating("nan.", kNan);
  CheckFloating("-NaN.", -kNan);
  CheckFloating("nan(12).", kNan);
}

TEST(ParseFloating, NoNumberIsZero) {
  for (const char* text :
       {"", ".", "-.", "+", "e5", ".e5", "x.5", "- 1.5", "+-1.5", "in.", "na.", "\x80\xff."}) {
    CheckFloating(text, 0.0);
  }
  CheckFloating(nullptr, 0.0);
}

TEST(ParseFloating, WhatBreaksOffBehindATakenCharacterIsZero) {
  for (const char* text : {"0x", "-0x", "0xg.", "-0xp5.", "infi.", "infinit.", "-infinitx."}) {
    CheckFloating(text, 0.0);
  }
}

TEST(ParseFloating, AnExponentWithoutDigitsIsIgnored) {
  CheckFloating("1.5e", 1.5);
  CheckFloating("1.5e+", 1.5);
  CheckFloating("1.5ef", 1.5);
  CheckFloating("0x1.8p", 1.5);
}

TEST(ParseFloating, RoundsOnceToEachType) {
  // Just below the middle of two floats, and nearer to that middle than doubles are to each other.
  EXPECT_EQ(ConstParseFloat("1.00000017881393432617187499"), 0x1.000002p0F);
  EXPECT_EQ(ConstParseFloat("0.1"), 0x1.99999ap-4F);
  EXPECT_EQ(ConstParseDouble("0.1"), 0x1.999999999999ap-4);
  EXPECT_EQ(ConstParseLongDouble("0.1"), 0x1.999999999999999ap-4L);
  EXPECT_EQ(ConstParseFloat("16777217.0"), 16777216.0F);
  EXPECT_EQ(ConstParseDouble("9007199254740993.0"), 9007199254740992.0);
  EXPECT_EQ(ConstParseLongDouble("9223372036854775809.0"), 0x1.0000000000000002p63L);
}

TEST(ParseFloating, OutOfRange) {
  EXPECT_EQ(ConstParseFloat("1e39"), std::numeric_limits<float>::infinity());
  EXPECT_EQ(ConstParseFloat("-1e39"), -std::numeric_limits<float>::infinity());
  EXPECT_EQ(ConstParseDouble("1e309"), kInfinity);
  EXPECT_EQ(ConstParseDouble("1e99999999999999999999"), kInfinity);
  EXPECT_TRUE(std::isinf(ConstParseLongDouble("1e4933")));
  EXPECT_EQ(ConstParseFloat("1.4e-45"), 0x1p-149F);
  EXPECT_EQ(ConstParseFloat("1e-60"), 0.0F);
  EXPECT_EQ(ConstParseDouble("4.9e-324"), 0x1p-1074);
  EXPECT_EQ(ConstParseDouble("1e-400"), 0.0);
  EXPECT_EQ(ConstParseLongDouble("3.6e-4951"), 0x1p-16445L);
}

TEST(ParseFloating, LongTexts) {
  const std::string digits(65536, '9');
  EXPECT_EQ(ConstParseDouble(digits.c_str()), kInfinity);
  const std::string fraction = "0." + digits;
  CheckFloating(fraction.c_str(), 1.0);
  const std::string small = "1." + std::string(65536, '0') + "1";
  CheckFloating(small.c_str(), 1.0);
  const std::string high_bytes(65536, '\xff');
  CheckFloating(high_bytes.c_str(), 0.0);
}

// --- Writing -------------------------------------------------------------------------------------

TEST(PrintInteger, LettersOfEachType) {
  struct Row {
    TypeOfText type;
    const char* decimal;
    const char* octal;
    const char* hexadecimal;
  };
  const Row rows[] = {{kInt, "10", "012", "0xa"},         {kUInt, "10U", "012", "0xa"},
                      {kLong, "10L", "012L", "0xaL"},     {kULong, "10LU", "012L", "0xaL"},
                      {kLLong, "10LL", "012LL", "0xaLL"}, {kULLong, "10LLU", "012LL", "0xaLL"}};
  for (const Row& row : rows) {
    const auto [type, sign] = row.type;
    EXPECT_EQ(ConstPrintInteger(type, sign, kRadixDecimal, 10), row.decimal);
    EXPECT_EQ(ConstPrintInteger(type, sign, kRadixOctal, 10), row.octal);
    EXPECT_EQ(ConstPrintInteger(type, sign, kRadixHexadecimal, 10), row.hexadecimal);
    EXPECT_EQ(ConstPrintInteger(type, sign, kRadixBinary, 10), row.decimal);
  }
}

TEST(PrintInteger, TakesTheBitsOfTheType) {
  constexpr std::uint64_t kOnes = UINT64_MAX;
  EXPECT_EQ(ConstPrintInteger(4, 1, 3, kOnes), "-1");
  EXPECT_EQ(ConstPrintInteger(4, 2, 3, kOnes), "4294967295U");
  EXPECT_EQ(ConstPrintInteger(5, 1, 4, kOnes), "0xffffffffL");
  EXPECT_EQ(ConstPrintInteger(5, 2, 2, kOnes), "037777777777L");
  EXPECT_EQ(ConstPrintInteger(6, 1, 3, kOnes), "-1LL");
  EXPECT_EQ(ConstPrintInteger(6, 2, 3, kOnes), "18446744073709551615LLU");
  EXPECT_EQ(ConstPrintInteger(6, 2, 2, kOnes), "01777777777777777777777LL");
  EXPECT_EQ(ConstPrintInteger(6, 1, 3, 1ULL << 63), "-9223372036854775808LL");
  EXPECT_EQ(ConstPrintInteger(4, 1, 3, 0x180000000), "-2147483648");
  EXPECT_EQ(ConstPrintInteger(4, 1, 2, 0), "00");
  EXPECT_EQ(ConstPrintInteger(4, 1, 4, 0), "0x0");
}

TEST(PrintFloating, Decimals) {
  EXPECT_EQ(ConstPrintFloat(1.5F), "1.50000000000000000000000000000000F");
  EXPECT_EQ(ConstPrintFloat(0.1F), "0.10000000149011611938476562500000F");
  EXPECT_EQ(ConstPrintDouble(-2.25), "-2.25000000000000000000000000000000");
  EXPECT_EQ(ConstPrintDouble(-0.0), "-0.00000000000000000000000000000000");
  EXPECT_EQ(ConstPrintLongDouble(1.5L, 32), "1.50000000000000000000000000000000L");
  EXPECT_EQ(ConstPrintLongDouble(1.5L, 6), "1.500000L");
}

TEST(PrintFloating, NoLengthIsTooLong) {
  const std::string largest = ConstPrintDouble(-DBL_MAX);
  EXPECT_EQ(largest.size(), 1 + 309 + 1 + 32U);
  EXPECT_EQ(largest.substr(0, 18), "-17976931348623157");
  EXPECT_EQ(largest.substr(304), "858368.00000000000000000000000000000000");
  EXPECT_EQ(ConstParseDouble(largest.c_str()), -DBL_MAX);
  const std::string extended = ConstPrintLongDouble(LDBL_MAX, 32);
  EXPECT_EQ(extended.size(), 4933 + 1 + 32 + 1U);
  EXPECT_EQ(ConstParseLongDouble(extended.c_str()), LDBL_MAX);
  EXPECT_EQ(ConstPrintLongDouble(-LDBL_MAX, 6).size(), 1 + 4933 + 1 + 6 + 1U);
}

// Every length from short to long, so that no length of an inner buffer is special.
TEST(PrintFloating, NoLengthIsSpecial) {
  std::string digits = "1";
  for (double power = 1; power < 1e300; power *= 2) {
    EXPECT_EQ(ConstPrintDouble(power), digits + "." + std::string(32, '0'));
    std::string doubled;
    int carry = 0;
    for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
      const int sum = 2 * (*digit - '0') + carry;
      doubled.insert(doubled.begin(), static_cast<char>('0' + sum % 10));
      carry = sum / 10;
    }
    digits = carry == 0 ? doubled : "1" + doubled;
  }
}

TEST(PrintFloating, InfinityAndNan) {
  EXPECT_EQ(ConstPrintDouble(kInfinity), "inf");
  EXPECT_EQ(ConstPrintDouble(-kInfinity), "-inf");
  EXPECT_EQ(ConstPrintFloat(static_cast<float>(kInfinity)), "infF");
  EXPECT_EQ(ConstPrintDouble(kNan), "nan");
  EXPECT_EQ(ConstPrintFloat(static_cast<float>(-kNan)), "-nanF");
  EXPECT_EQ(ConstPrintLongDouble(kInfinity, 6), "infL");
}

TEST(Literals, DoNotFollowTheLocale) {
  const char* found = nullptr;
  for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "de_DE", "fr_FR", "ru_RU.UTF-8"}) {
    found = std::setlocale(LC_NUMERIC, name);
    if (found != nullptr) break;
  }
  if (found == nullptr) GTEST_SKIP() << "no locale with a decimal comma is installed";
  EXPECT_STREQ(std::localeconv()->decimal_point, ",");
  EXPECT_EQ(ConstParseDouble("1.5"), 1.5);
  EXPECT_EQ(ConstParseFloat("1,5."), 1.0F);
  EXPECT_EQ(ConstParseLongDouble("0x1.8p1"), 3.0L);
  EXPECT_EQ(ConstPrintDouble(1.5), "1.50000000000000000000000000000000");
  EXPECT_EQ(ConstPrintLongDouble(1.5L, 6), "1.500000L");
  std::setlocale(LC_NUMERIC, "C");
}

// What is printed reads back as the same value, and as the same type where the letters say it.
TEST(Literals, IntegerTextsReadBack) {
  constexpr TypeOfText kTypes[] = {kInt, kUInt, kLong, kULong, kLLong, kULLong};
  constexpr std::uint64_t kValues[] = {
      0,          1,           7,         8,          0x7FFFFFFF,     0x80000000,
      0xFFFFFFFF, 0x100000000, INT64_MAX, 1ULL << 63, UINT64_MAX - 1, UINT64_MAX};
  for (const auto& [type, sign] : kTypes) {
    for (const std::uint64_t value : kValues) {
      const std::uint64_t bits = type == 6 ? value : static_cast<std::uint32_t>(value);
      for (const int radix : {kRadixOctal, kRadixDecimal, kRadixHexadecimal}) {
        const std::string text = ConstPrintInteger(type, sign, radix, bits);
        const bool top_bit = (bits >> (type == 6 ? 63 : 31)) != 0;
        const int read_sign = radix == kRadixDecimal ? sign : top_bit ? 2 : 1;
        EXPECT_EQ(Classify(text.c_str()), (TypeOfText{type, read_sign})) << text;
        const bool is_zero_text = radix == kRadixDecimal && bits == 0;  // "0" reads as octal
        EXPECT_EQ(ConstRadix(text.c_str()), is_zero_text ? kRadixOctal : radix) << text;
        const std::uint64_t read =
            type == 6   ? sign == 1
                              ? static_cast<std::uint64_t>(ConstParseLongLong(text.c_str(), nullptr))
                              : ConstParseULongLong(text.c_str(), nullptr)
              : sign == 1 ? static_cast<std::uint32_t>(ConstParseInt(text.c_str(), nullptr))
                        : ConstParseUInt(text.c_str(), nullptr);
        EXPECT_EQ(read, bits) << text;
      }
    }
  }
}

// --- Making constants ----------------------------------------------------------------------------

class MakeTest : public testing::Test {
 protected:
  MakeTest() : graph_owner_(CdfgNewGraph()), graph_(graph_owner_.get()) {
    source_ = CdfgAddNode(graph_, DFG_OPERATION);
    CdfgSetFileName(graph_, source_, "filter.c");
    CdfgSetLine(graph_, source_, 12);
    CdfgSetColumn(graph_, source_, 34);
  }

  void ExpectPosition(NodeId node) {
    EXPECT_STREQ(CdfgGetFileName(graph_, node), "filter.c");
    EXPECT_EQ(CdfgGetLine(graph_, node), 12);
    EXPECT_EQ(CdfgGetColumn(graph_, node), 34);
  }

  void ExpectConstant(NodeId node, const char* text, std::int32_t value, int radix, int width) {
    EXPECT_EQ(CdfgGetKind(graph_, node), std::uint32_t{DFG_INPUT_CONST});
    ASSERT_EQ(CdfgGetAttrCount(graph_, node), 4);
    for (std::int32_t place = 1; place <= 4; ++place) {
      EXPECT_EQ(CdfgGetAttrIdAt(graph_, node, place), static_cast<std::uint32_t>(place));
      EXPECT_EQ(CdfgGetAttrTypeAt(graph_, node, place),
                place == 1 ? std::uint32_t{ATTR_STRING} : std::uint32_t{ATTR_INT});
    }
    EXPECT_STREQ(CdfgGetAttrStr(graph_, node, DfgInputCnst_STRVALUE), text);
    EXPECT_EQ(CdfgGetAttrInt(graph_, node, DfgInputCnst_INTVALUE), value);
    EXPECT_EQ(CdfgGetAttrInt(graph_, node, DfgInputCnst_BASE), radix);
    EXPECT_EQ(CdfgGetAttrInt(graph_, node, DfgInputCnst_WIDTH), width);
  }

  GraphPtr graph_owner_;
  CdfgGraph* graph_;
  NodeId source_ = 0;
};

TEST_F(MakeTest, BareConstant) {
  const NodeId constant = ConstMake(graph_, "0x1FUL", 31, kRadixHexadecimal, 8, source_, 0);
  EXPECT_EQ(constant, source_ + 1);
  EXPECT_EQ(CdfgNodeCount(graph_), 2U);
  ExpectConstant(constant, "0x1FUL", 31, 4, 8);
  ExpectPosition(constant);
  EXPECT_EQ(CdfgGetPrev(graph_, constant), 0U);
  EXPECT_EQ(CdfgGetNext(graph_, constant), 0U);
}

TEST_F(MakeTest, WrappedConstantStandsBehindAnEdgeMadeAfterIt) {
  const NodeId edge = ConstMake(graph_, "5", 5, kRadixDecimal, 0, source_, 1);
  const NodeId constant = source_ + 1;
  EXPECT_EQ(edge, source_ + 2);
  EXPECT_EQ(CdfgNodeCount(graph_), 3U);
  EXPECT_EQ(CdfgGetKind(graph_, edge), std::uint32_t{DFG_EDGE_PRESEDE});
  EXPECT_EQ(CdfgGetAttrCount(graph_, edge), 0);
  EXPECT_EQ(CdfgGetNext(graph_, edge), constant);
  EXPECT_EQ(CdfgGetPrev(graph_, edge), 0U);
  EXPECT_EQ(CdfgGetPrev(graph_, constant), edge);
  EXPECT_EQ(CdfgGetNext(graph_, constant), 0U);
  ExpectConstant(constant, "5", 5, 3, 0);
  ExpectPosition(edge);
  ExpectPosition(constant);
}

TEST_F(MakeTest, NotWrappedUnlessTheFlagIsOne) {
  for (const int flag : {0, 2, -1}) {
    const NodeId made = ConstMake(graph_, "5", 5, kRadixDecimal, 0, source_, flag);
    EXPECT_EQ(CdfgGetKind(graph_, made), std::uint32_t{DFG_INPUT_CONST});
    EXPECT_EQ(CdfgGetPrev(graph_, made), 0U);
  }
}

TEST_F(MakeTest, WithoutATextTheValueIsWrittenInTheRadix) {
  const auto make = [&](std::int32_t value, int radix) {
    return ConstMake(graph_, nullptr, value, radix, 0, source_, 0);
  };
  ExpectConstant(make(10, 1), "0xa", 10, 4, 0);  // binary becomes hexadecimal
  ExpectConstant(make(10, 2), "012", 10, 2, 0);
  ExpectConstant(make(10, 3), "10", 10, 3, 0);
  ExpectConstant(make(10, 4), "0xa", 10, 4, 0);
  ExpectConstant(make(10, 0), "10", 10, 0, 0);
  ExpectConstant(make(10, 7), "10", 10, 7, 0);
  ExpectConstant(make(-1, 1), "0xffffffff", -1, 4, 0);
  ExpectConstant(make(-1, 2), "037777777777", -1, 2, 0);
  ExpectConstant(make(-1, 3), "-1", -1, 3, 0);
  ExpectConstant(make(INT32_MIN, 3), "-2147483648", INT32_MIN, 3, 0);
  ExpectConstant(make(0, 2), "00", 0, 2, 0);
}

TEST_F(MakeTest, NotChangedWhenATextIsGiven) {
  ExpectConstant(ConstMake(graph_, "1010", 10, kRadixBinary, 4, source_, 0), "1010", 10, 1, 4);
  ExpectConstant(ConstMake(graph_, "", 10, kRadixDecimal, 0, source_, 0), "", 10, 3, 0);
}

TEST_F(MakeTest, TheTextIsCopied) {
  std::string text(70000, '7');
  const std::string same = text;
  const NodeId constant = ConstMake(graph_, text.c_str(), 7, kRadixDecimal, 0, source_, 0);
  text.assign(70000, '1');
  EXPECT_EQ(CdfgGetAttrStr(graph_, constant, DfgInputCnst_STRVALUE), same);
}

TEST_F(MakeTest, WithoutASourceThereIsNoPosition) {
  for (const NodeId source : {NodeId{0}, NodeId{99999}}) {
    const NodeId edge = ConstMake(graph_, "5", 5, kRadixDecimal, 0, source, 1);
    EXPECT_EQ(CdfgGetFileName(graph_, edge), nullptr);
    EXPECT_EQ(CdfgGetLine(graph_, edge), 0);
  }
}

TEST_F(MakeTest, NoGraphNoConstant) { EXPECT_EQ(ConstMake(nullptr, "5", 5, 3, 0, 0, 1), 0U); }

}  // namespace
