// How an operation on two literals is computed.
//
// 1. Type. The operand with the wider type decides: long double, double, float, long long, long,
//    int. The other is read as its own type and then converted. An integer result is unsigned when
//    either operand is, also where C would let a wider signed type win: kept, the rest of the chain
//    computes like that. The right operand of a shift is read as an int and has no say.
// 2. Value. Integers: one template over the four ways to hold bits, 32 or 64, signed or not; int
//    and long differ in the text alone. Floating types: one template over the three. Each operation
//    is rounded to its own type once.
// 3. Text. The letters of the type, and for integers the radix of the operands. Truth values are
//    decimal ints.
//
// Example: 0x10UL - 17. long is wider than int, one side is unsigned: unsigned long. 16 - 17 is
// 0xffffffff modulo 2^32. One side is hexadecimal: "0xffffffffL".
#include "constant/arithmetic.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <type_traits>

#include "cdfg/chain.h"
#include "constant/literal.h"

static_assert(FLT_EVAL_METHOD == 0, "float and double must be rounded after every operation");
static_assert(kTypeLongDouble > int{DECL_VALTYPE_DOUBLE} &&
              DECL_VALTYPE_DOUBLE > DECL_VALTYPE_FLOAT &&
              DECL_VALTYPE_FLOAT > DECL_VALTYPE_LONGLONG &&
              DECL_VALTYPE_LONGLONG > DECL_VALTYPE_LONG && DECL_VALTYPE_LONG > DECL_VALTYPE_INT);

namespace {

struct Fold {
  CdfgGraph* graph;
  NodeId operation;
  std::uint32_t code;  // CALC_*
};

struct Literal {
  const char* text;
  int type;
  bool is_unsigned;
};

// --- Operands ------------------------------------------------------------------------------------

// The constant that an operand attribute leads to, 0 if it leads to anything else.
NodeId FindConstant(const Fold& fold, std::uint32_t attribute) {
  const NodeId first = CdfgGetAttr(fold.graph, fold.operation, attribute);
  const NodeId operand = CdfgSkipReferences(fold.graph, first);
  return CdfgGetKind(fold.graph, operand) == DFG_INPUT_CONST ? operand : 0;
}

Literal ReadLiteral(const CdfgGraph* graph, NodeId constant) {
  int signedness = DECL_SIGNED;
  const int type = ConstClassify(graph, constant, &signedness);
  const char* text = CdfgGetAttrStr(graph, constant, DfgInputCnst_STRVALUE);
  return {text, type, signedness == DECL_UNSIGNED};
}

// The value of a literal, read at its own type and then converted.
template <typename Result>
Result ReadAs(const Literal& literal) {
  if constexpr (std::is_floating_point_v<Result>) {
    switch (literal.type) {
      case kTypeLongDouble:
        return static_cast<Result>(ConstParseLongDouble(literal.text));
      case DECL_VALTYPE_DOUBLE:
        return static_cast<Result>(ConstParseDouble(literal.text));
      case DECL_VALTYPE_FLOAT:
        return static_cast<Result>(ConstParseFloat(literal.text));
      default:
        break;
    }
  }
  const char* text = literal.text;
  if (literal.is_unsigned) {
    switch (literal.type) {
      case DECL_VALTYPE_LONGLONG:
        return static_cast<Result>(ConstParseULongLong(text, nullptr));
      case DECL_VALTYPE_LONG:
        return static_cast<Result>(ConstParseULong(text, nullptr));
      default:
        return static_cast<Result>(ConstParseUInt(text, nullptr));
    }
  }
  switch (literal.type) {
    case DECL_VALTYPE_LONGLONG:
      return static_cast<Result>(ConstParseLongLong(text, nullptr));
    case DECL_VALTYPE_LONG:
      return static_cast<Result>(ConstParseLong(text, nullptr));
    default:
      return static_cast<Result>(ConstParseInt(text, nullptr));
  }
}

// --- Results -------------------------------------------------------------------------------------

NodeId MakeResult(const Fold& fold, const std::string& text, std::int32_t value, int radix) {
  return ConstMake(fold.graph, text.c_str(), value, radix, 0, fold.operation, 1);
}

NodeId MakeInteger(const Fold& fold, int type, int signedness, int radix, std::uint64_t bits) {
  const std::string text = ConstPrintInteger(type, signedness, radix, bits);
  return MakeResult(fold, text, static_cast<std::int32_t>(bits), radix);
}

NodeId MakeTruth(const Fold& fold, bool truth, int type = DECL_VALTYPE_INT) {
  return MakeInteger(fold, type, DECL_SIGNED, kRadixDecimal, truth ? 1 : 0);
}

// The integer part as an int; what no int can hold is the most negative one.
std::int32_t IntegerPart(long double value) {
  using Limits = std::numeric_limits<std::int32_t>;
  const bool fits = value > Limits::min() - 1.0L && value < Limits::max() + 1.0L;
  return fits ? static_cast<std::int32_t>(value) : Limits::min();
}

// A quotient of long doubles keeps as many decimals as the other types, all else gets six: kept,
// the following steps know these texts.
enum class Decimals { kFew = 6, kMany = 32 };

std::string Print(float value, Decimals) { return ConstPrintFloat(value); }
std::string Print(double value, Decimals) { return ConstPrintDouble(value); }
std::string Print(long double value, Decimals decimals) {
  return ConstPrintLongDouble(value, static_cast<int>(decimals));
}

template <typename Floating>
NodeId MakeFloating(const Fold& fold, Floating value, Decimals decimals) {
  return MakeResult(fold, Print(value, decimals), IntegerPart(value), kRadixDecimal);
}

// --- Operators -----------------------------------------------------------------------------------

bool IsShift(std::uint32_t code) { return code == CALC_RightShift || code == CALC_LeftShift; }

bool GivesTruth(std::uint32_t code) { return code >= CALC_Les && code <= CALC_LogOr; }

template <typename Value>
bool ComputeTruth(std::uint32_t code, Value left, Value right) {
  switch (code) {
    case CALC_Les:
      return left < right;
    case CALC_LesEq:
      return left <= right;
    case CALC_Gre:
      return left > right;
    case CALC_GreEq:
      return left >= right;
    case CALC_Eq:
      return left == right;
    case CALC_NotEq:
      return left != right;
    case CALC_LogAnd:
      return left != 0 && right != 0;
    default:
      return left != 0 || right != 0;
  }
}

// Dividing by zero gives 0. Dividing by -1 negates the bits, so that the most negative value, whose
// negative no signed type holds, stays as it is.
template <typename Integer>
Integer Divide(Integer left, Integer right) {
  using Bits = std::make_unsigned_t<Integer>;
  if (right == 0) return 0;
  if (std::is_signed_v<Integer> && right == static_cast<Integer>(-1)) {
    return static_cast<Integer>(Bits{0} - static_cast<Bits>(left));
  }
  return left / right;
}

template <typename Integer>
Integer Remainder(Integer left, Integer right) {
  if (right == 0) return 0;
  if (std::is_signed_v<Integer> && right == static_cast<Integer>(-1)) return 0;
  return left % right;
}

// Bits are computed unsigned, where an overflow wraps; the sign matters to quotients and to what a
// shift to the right brings in.
template <typename Integer>
std::make_unsigned_t<Integer> ComputeBits(std::uint32_t code, Integer left, Integer right) {
  using Bits = std::make_unsigned_t<Integer>;
  const Bits left_bits = static_cast<Bits>(left);
  const Bits right_bits = static_cast<Bits>(right);
  const Bits count = right_bits % std::numeric_limits<Bits>::digits;
  switch (code) {
    case CALC_Mul:
      return left_bits * right_bits;
    case CALC_Div:
      return static_cast<Bits>(Divide(left, right));
    case CALC_Mod:
      return static_cast<Bits>(Remainder(left, right));
    case CALC_Add:
      return left_bits + right_bits;
    case CALC_Sub:
      return left_bits - right_bits;
    case CALC_RightShift:
      return static_cast<Bits>(left >> count);
    case CALC_LeftShift:
      return left_bits << count;
    case CALC_And:
      return left_bits & right_bits;
    case CALC_Or:
      return left_bits | right_bits;
    default:
      return left_bits ^ right_bits;
  }
}

bool HasFloatingFold(std::uint32_t code) {
  return code == CALC_Mul || code == CALC_Div || code == CALC_Add || code == CALC_Sub ||
         GivesTruth(code);
}

template <typename Floating>
Floating ComputeFloating(std::uint32_t code, Floating left, Floating right) {
  switch (code) {
    case CALC_Mul:
      return left * right;
    case CALC_Div:
      return right == 0 ? 0 : left / right;
    case CALC_Add:
      return left + right;
    default:
      return left - right;
  }
}

// The sign of a NaN shows in its text, and a compiler may choose which of two operands passes its
// sign on. Here the left NaN does, then the right one, and a NaN that comes from numbers is
// negative, so that every build prints the same.
template <typename Floating>
Floating SettleNan(Floating left, Floating right, Floating result) {
  if (!std::isnan(result)) return result;
  if (std::isnan(left)) return left;
  if (std::isnan(right)) return right;
  return std::copysign(result, Floating{-1});
}

// --- Folds ---------------------------------------------------------------------------------------

// Comparisons give an int, but one of two signed longs for "greater" gives a long: kept.
int TruthType(const Fold& fold, int type, bool is_unsigned) {
  const bool is_long = fold.code == CALC_Gre && type == DECL_VALTYPE_LONG && !is_unsigned;
  return is_long ? DECL_VALTYPE_LONG : DECL_VALTYPE_INT;
}

template <typename Integer>
NodeId FoldIntegers(const Fold& fold, int type, const Literal& left, const Literal& right) {
  const Integer left_value = ReadAs<Integer>(left);
  const Integer right_value = ReadAs<Integer>(right);
  constexpr bool kIsUnsigned = std::is_unsigned_v<Integer>;
  if (GivesTruth(fold.code)) {
    const bool truth = ComputeTruth(fold.code, left_value, right_value);
    return MakeTruth(fold, truth, TruthType(fold, type, kIsUnsigned));
  }
  const int radix = ConstCombineRadix(ConstRadix(left.text), ConstRadix(right.text));
  return MakeInteger(fold, type, kIsUnsigned ? DECL_UNSIGNED : DECL_SIGNED, radix,
                     ComputeBits(fold.code, left_value, right_value));
}

template <typename Floating>
NodeId FoldFloatings(const Fold& fold, const Literal& left, const Literal& right) {
  if (!HasFloatingFold(fold.code)) return 0;
  const Floating left_value = ReadAs<Floating>(left);
  const Floating right_value = ReadAs<Floating>(right);
  if (GivesTruth(fold.code)) {
    return MakeTruth(fold, ComputeTruth(fold.code, left_value, right_value));
  }
  const Floating value = ComputeFloating(fold.code, left_value, right_value);
  const bool is_quotient = fold.code == CALC_Div && right_value != 0;
  return MakeFloating(fold, SettleNan(left_value, right_value, value),
                      is_quotient ? Decimals::kMany : Decimals::kFew);
}

NodeId FoldBinary(const Fold& fold) {
  const NodeId left_constant = FindConstant(fold, DfgOpe_LEFT);
  const NodeId right_constant = FindConstant(fold, DfgOpe_RIGHT);
  if (left_constant == 0 || right_constant == 0) return 0;
  const Literal left = ReadLiteral(fold.graph, left_constant);
  Literal right = ReadLiteral(fold.graph, right_constant);
  if (IsShift(fold.code)) right = {right.text, DECL_VALTYPE_INT, false};

  const int type = std::max(left.type, right.type);
  const bool is_unsigned = left.is_unsigned || right.is_unsigned;
  switch (type) {
    case kTypeLongDouble:
      return FoldFloatings<long double>(fold, left, right);
    case DECL_VALTYPE_DOUBLE:
      return FoldFloatings<double>(fold, left, right);
    case DECL_VALTYPE_FLOAT:
      return FoldFloatings<float>(fold, left, right);
    case DECL_VALTYPE_LONGLONG:
      return is_unsigned ? FoldIntegers<std::uint64_t>(fold, type, left, right)
                         : FoldIntegers<std::int64_t>(fold, type, left, right);
    default:
      return is_unsigned ? FoldIntegers<std::uint32_t>(fold, type, left, right)
                         : FoldIntegers<std::int32_t>(fold, type, left, right);
  }
}

// The result is signed and decimal whatever the operand is: kept, -5U is the int "-5".
template <typename Bits>
NodeId FoldUnaryInteger(const Fold& fold, const Literal& operand) {
  const Bits bits = ReadAs<Bits>(operand);
  if (fold.code == CALC_Not) return MakeTruth(fold, bits == 0);
  const Bits result = fold.code == CALC_Minus ? Bits{0} - bits : ~bits;
  return MakeInteger(fold, operand.type, DECL_SIGNED, kRadixDecimal, result);
}

template <typename Floating>
NodeId FoldUnaryFloating(const Fold& fold, const Literal& operand) {
  if (fold.code == CALC_BitNot) return 0;
  const Floating value = ReadAs<Floating>(operand);
  if (fold.code == CALC_Not) return MakeTruth(fold, value == 0);
  return MakeFloating(fold, -value, Decimals::kFew);
}

NodeId FoldUnary(const Fold& fold) {
  const NodeId constant = FindConstant(fold, DfgOpe_LEFT);
  if (constant == 0) return 0;
  const Literal operand = ReadLiteral(fold.graph, constant);
  switch (operand.type) {
    case kTypeLongDouble:
      return FoldUnaryFloating<long double>(fold, operand);
    case DECL_VALTYPE_DOUBLE:
      return FoldUnaryFloating<double>(fold, operand);
    case DECL_VALTYPE_FLOAT:
      return FoldUnaryFloating<float>(fold, operand);
    case DECL_VALTYPE_LONGLONG:
      return FoldUnaryInteger<std::uint64_t>(fold, operand);
    default:
      return FoldUnaryInteger<std::uint32_t>(fold, operand);
  }
}

// The operand itself, whatever its type.
NodeId FoldPlus(const Fold& fold) {
  return CdfgGetPrev(fold.graph, FindConstant(fold, DfgOpe_LEFT));
}

}  // namespace

NodeId ConstFoldOperation(CdfgGraph* graph, NodeId operation) {
  if (CdfgGetKind(graph, operation) != DFG_OPERATION) return 0;
  const Fold fold = {graph, operation, CdfgGetAttr(graph, operation, DfgOpe_TYPE)};
  if (fold.code == CALC_Plus) return FoldPlus(fold);
  if (fold.code >= CALC_Minus && fold.code <= CALC_BitNot) return FoldUnary(fold);
  if (fold.code >= CALC_Mul && fold.code <= CALC_Xor) return FoldBinary(fold);
  return 0;
}
