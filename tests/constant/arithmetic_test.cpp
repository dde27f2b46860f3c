// Folding one operation: examples by hand, and every operator on every pair of types against an
// oracle that computes with the operands' values in wider types and prints from its own table.
#include "constant/arithmetic.h"

#include <gtest/gtest.h>

#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cdfg/memory.h"
#include "constant/literal.h"

namespace {

struct FreeGraph {
  void operator()(CdfgGraph* graph) const { CdfgFreeGraph(graph); }
};
using GraphPtr = std::unique_ptr<CdfgGraph, FreeGraph>;

// One operation with two constants, whose texts and operator can be changed.
class Bench {
 public:
  Bench(std::uint32_t code, const char* left, const char* right) {
    CdfgSetFileName(graph, operation, "filter.c");
    CdfgSetLine(graph, operation, 7);
    CdfgSetColumn(graph, operation, 9);
    SetCode(code);
    Connect(DfgOpe_LEFT, left_edge, left_constant, left);
    Connect(DfgOpe_RIGHT, right_edge, right_constant, right);
  }

  void SetCode(std::uint32_t code) {
    CdfgSetAttrInt(graph, operation, DfgOpe_TYPE, static_cast<std::int32_t>(code));
  }
  void SetRight(const char* text) {
    CdfgSetAttrStr(graph, right_constant, DfgInputCnst_STRVALUE, text);
  }
  NodeId Run() { return ConstFoldOperation(graph, operation); }

  const GraphPtr owner{CdfgNewGraph()};
  CdfgGraph* const graph = owner.get();
  const NodeId operation = CdfgAddNode(graph, DFG_OPERATION);
  const NodeId left_edge = CdfgAddNode(graph, DFG_EDGE_PRESEDE);
  const NodeId left_constant = CdfgAddNode(graph, DFG_INPUT_CONST);
  const NodeId right_edge = CdfgAddNode(graph, DFG_EDGE_PRESEDE);
  const NodeId right_constant = CdfgAddNode(graph, DFG_INPUT_CONST);

 private:
  void Connect(std::uint32_t attribute, NodeId edge, NodeId constant, const char* text) {
    CdfgSetAttrNode(graph, operation, attribute, edge);
    CdfgSetNext(graph, edge, constant);
    CdfgSetPrev(graph, constant, edge);
    CdfgSetAttrStr(graph, constant, DfgInputCnst_STRVALUE, text);
  }
};

struct Result {
  std::string text;
  std::int32_t value;
  int radix;
  bool operator==(const Result&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Result& result) {
  return out << result.text << " value " << result.value << " radix " << result.radix;
}

// What a new constant holds; also checks the parts that are the same for every result.
Result ReadResult(const CdfgGraph* graph, NodeId edge) {
  const NodeId constant = CdfgGetNext(graph, edge);
  EXPECT_EQ(edge, constant + 1);
  EXPECT_EQ(CdfgGetKind(graph, edge), std::uint32_t{DFG_EDGE_PRESEDE});
  EXPECT_EQ(CdfgGetKind(graph, constant), std::uint32_t{DFG_INPUT_CONST});
  EXPECT_EQ(CdfgGetPrev(graph, constant), edge);
  EXPECT_EQ(CdfgGetAttrCount(graph, constant), 4);
  EXPECT_EQ(CdfgGetAttrInt(graph, constant, DfgInputCnst_WIDTH), 0);
  EXPECT_EQ(CdfgGetLine(graph, constant), 7);
  EXPECT_EQ(CdfgGetColumn(graph, edge), 9);
  const char* text = CdfgGetAttrStr(graph, constant, DfgInputCnst_STRVALUE);
  return {text == nullptr ? "(null)" : text, CdfgGetAttrInt(graph, constant, DfgInputCnst_INTVALUE),
          CdfgGetAttrInt(graph, constant, DfgInputCnst_BASE)};
}

std::optional<Result> FoldTexts(std::uint32_t code, const char* left, const char* right) {
  Bench bench(code, left, right);
  const NodeId edge = bench.Run();
  if (edge == 0) return std::nullopt;
  return ReadResult(bench.graph, edge);
}

using Codes = std::initializer_list<std::uint32_t>;

struct Example {
  const char* left;
  std::uint32_t code;
  const char* right;
  Result result;
};

void CheckExamples(std::initializer_list<Example> examples) {
  for (const Example& one : examples) {
    SCOPED_TRACE(std::string(one.left) + " op " + std::to_string(one.code) + " " + one.right);
    EXPECT_EQ(FoldTexts(one.code, one.left, one.right), one.result);
  }
}

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

// --- Examples ------------------------------------------------------------------------------------

TEST(FoldBinary, Integers) {
  CheckExamples({{"2", CALC_Add, "3", {"5", 5, 3}},
                 {"5U", CALC_Sub, "6", {"4294967295U", -1, 3}},
                 {"3", CALC_Mul, "4L", {"12L", 12, 3}},
                 {"7", CALC_Div, "-2", {"-3", -3, 3}},
                 {"-7", CALC_Mod, "2", {"-1", -1, 3}},
                 {"7U", CALC_Div, "2L", {"3LU", 3, 3}},
                 {"2147483647", CALC_Add, "1", {"-2147483648", kMin, 3}},
                 {"65536", CALC_Mul, "65536", {"0", 0, 3}},
                 {"65536LL", CALC_Mul, "65536", {"4294967296LL", 0, 3}},
                 {"12", CALC_And, "10", {"8", 8, 3}},
                 {"12", CALC_Or, "10LU", {"14LU", 14, 3}},
                 {"12LL", CALC_Xor, "10", {"6LL", 6, 3}},
                 {"9223372036854775807LL", CALC_Add, "1", {"-9223372036854775808LL", 0, 3}}});
}

TEST(FoldBinary, DividingByZeroGivesZeroInTheRadixOfTheTexts) {
  CheckExamples({{"7", CALC_Div, "0", {"00", 0, 2}},
                 {"7", CALC_Mod, "0", {"00", 0, 2}},
                 {"7L", CALC_Div, "0x0", {"0x0L", 0, 4}},
                 {"7LLU", CALC_Mod, "-0", {"0LLU", 0, 3}},
                 {"7U", CALC_Div, "x", {"0U", 0, 3}}});
}

TEST(FoldBinary, MostNegativeValueDividedByMinusOne) {
  CheckExamples({{"-2147483648", CALC_Div, "-1", {"-2147483648", kMin, 3}},
                 {"-2147483648", CALC_Mod, "-1", {"0", 0, 3}},
                 {"-2147483648L", CALC_Div, "-1", {"-2147483648L", kMin, 3}},
                 {"-9223372036854775808LL", CALC_Div, "-1", {"-9223372036854775808LL", 0, 3}},
                 {"-9223372036854775808LL", CALC_Mod, "-1", {"0LL", 0, 3}}});
}

TEST(FoldBinary, RadixOfBothTexts) {
  CheckExamples({{"0x10", CALC_Add, "1", {"0x11", 17, 4}},
                 {"010", CALC_Add, "1", {"011", 9, 2}},
                 {"0x10", CALC_Add, "010", {"0x18", 24, 4}},
                 {"1", CALC_Sub, "0x2", {"0xffffffff", -1, 4}},
                 {"-1", CALC_Add, "0LL", {"01777777777777777777777LL", -1, 2}},
                 {"0x10UL", CALC_Sub, "17", {"0xffffffffL", -1, 4}},
                 {"010ULL", CALC_Mul, "8", {"0100LL", 64, 2}}});
}

TEST(FoldBinary, ComparisonsAreDecimalInts) {
  CheckExamples({{"3", CALC_Gre, "2", {"1", 1, 3}},
                 {"0x3", CALC_Gre, "0x2", {"1", 1, 3}},
                 {"-1", CALC_Les, "0", {"1", 1, 3}},
                 {"-1", CALC_Les, "0U", {"0", 0, 3}},
                 {"-1", CALC_Gre, "0U", {"1", 1, 3}},
                 {"-1LL", CALC_Gre, "1U", {"1", 1, 3}},  // unsigned, where C compares signed
                 {"3L", CALC_Les, "4L", {"1", 1, 3}},
                 {"4294967296LL", CALC_LogAnd, "1", {"1", 1, 3}},
                 {"0", CALC_LogOr, "4294967296LL", {"1", 1, 3}},
                 {"0", CALC_LogAnd, "1", {"0", 0, 3}},
                 {"7", CALC_NotEq, "7L", {"0", 0, 3}}});
}

TEST(FoldBinary, GreaterOfSignedLongsIsALong) {
  CheckExamples({{"3L", CALC_Gre, "2L", {"1L", 1, 3}},
                 {"3", CALC_Gre, "4L", {"0L", 0, 3}},
                 {"3L", CALC_Gre, "2", {"1L", 1, 3}}});
}

TEST(FoldBinary, NotALongForOtherComparisonsOrTypes) {
  CheckExamples({{"3L", CALC_GreEq, "2L", {"1", 1, 3}},
                 {"3UL", CALC_Gre, "2L", {"1", 1, 3}},
                 {"3L", CALC_Gre, "2U", {"1", 1, 3}},
                 {"3LL", CALC_Gre, "2L", {"1", 1, 3}},
                 {"3L", CALC_Gre, "2.0", {"1", 1, 3}},
                 {"3", CALC_Gre, "2", {"1", 1, 3}}});
}

TEST(FoldBinary, Shifts) {
  CheckExamples({{"1", CALC_LeftShift, "33", {"2", 2, 3}},
                 {"1LL", CALC_LeftShift, "33", {"8589934592LL", 0, 3}},
                 {"1LL", CALC_LeftShift, "65", {"2LL", 2, 3}},
                 {"-1", CALC_RightShift, "1", {"-1", -1, 3}},
                 {"0xFFFFFFFF", CALC_RightShift, "1", {"0x7fffffff", 0x7fffffff, 4}},
                 {"-1LL", CALC_RightShift, "1", {"-1LL", -1, 3}},
                 {"-2L", CALC_RightShift, "1", {"-1L", -1, 3}},
                 {"1", CALC_LeftShift, "-1", {"-2147483648", kMin, 3}}});
}

TEST(FoldBinary, TheCountOfAShiftHasNoSayInTheType) {
  CheckExamples({{"1", CALC_LeftShift, "2UL", {"4", 4, 3}},
                 {"1", CALC_LeftShift, "2LL", {"4", 4, 3}},
                 {"-8", CALC_RightShift, "1U", {"-4", -4, 3}},
                 {"1", CALC_LeftShift, "2.5", {"4", 4, 3}},
                 {"1", CALC_LeftShift, "3e4", {"8", 8, 3}},
                 {"1", CALC_LeftShift, "0.5", {"01", 1, 2}},  // but its radix counts
                 {"1", CALC_LeftShift, "0x4", {"0x10", 16, 4}},
                 {"1", CALC_LeftShift, "4294967297LL", {"-2147483648", kMin, 3}}});
}

TEST(FoldBinary, EachOperandIsReadAtItsOwnType) {
  CheckExamples({{"3000000000", CALC_Add, "0U", {"017777777777", 0x7fffffff, 2}},
                 {"3000000000", CALC_Add, "1LL", {"2147483648LL", kMin, 3}},
                 {"0xFFFFFFFF", CALC_Add, "1LL", {"0x100000000LL", 0, 4}},
                 {"-1", CALC_Add, "1ULL", {"0LLU", 0, 3}},
                 {"1.1f", CALC_Add, "0.0", {"1.10000002384185791015625000000000", 1, 3}}});
}

TEST(FoldBinary, FloatingValues) {
  CheckExamples({{"1.5F", CALC_Mul, "2", {"3.00000000000000000000000000000000F", 3, 3}},
                 {"1.5", CALC_Sub, "2U", {"-0.50000000000000000000000000000000", 0, 3}},
                 {"1.5F", CALC_Add, "0.25", {"1.75000000000000000000000000000000", 1, 3}},
                 {"7.0", CALC_Div, "0.0", {"0.00000000000000000000000000000000", 0, 3}},
                 {"7.0f", CALC_Div, "-0.0f", {"0.00000000000000000000000000000000F", 0, 3}},
                 {"1", CALC_Div, "3.0f", {"0.33333334326744079589843750000000F", 0, 3}},
                 {"0x10", CALC_Mul, "0.5", {"8.00000000000000000000000000000000", 8, 3}},
                 {"16777217",
                  CALC_Add,
                  "0.0f",
                  {"16777216.00000000000000000000000000000000F", 16777216, 3}}});
}

TEST(FoldBinary, LongDoublesHaveManyDecimalsInQuotientsOnly) {
  CheckExamples({{"1.5L", CALC_Mul, "2", {"3.000000L", 3, 3}},
                 {"1.5L", CALC_Add, "2.0f", {"3.500000L", 3, 3}},
                 {"1.5L", CALC_Sub, "2.0", {"-0.500000L", 0, 3}},
                 {"1.0L", CALC_Div, "4", {"0.25000000000000000000000000000000L", 0, 3}},
                 {"1.0L", CALC_Div, "0", {"0.000000L", 0, 3}},
                 {"1.0L", CALC_Div, "0.0", {"0.000000L", 0, 3}}});
}

TEST(FoldBinary, FloatingComparisons) {
  CheckExamples({{"1.5", CALC_Gre, "1", {"1", 1, 3}},
                 {"nan.", CALC_Eq, "nan.", {"0", 0, 3}},
                 {"nan.", CALC_NotEq, "nan.", {"1", 1, 3}},
                 {"nan.", CALC_LesEq, "1.0", {"0", 0, 3}},
                 {"nan.", CALC_LogAnd, "1", {"1", 1, 3}},
                 {"0.0", CALC_LogOr, "nan.", {"1", 1, 3}},
                 {"0.0", CALC_LogOr, "-0.0L", {"0", 0, 3}},
                 {"16777217", CALC_Eq, "16777216.0f", {"1", 1, 3}}});
}

TEST(FoldBinary, WhatNoIntHoldsIsTheMostNegativeInt) {
  CheckExamples(
      {{"2147483647.0",
        CALC_Add,
        "0.5",
        {"2147483647.50000000000000000000000000000000", INT32_MAX, 3}},
       {"2147483647.0", CALC_Add, "1.0", {"2147483648.00000000000000000000000000000000", kMin, 3}},
       {"-2147483648.0",
        CALC_Sub,
        "0.5",
        {"-2147483648.50000000000000000000000000000000", kMin, 3}},
       {"-4294967295.0",
        CALC_Sub,
        "0.0",
        {"-4294967295.00000000000000000000000000000000", kMin, 3}},
       {"1e999", CALC_Add, "1", {"inf", kMin, 3}},
       {"-1e999", CALC_Add, "1.0f", {"-inf", kMin, 3}},
       {"inf.", CALC_Mul, "2", {"infF", kMin, 3}},
       {"1e999", CALC_Sub, "1e999", {"-nan", kMin, 3}},
       {"nan.", CALC_Div, "0.0", {"0.00000000000000000000000000000000", 0, 3}},
       {"0.0", CALC_Div, "nan.", {"nan", kMin, 3}}});
}

TEST(FoldBinary, LargeResultsAreWrittenInFull) {
  const std::optional<Result> large = FoldTexts(CALC_Mul, "1e308", "1.0L");
  ASSERT_TRUE(large.has_value());
  EXPECT_EQ(large->text.size(), 309 + 1 + 6 + 1U);
  const std::optional<Result> larger = FoldTexts(CALC_Div, "1.0e4932L", "1");
  ASSERT_TRUE(larger.has_value());
  EXPECT_EQ(larger->text.size(), 4933 + 1 + 32 + 1U);
  EXPECT_EQ(ConstParseLongDouble(larger->text.c_str()), 1.0e4932L);
}

TEST(FoldBinary, NotOperatorsThatFloatingTypesLack) {
  for (const std::uint32_t code :
       Codes{CALC_Mod, CALC_RightShift, CALC_LeftShift, CALC_And, CALC_Or, CALC_Xor}) {
    for (const char* floating : {"2.5", "2.5f", "2.5L"}) {
      EXPECT_FALSE(FoldTexts(code, floating, "1").has_value()) << code << floating;
    }
  }
  for (const std::uint32_t code : Codes{CALC_Mod, CALC_And, CALC_Or, CALC_Xor}) {
    EXPECT_FALSE(FoldTexts(code, "1", "2.5").has_value()) << code;
  }
}

TEST(FoldUnary, Integers) {
  CheckExamples({{"5", CALC_Minus, "", {"-5", -5, 3}},
                 {"5U", CALC_Minus, "", {"-5", -5, 3}},
                 {"0x10", CALC_Minus, "", {"-16", -16, 3}},
                 {"-2147483648", CALC_Minus, "", {"-2147483648", kMin, 3}},
                 {"0xFFFFFFFF", CALC_Minus, "", {"1", 1, 3}},
                 {"5UL", CALC_Minus, "", {"-5L", -5, 3}},
                 {"5ULL", CALC_Minus, "", {"-5LL", -5, 3}},
                 {"-9223372036854775808LL", CALC_Minus, "", {"-9223372036854775808LL", 0, 3}},
                 {"0xFFUL", CALC_BitNot, "", {"-256L", -256, 3}},
                 {"0", CALC_BitNot, "", {"-1", -1, 3}},
                 {"0ULL", CALC_BitNot, "", {"-1LL", -1, 3}},
                 {"0xFFFFFFFF00000000LL", CALC_BitNot, "", {"4294967295LL", -1, 3}},
                 {"0L", CALC_Not, "", {"1", 1, 3}},
                 {"017", CALC_Not, "", {"0", 0, 3}},
                 {"4294967296LL", CALC_Not, "", {"0", 0, 3}}});
}

TEST(FoldUnary, FloatingValues) {
  CheckExamples({{"1.5f", CALC_Minus, "", {"-1.50000000000000000000000000000000F", -1, 3}},
                 {"1.5", CALC_Minus, "", {"-1.50000000000000000000000000000000", -1, 3}},
                 {"1.5L", CALC_Minus, "", {"-1.500000L", -1, 3}},
                 {"0.0", CALC_Minus, "", {"-0.00000000000000000000000000000000", 0, 3}},
                 {"nan.", CALC_Minus, "", {"-nan", kMin, 3}},
                 {"0.0f", CALC_Not, "", {"1", 1, 3}},
                 {"-0.0L", CALC_Not, "", {"1", 1, 3}},
                 {"0.1", CALC_Not, "", {"0", 0, 3}},
                 {"nan.", CALC_Not, "", {"0", 0, 3}}});
}

TEST(FoldUnary, NotTheComplementOfAFloatingValue) {
  for (const char* text : {"1.5", "1.5f", "1.5L"}) {
    EXPECT_FALSE(FoldTexts(CALC_BitNot, text, "1").has_value()) << text;
  }
}

TEST(FoldUnary, NeedsNoRightOperand) {
  Bench bench(CALC_Minus, "5", "");
  CdfgSetAttrNode(bench.graph, bench.operation, DfgOpe_RIGHT, 0);
  EXPECT_EQ(ReadResult(bench.graph, bench.Run()), (Result{"-5", -5, 3}));
}

TEST(FoldPlus, AnswersTheEdgeOfItsOperandAndMakesNothing) {
  for (const char* text : {"5", "0x5UL", "1.5L", "garbage", ""}) {
    Bench bench(CALC_Plus, text, "1");
    const std::size_t count = CdfgNodeCount(bench.graph);
    EXPECT_EQ(bench.Run(), bench.left_edge);
    EXPECT_EQ(CdfgNodeCount(bench.graph), count);
  }
}

TEST(FoldPlus, NotWithoutAConstantOrAnEdgeInFrontOfIt) {
  Bench bench(CALC_Plus, "5", "1");
  CdfgSetPrev(bench.graph, bench.left_constant, 0);
  EXPECT_EQ(bench.Run(), 0U);
  CdfgSetKind(bench.graph, bench.left_constant, DFG_INPUT_VAR);
  CdfgSetPrev(bench.graph, bench.left_constant, bench.left_edge);
  EXPECT_EQ(bench.Run(), 0U);
}

// --- Graph shapes --------------------------------------------------------------------------------

TEST(FoldOperation, NotOtherOperators) {
  for (std::uint32_t code = 0; code <= 45; ++code) {
    const bool is_reduction = code >= CALC_AndReduce && code <= CALC_XnorReduce;
    if (code != 0 && code <= CALC_Xor && !is_reduction) continue;
    EXPECT_FALSE(FoldTexts(code, "1", "2").has_value()) << code;
  }
  EXPECT_FALSE(FoldTexts(0xFFFFFFFF, "1", "2").has_value());
}

TEST(FoldOperation, NotWithAnOperandThatIsNoConstant) {
  for (const std::uint32_t kind :
       Codes{DFG_INPUT_VAR, DFG_OPERATION, DFG_INPUT_STRING, DFG_EDGE_BLOCKING, DFG_FUNC_CALL}) {
    Bench left(CALC_Add, "1", "2");
    CdfgSetKind(left.graph, left.left_constant, kind);
    EXPECT_EQ(left.Run(), 0U);
    Bench right(CALC_Add, "1", "2");
    CdfgSetKind(right.graph, right.right_constant, kind);
    EXPECT_EQ(right.Run(), 0U);
    Bench unary(CALC_Minus, "1", "2");
    CdfgSetKind(unary.graph, unary.left_constant, kind);
    EXPECT_EQ(unary.Run(), 0U);
  }
}

TEST(FoldOperation, NotWithAMissingOperand) {
  for (const std::uint32_t attribute : Codes{DfgOpe_LEFT, DfgOpe_RIGHT}) {
    Bench bench(CALC_Add, "1", "2");
    CdfgSetAttrNode(bench.graph, bench.operation, attribute, 0);
    EXPECT_EQ(bench.Run(), 0U);
    CdfgSetAttrNode(bench.graph, bench.operation, attribute, 9999);
    EXPECT_EQ(bench.Run(), 0U);
  }
}

TEST(FoldOperation, NotNonsense) {
  Bench bench(CALC_Add, "1", "2");
  EXPECT_EQ(ConstFoldOperation(nullptr, bench.operation), 0U);
  EXPECT_EQ(ConstFoldOperation(bench.graph, 0), 0U);
  EXPECT_EQ(ConstFoldOperation(bench.graph, 9999), 0U);
  EXPECT_EQ(ConstFoldOperation(bench.graph, bench.left_constant), 0U);
}

TEST(FoldOperation, FindsOperandsBehindNoEdgeAndBehindARunOfEdges) {
  Bench bench(CALC_Add, "1", "2");
  CdfgSetAttrNode(bench.graph, bench.operation, DfgOpe_LEFT, bench.left_constant);
  const NodeId outer = CdfgAddNode(bench.graph, DFG_EDGE_PRESEDE);
  CdfgSetNext(bench.graph, outer, bench.right_edge);
  CdfgSetAttrNode(bench.graph, bench.operation, DfgOpe_RIGHT, outer);
  EXPECT_EQ(ReadResult(bench.graph, bench.Run()), (Result{"3", 3, 3}));
}

TEST(FoldOperation, NotAcrossAnEdgeThatEndsNowhere) {
  Bench bench(CALC_Add, "1", "2");
  CdfgSetNext(bench.graph, bench.left_edge, 0);
  EXPECT_EQ(bench.Run(), 0U);
}

TEST(FoldOperation, AConstantWithoutATextIsTheIntZero) {
  Bench bench(CALC_Add, nullptr, "2");
  EXPECT_EQ(ReadResult(bench.graph, bench.Run()), (Result{"2", 2, 3}));
}

TEST(FoldOperation, TheSameConstantMayBeBothOperands) {
  Bench bench(CALC_Mul, "7", "2");
  CdfgSetAttrNode(bench.graph, bench.operation, DfgOpe_RIGHT, bench.left_edge);
  EXPECT_EQ(ReadResult(bench.graph, bench.Run()), (Result{"49", 49, 3}));
}

TEST(FoldOperation, LeavesOperationAndOperandsAlone) {
  Bench bench(CALC_Add, "0x10", "1");
  const NodeId edge = bench.Run();
  EXPECT_EQ(CdfgNodeCount(bench.graph), 7U);
  EXPECT_STREQ(CdfgGetFileName(bench.graph, edge), "filter.c");
  EXPECT_EQ(CdfgGetNext(bench.graph, CdfgGetNext(bench.graph, edge)), 0U);
  EXPECT_EQ(CdfgGetPrev(bench.graph, edge), 0U);
  EXPECT_EQ(CdfgGetAttrCount(bench.graph, bench.operation), 3);
  EXPECT_EQ(CdfgGetAttr(bench.graph, bench.operation, DfgOpe_LEFT), bench.left_edge);
  EXPECT_EQ(CdfgGetAttr(bench.graph, bench.operation, DfgOpe_RIGHT), bench.right_edge);
  EXPECT_EQ(CdfgGetNext(bench.graph, bench.left_edge), bench.left_constant);
  EXPECT_EQ(CdfgGetPrev(bench.graph, bench.right_constant), bench.right_edge);
  EXPECT_EQ(CdfgGetAttrCount(bench.graph, bench.left_constant), 1);
  EXPECT_STREQ(CdfgGetAttrStr(bench.graph, bench.left_constant, DfgInputCnst_STRVALUE), "0x10");
  EXPECT_STREQ(CdfgGetAttrStr(bench.graph, bench.right_constant, DfgInputCnst_STRVALUE), "1");
}

struct Stopped {
  int status;
};

TEST(FoldOperation, StopsWhenReferencesLeadBackToThemselves) {
  CdfgSetStopHandler([](int status) { throw Stopped{status}; });
  Bench bench(CALC_Add, "1", "2");
  CdfgSetNext(bench.graph, bench.left_edge, bench.left_edge);
  EXPECT_THROW(bench.Run(), Stopped);
  CdfgSetStopHandler(nullptr);
}

TEST(FoldOperation, TextsOfAnyBytesAndLength) {
  for (const std::string& text :
       {std::string(65536, '9'), "0x" + std::string(65536, 'f'), std::string(65536, '\xff'),
        "1." + std::string(65536, '7') + "L", std::string(65536, 'e'), std::string(1, 'U')}) {
    for (std::uint32_t code = 1; code <= 28; ++code) {
      Bench bench(code, text.c_str(), text.c_str());
      const NodeId edge = bench.Run();
      if (edge != 0 && code != CALC_Plus) ReadResult(bench.graph, edge);
    }
  }
}

// --- Every operator on every pair of types -------------------------------------------------------

__extension__ typedef __int128 Wide;
__extension__ typedef unsigned __int128 WideBits;
__extension__ typedef __float128 Quad;  // holds every sum and product of doubles unrounded enough

enum Type { kI, kUI, kL, kUL, kLL, kULL, kF, kD, kLD, kTypeCount };

struct TypeRow {
  int code;
  int signedness;
  int bits;
  const char* decimal;
  const char* octal;
  const char* hexadecimal;
};

constexpr TypeRow kTypes[kTypeCount] = {
    {4, 1, 32, "%" PRId32, "0%" PRIo32, "0x%" PRIx32},
    {4, 2, 32, "%" PRIu32 "U", "0%" PRIo32, "0x%" PRIx32},
    {5, 1, 32, "%" PRId32 "L", "0%" PRIo32 "L", "0x%" PRIx32 "L"},
    {5, 2, 32, "%" PRIu32 "LU", "0%" PRIo32 "L", "0x%" PRIx32 "L"},
    {6, 1, 64, "%" PRId64 "LL", "0%" PRIo64 "LL", "0x%" PRIx64 "LL"},
    {6, 2, 64, "%" PRIu64 "LLU", "0%" PRIo64 "LL", "0x%" PRIx64 "LL"},
    {8, 1, 0, "%.32fF", "", ""},
    {9, 1, 0, "%.32f", "", ""},
    {11, 1, 0, "%LfL", "", ""},
};

// The type of a result by the types of its operands, left by right.
constexpr Type kResultType[kTypeCount][kTypeCount] = {
    /* int */ {kI, kUI, kL, kUL, kLL, kULL, kF, kD, kLD},
    /* unsigned */ {kUI, kUI, kUL, kUL, kULL, kULL, kF, kD, kLD},
    /* long */ {kL, kUL, kL, kUL, kLL, kULL, kF, kD, kLD},
    /* unsigned long */ {kUL, kUL, kUL, kUL, kULL, kULL, kF, kD, kLD},
    /* long long */ {kLL, kULL, kLL, kULL, kLL, kULL, kF, kD, kLD},
    /* unsigned long long */ {kULL, kULL, kULL, kULL, kULL, kULL, kF, kD, kLD},
    /* float */ {kF, kF, kF, kF, kF, kF, kF, kD, kLD},
    /* double */ {kD, kD, kD, kD, kD, kD, kD, kD, kLD},
    /* long double */ {kLD, kLD, kLD, kLD, kLD, kLD, kLD, kLD, kLD},
};

// A text with what it means: its type, radix and value, and what it counts as behind a shift.
struct Sample {
  std::string text;
  Type type;
  int radix;
  Wide integer;
  long double floating;
  std::int32_t shift_count;
};

bool IsFloating(Type type) { return type >= kF; }

constexpr Wide kTwoTo32 = Wide{1} << 32;
constexpr Wide kTwoTo64 = Wide{1} << 64;

// The value that the low bits of a number have in an integer type.
Wide Wrap(Wide value, int bits, bool is_signed) {
  const Wide modulus = bits == 32 ? kTwoTo32 : kTwoTo64;
  Wide rest = value % modulus;
  if (rest < 0) rest += modulus;
  return is_signed && rest >= modulus / 2 ? rest - modulus : rest;
}
Wide Wrap(Wide value, Type type) {
  return Wrap(value, kTypes[type].bits, kTypes[type].signedness == 1);
}
std::int32_t LowBits(Wide value) { return static_cast<std::int32_t>(Wrap(value, 32, true)); }

std::string PrintWith(const char* format, Wide value, int bits) {
  char text[64];
  if (bits == 32) {
    std::snprintf(text, sizeof text, format, static_cast<std::uint32_t>(Wrap(value, 32, false)));
  } else {
    std::snprintf(text, sizeof text, format, static_cast<std::uint64_t>(Wrap(value, 64, false)));
  }
  return text;
}

std::string PrintIn(Type type, int radix, Wide value) {
  const TypeRow& row = kTypes[type];
  const char* format = radix == 4 ? row.hexadecimal : radix == 2 ? row.octal : row.decimal;
  return PrintWith(format, value, row.bits);
}

// How a text counts behind a shift: a decimal one ends at the limits of an int, the others spell
// 32 bits, which are all set when the number is larger.
std::int32_t CountOf(int radix, Wide value) {
  if (radix != 3) return LowBits(value < kTwoTo32 ? value : kTwoTo32 - 1);
  if (value > INT32_MAX) return INT32_MAX;
  return value < INT32_MIN ? INT32_MIN : static_cast<std::int32_t>(value);
}

Sample Spell(Type type, int radix, Wide value) {
  Sample sample{PrintIn(type, radix, value), type, radix, value, 0, 0};
  const bool is_unsigned = kTypes[type].signedness == 2;
  const bool has_top_bit = value >= (Wide{1} << (kTypes[type].bits - 1));
  // Without its top bit an octal or hexadecimal number needs the letter to be unsigned.
  if (radix != 3 && is_unsigned && (!has_top_bit || radix == 2)) sample.text += 'U';
  if (radix == 3 && value == 0) sample.radix = 2;
  sample.shift_count = CountOf(sample.radix, value);
  return sample;
}

void SpellAll(std::vector<Sample>& samples, Type type, const std::vector<Wide>& decimals,
              const std::vector<Wide>& others) {
  for (const Wide value : decimals) samples.push_back(Spell(type, 3, value));
  for (const Wide value : others) samples.push_back(Spell(type, 2, value));
  for (const Wide value : others) samples.push_back(Spell(type, 4, value));
}

constexpr long double kInf = std::numeric_limits<long double>::infinity();
constexpr long double kNan = std::numeric_limits<long double>::quiet_NaN();

Sample Special(const char* text, Type type, Wide value, std::int32_t shift_count) {
  return {text, type, 3, value, 0, shift_count};
}
Sample Number(const char* text, Type type, long double value, std::int32_t shift_count) {
  const int radix = text[0] != '0' ? 3 : text[1] == 'x' ? 4 : 2;
  return {text, type, radix, 0, value, shift_count};
}

std::vector<Sample> MakeSamples() {
  const Wide two31 = Wide{1} << 31, two62 = Wide{1} << 62, two63 = Wide{1} << 63;
  std::vector<Sample> samples;
  for (const Type type : {kI, kL}) {
    SpellAll(
        samples, type,
        {0, 1, -1, 2, 7, 31, 32, 33, -1000, two31 / 2, two31 - 2, two31 - 1, -two31, 1 - two31},
        {0, 1, 33, two31 / 2, two31 - 1});
  }
  for (const Type type : {kUI, kUL}) {
    SpellAll(samples, type,
             {0, 1, 2, 31, 33, 64, 1000, two31 - 1, two31, kTwoTo32 - 2, kTwoTo32 - 1},
             {0, 1, 33, two31, kTwoTo32 - 1});
  }
  SpellAll(samples, kLL,
           {0, 1, -1, 33, 63, 64, 65, two31 - 1, two31, -two31 - 1, kTwoTo32, two62, two63 - 1,
            -two63, 1 - two63},
           {0, 65, kTwoTo32 - 1, kTwoTo32, two63 - 1});
  SpellAll(samples, kULL,
           {0, 1, 63, two31, kTwoTo32 - 1, kTwoTo32, two63 - 1, two63, kTwoTo64 - 2, kTwoTo64 - 1,
            Wide{6148914691236517205}},
           {0, 63, kTwoTo32, two63, kTwoTo64 - 1});
  const Sample others[] = {
      Special("3000000000", kI, INT32_MAX, INT32_MAX),
      Special("-99999999999", kI, INT32_MIN, INT32_MIN),
      Special("-5U", kUI, kTwoTo32 - 5, -5),
      Special("-99999999999LU", kUL, kTwoTo32 - 1, INT32_MIN),
      Special("99999999999999999999ll", kLL, two63 - 1, INT32_MAX),
      Special("-1uLL", kULL, kTwoTo64 - 1, -1),
      Special("", kI, 0, 0),
      Special("\xff", kI, 0, 0),
      Number("0.0f", kF, 0, 0),
      Number("-0.0F", kF, -0.0L, 0),
      Number("1.0f", kF, 1, 1),
      Number("-1.5F", kF, -1.5L, -1),
      Number("0.1f", kF, 0x1.99999ap-4L, 0),
      Number("16777217.0f", kF, 16777216, 16777217),
      Number("2147483648.0f", kF, 0x1p31L, INT32_MAX),
      Number("-2147483648.0f", kF, -0x1p31L, INT32_MIN),
      Number("9223372036854775808.0f", kF, 0x1p63L, INT32_MAX),
      Number("3.40282347e+38f", kF, 0x1.fffffep127L, 3),
      Number("-3.40282347e+38f", kF, -0x1.fffffep127L, -3),
      Number("1.17549435e-38f", kF, 0x1p-126L, 1),
      Number("1.00000012f", kF, 0x1.000002p0L, 1),
      Number("2147483520.0f", kF, 2147483520, 2147483520),
      Number("1.5e-45f", kF, 0x1p-149L, 1),
      Number("1.0e39f", kF, kInf, 1),
      Number("-inf.", kF, -kInf, 0),
      Number("nan.f", kF, kNan, 0),
      Number("0.0", kD, 0, 0),
      Number("-0.0", kD, -0.0L, 0),
      Number("1e0", kD, 1, 1),
      Number("-1.0", kD, -1, -1),
      Number("0.1", kD, 0x1.999999999999ap-4L, 0),
      Number("33e-1", kD, 0x1.a666666666666p+1L, 33),
      Number("9007199254740993.0", kD, 0x1p53L, INT32_MAX),
      Number("2147483647.5", kD, 2147483647.5L, INT32_MAX),
      Number("-2147483648.5", kD, -2147483648.5L, INT32_MIN),
      Number("18446744073709551616.0", kD, 0x1p64L, INT32_MAX),
      Number("1.7976931348623157e308", kD, 0x1.fffffffffffffp1023L, 1),
      Number("-1.7976931348623157e308", kD, -0x1.fffffffffffffp1023L, -1),
      Number("2.2250738585072014e-308", kD, 0x1p-1022L, 2),
      Number("1.0000000000000002", kD, 0x1.0000000000001p0L, 1),
      Number("-2147483649.0", kD, -2147483649.0L, INT32_MIN),
      Number("4.9406564584124654e-324", kD, 0x1p-1074L, 4),
      Number("0x1.8p1", kD, 3, 1),
      Number("1e999", kD, kInf, 1),
      Number("-nan.", kD, -kNan, 0),
      Number("0.0L", kLD, 0, 0),
      Number("-0.0l", kLD, -0.0L, 0),
      Number("1.5L", kLD, 1.5L, 1),
      Number("-1.0fl", kLD, -1, -1),
      Number("0.1L", kLD, 0x1.999999999999999ap-4L, 0),
      Number("9223372036854775809.0L", kLD, 0x1.0000000000000002p63L, INT32_MAX),
      Number("1.189731495357231765e+4932L", kLD, 0x1.fffffffffffffffep16383L, 1),
      Number("-1.189731495357231765e+4932L", kLD, -0x1.fffffffffffffffep16383L, -1),
      Number("3.3621031431120935063e-4932L", kLD, 0x1p-16382L, 3),
      Number("1.0000000000000000001L", kLD, 0x1.0000000000000002p0L, 1),
      Number("2147483648.0L", kLD, 2147483648.0L, INT32_MAX),
      Number("3.6451995318824746025e-4951L", kLD, 0x1p-16445L, 3),
      Number("inf.L", kLD, kInf, 0),
      Number("nan.L", kLD, kNan, 0),
  };
  samples.insert(samples.end(), std::begin(others), std::end(others));
  return samples;
}

// What an operation is expected to give: its text and what else is in the node, and the type.
struct Expected {
  Result result;
  Type type;
};

std::optional<Expected> Nothing() { return std::nullopt; }
std::optional<Expected> Truth(bool truth) {
  return Expected{{truth ? "1" : "0", truth ? 1 : 0, 3}, kI};
}

// Comparisons and logical operators on values of one type; empty for all others.
template <typename Value>
std::optional<bool> TruthOf(std::uint32_t code, Value left, Value right) {
  if (code == CALC_Les) return left < right;
  if (code == CALC_LesEq) return left <= right;
  if (code == CALC_Gre) return left > right;
  if (code == CALC_GreEq) return left >= right;
  if (code == CALC_Eq) return left == right;
  if (code == CALC_NotEq) return left != right;
  const bool has_left = !(left == 0), has_right = !(right == 0);
  if (code == CALC_LogAnd) return has_left && has_right;
  if (code == CALC_LogOr) return has_left || has_right;
  return std::nullopt;
}

Wide PowerOfTwo(int exponent) { return exponent == 0 ? Wide{1} : 2 * PowerOfTwo(exponent - 1); }

Wide FloorDivide(Wide value, Wide divisor) {
  return value >= 0 ? value / divisor : -((-value + divisor - 1) / divisor);
}

// Values of up to 64 bits have all but their product in 128 bits with room to spare.
Wide IntegerValue(std::uint32_t code, Wide left, Wide right, int count) {
  switch (code) {
    case CALC_Mul:
      return static_cast<Wide>(static_cast<WideBits>(left) * static_cast<WideBits>(right) %
                               static_cast<WideBits>(kTwoTo64));
    case CALC_Div:
      return right == 0 ? 0 : left / right;
    case CALC_Mod:
      return right == 0 ? 0 : left - left / right * right;
    case CALC_Add:
      return left + right;
    case CALC_Sub:
      return left - right;
    case CALC_RightShift:
      return FloorDivide(left, PowerOfTwo(count));
    case CALC_LeftShift:
      return IntegerValue(CALC_Mul, left, PowerOfTwo(count), 0);
    case CALC_And:
      return left & right;
    case CALC_Or:
      return left | right;
    default:
      return (left | right) - (left & right);
  }
}

Expected IntegerResult(Type type, int radix, Wide value) {
  return {{PrintIn(type, radix, value), LowBits(value), radix}, type};
}

std::optional<Expected> ExpectIntegers(std::uint32_t code, const Sample& left, const Sample& right,
                                       Type type) {
  const bool is_shift = code == CALC_RightShift || code == CALC_LeftShift;
  const Wide left_value = Wrap(left.integer, type);
  const Wide right_value = Wrap(is_shift ? right.shift_count : right.integer, type);
  if (const std::optional<bool> truth = TruthOf(code, left_value, right_value)) {
    if (type == kL && code == CALC_Gre) return IntegerResult(kL, 3, *truth ? 1 : 0);
    return Truth(*truth);
  }
  int radix = 3;
  if (left.radix == 2 || right.radix == 2) radix = 2;
  if (left.radix == 4 || right.radix == 4) radix = 4;
  const int count = static_cast<int>(Wrap(right_value, 64, false) % kTypes[type].bits);
  return IntegerResult(type, radix, IntegerValue(code, left_value, right_value, count));
}

std::string PrintFloating(const char* format, Type type, long double value) {
  const double narrow = static_cast<double>(value);
  char text[6000];
  const int length = type == kLD ? std::snprintf(text, sizeof text, format, value)
                                 : std::snprintf(text, sizeof text, format, narrow);
  EXPECT_LT(length, 6000);
  return text;
}

Expected FloatingResult(Type type, const char* format, long double value) {
  const bool has_int = value > -2147483649.0L && value < 2147483648.0L;
  const std::int32_t integer = has_int ? static_cast<std::int32_t>(std::trunc(value)) : kMin;
  return {{PrintFloating(format, type, value), integer, 3}, type};
}

// The nearest value of a floating type, kept in the widest.
long double RoundTo(Type type, Quad value) {
  if (type == kF) return static_cast<float>(value);
  return type == kD ? static_cast<double>(value) : static_cast<long double>(value);
}

long double ValueIn(Type type, const Sample& sample) {
  return IsFloating(sample.type) ? sample.floating
                                 : RoundTo(type, static_cast<Quad>(sample.integer));
}

template <typename Value>
Value Compute(std::uint32_t code, Value left, Value right) {
  if (code == CALC_Mul) return left * right;
  if (code == CALC_Add) return left + right;
  return code == CALC_Sub ? left - right : left / right;
}

// Quad has more than twice the digits of a double, so rounding its result gives the result that is
// rounded once. Nothing is that much wider than a long double.
long double FloatingValue(std::uint32_t code, Type type, long double left, long double right) {
  if (std::isnan(left)) return left;
  if (std::isnan(right)) return right;
  const long double value =
      type == kLD ? Compute(code, left, right)
                  : RoundTo(type, Compute(code, static_cast<Quad>(left), static_cast<Quad>(right)));
  return std::isnan(value) ? -kNan : value;
}

std::optional<Expected> ExpectFloatings(std::uint32_t code, const Sample& left, const Sample& right,
                                        Type type) {
  const long double left_value = ValueIn(type, left);
  const long double right_value = ValueIn(type, right);
  if (const auto truth = TruthOf(code, left_value, right_value)) return Truth(*truth);
  switch (code) {
    case CALC_Div:
      if (right_value == 0) return FloatingResult(type, kTypes[type].decimal, 0);
      return FloatingResult(type, type == kLD ? "%.32LfL" : kTypes[type].decimal,
                            FloatingValue(code, type, left_value, right_value));
    case CALC_Mul:
    case CALC_Add:
    case CALC_Sub:
      return FloatingResult(type, kTypes[type].decimal,
                            FloatingValue(code, type, left_value, right_value));
    default:
      return Nothing();
  }
}

std::optional<Expected> ExpectUnary(std::uint32_t code, const Sample& operand) {
  if (IsFloating(operand.type)) {
    if (code == CALC_Not) return Truth(operand.floating == 0);
    if (code == CALC_BitNot) return Nothing();
    return FloatingResult(operand.type, kTypes[operand.type].decimal, -operand.floating);
  }
  if (code == CALC_Not) return Truth(operand.integer == 0);
  const Type type = kTypes[operand.type].bits == 64  ? kLL
                    : kTypes[operand.type].code == 5 ? kL
                                                     : kI;
  return IntegerResult(type, 3, code == CALC_Minus ? -operand.integer : -operand.integer - 1);
}

std::optional<Expected> Expect(std::uint32_t code, const Sample& left, const Sample& right) {
  if (code >= CALC_Minus && code <= CALC_BitNot) return ExpectUnary(code, left);
  if (code < CALC_Mul) return Nothing();  // CALC_Plus is looked at apart
  const bool is_shift = code == CALC_RightShift || code == CALC_LeftShift;
  const Type type = kResultType[left.type][is_shift ? kI : right.type];
  return IsFloating(type) ? ExpectFloatings(code, left, right, type)
                          : ExpectIntegers(code, left, right, type);
}

// Folds every operator on every pair of samples and hands each result to `check`; gives up after
// some failures. Answers the number of cases.
template <typename Check>
long ForEachFold(Check check) {
  const std::vector<Sample> samples = MakeSamples();
  long cases = 0;
  for (const Sample& left : samples) {
    Bench bench(0, left.text.c_str(), "");
    for (const Sample& right : samples) {
      bench.SetRight(right.text.c_str());
      for (std::uint32_t code = CALC_Plus; code <= CALC_Xor; ++code) {
        bench.SetCode(code);
        check(bench, code, left, right, bench.Run());
        ++cases;
        if (testing::Test::HasFailure()) {
          ADD_FAILURE() << "'" << left.text << "' operator " << code << " '" << right.text << "'";
          return cases;
        }
      }
    }
  }
  return cases;
}

TEST(EveryOperatorAndType, SamplesAreOfTheTypesTheySay) {
  std::array<int, kTypeCount> count{};
  for (const Sample& sample : MakeSamples()) {
    Bench bench(CALC_Add, sample.text.c_str(), "");
    int signedness = 0;
    EXPECT_EQ(ConstClassify(bench.graph, bench.left_constant, &signedness),
              kTypes[sample.type].code)
        << sample.text;
    EXPECT_EQ(signedness, kTypes[sample.type].signedness) << sample.text;
    EXPECT_EQ(ConstRadix(sample.text.c_str()), sample.radix) << sample.text;
    ++count[sample.type];
  }
  for (const int samples_of_type : count) EXPECT_GE(samples_of_type, 10);
}

TEST(EveryOperatorAndType, AgreesWithTheOracle) {
  long folded = 0;
  const long cases = ForEachFold(
      [&](Bench& bench, std::uint32_t code, const Sample& left, const Sample& right, NodeId edge) {
        if (code == CALC_Plus) {
          EXPECT_EQ(edge, bench.left_edge);
          return;
        }
        const std::optional<Expected> expected = Expect(code, left, right);
        ASSERT_EQ(edge != 0, expected.has_value());
        if (edge == 0) return;
        EXPECT_EQ(ReadResult(bench.graph, edge), expected->result);
        ++folded;
      });
  EXPECT_GT(cases, 28 * 81 * 100);
  std::cout << "checked " << cases << " operations on " << MakeSamples().size()
            << " literals of 9 types, of which " << folded << " fold\n";
}

// The type that a result's own text says is the type it was computed in, with two exceptions: an
// infinity or a NaN has no point in its text and reads as an integer, and octal and hexadecimal
// texts have no U, so the top bit alone tells their sign.
TEST(EveryOperatorAndType, ResultsReadBackAsTheTypeTheyWereComputedIn) {
  long same = 0, not_finite = 0, by_top_bit = 0;
  ForEachFold(
      [&](Bench& bench, std::uint32_t code, const Sample& left, const Sample& right, NodeId edge) {
        const std::optional<Expected> expected = Expect(code, left, right);
        if (edge == 0 || !expected.has_value()) return;
        int signedness = 0;
        const NodeId constant = CdfgGetNext(bench.graph, edge);
        const int type = ConstClassify(bench.graph, constant, &signedness);
        const std::string& text = expected->result.text;
        if (text.find("inf") != std::string::npos || text.find("nan") != std::string::npos) {
          EXPECT_EQ(type, expected->type == kLD ? 5 : 4) << text;
          EXPECT_EQ(signedness, 1) << text;
          ++not_finite;
          return;
        }
        EXPECT_EQ(type, kTypes[expected->type].code) << text;
        if (signedness == kTypes[expected->type].signedness) {
          ++same;
          return;
        }
        EXPECT_NE(expected->result.radix, 3) << text;
        const std::uint64_t bits = ConstParseULongLong(text.c_str(), nullptr);
        EXPECT_EQ(signedness, (bits >> (kTypes[expected->type].bits - 1)) != 0 ? 2 : 1) << text;
        ++by_top_bit;
      });
  EXPECT_GT(not_finite, 0);
  EXPECT_GT(by_top_bit, 0);
  std::cout << same << " results read back as their type, " << by_top_bit
            << " with the sign of their top bit, " << not_finite << " are not finite\n";
}

}  // namespace
