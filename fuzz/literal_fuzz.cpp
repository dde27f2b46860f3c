// Fuzzes constant literals and their arithmetic: any bytes as texts, any operator.
//
// Input: one byte for the operator, one for where the left text ends, then the two texts. Every
// parser reads both texts, and one operation is folded on them. Besides crashes and undefined
// behaviour, it finds answers that contradict each other; then it aborts.
//
// With FUZZ_REPLAY_MAIN defined this is a program that runs the files it is given.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>

#include "cdfg/graph.h"
#include "constant/arithmetic.h"
#include "constant/literal.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

struct FreeGraph {
  void operator()(CdfgGraph* graph) const { CdfgFreeGraph(graph); }
};
using GraphPtr = std::unique_ptr<CdfgGraph, FreeGraph>;

void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "contradiction: %s\n", what);
  std::abort();
}

// A graph costs more than what is done in it, so it serves many inputs.
CdfgGraph* FreshGraph() {
  static GraphPtr graph;
  static int uses = 0;
  if (graph == nullptr || ++uses % 4096 == 0) graph.reset(CdfgNewGraph());
  return graph.get();
}

// --- Texts ---------------------------------------------------------------------------------------

void CheckIntegers(const char* text) {
  int radix[6] = {};
  const std::int32_t as_int = ConstParseInt(text, &radix[0]);
  const std::uint32_t as_uint = ConstParseUInt(text, &radix[1]);
  const std::int64_t as_llong = ConstParseLongLong(text, &radix[2]);
  const std::uint64_t as_ullong = ConstParseULongLong(text, &radix[3]);
  Check(ConstParseLong(text, &radix[4]) == as_int, "a long is read like an int");
  Check(ConstParseULong(text, &radix[5]) == as_uint, "an unsigned long is read like an unsigned");
  for (const int found : radix) Check(found == ConstRadix(text), "one radix");
  if (radix[0] == kRadixDecimal) {
    using Limits = std::numeric_limits<std::int32_t>;
    const std::int64_t clamped = std::clamp<std::int64_t>(as_llong, Limits::min(), Limits::max());
    Check(as_int == clamped, "a decimal int ends at its limits");
  } else {
    Check(static_cast<std::uint32_t>(as_int) == as_uint, "an int spells bits");
    Check(static_cast<std::uint64_t>(as_llong) == as_ullong, "a long long spells bits");
  }
}

template <typename Narrow, typename Wide>
void CheckNarrower(Narrow narrow, Wide wide, const char* what) {
  if (std::isnan(wide)) {
    Check(std::isnan(narrow), what);
    return;
  }
  Check(std::signbit(narrow) == std::signbit(wide), what);
  Check(!std::isinf(wide) || std::isinf(narrow), what);
  const auto up = std::nextafter(narrow, std::numeric_limits<Narrow>::infinity());
  const auto down = std::nextafter(narrow, -std::numeric_limits<Narrow>::infinity());
  Check(Wide{down} <= wide && wide <= Wide{up}, what);
}

void CheckFloatings(const char* text) {
  const long double extended = ConstParseLongDouble(text);
  CheckNarrower(ConstParseFloat(text), extended, "float beside long double");
  CheckNarrower(ConstParseDouble(text), extended, "double beside long double");
}

void CheckType(const CdfgGraph* graph, NodeId constant) {
  int signedness = 0;
  const int type = ConstClassify(graph, constant, &signedness);
  const bool is_integer =
      type == DECL_VALTYPE_INT || type == DECL_VALTYPE_LONG || type == DECL_VALTYPE_LONGLONG;
  const bool is_floating =
      type == DECL_VALTYPE_FLOAT || type == DECL_VALTYPE_DOUBLE || type == kTypeLongDouble;
  Check(is_integer || is_floating, "a known type");
  Check(signedness == DECL_SIGNED || (is_integer && signedness == DECL_UNSIGNED), "a signedness");
}

void CheckText(CdfgGraph* graph, NodeId constant) {
  const char* text = CdfgGetAttrStr(graph, constant, DfgInputCnst_STRVALUE);
  CheckType(graph, constant);
  CheckIntegers(text);
  CheckFloatings(text);
}

// --- Operations ----------------------------------------------------------------------------------

NodeId AddOperand(CdfgGraph* graph, const std::string& text) {
  const NodeId edge = CdfgAddNode(graph, DFG_EDGE_PRESEDE);
  const NodeId constant = CdfgAddNode(graph, DFG_INPUT_CONST);
  CdfgSetNext(graph, edge, constant);
  CdfgSetPrev(graph, constant, edge);
  CdfgSetAttrStr(graph, constant, DfgInputCnst_STRVALUE, text.c_str());
  return edge;
}

// The low bits of an integer text read at its own type.
std::int32_t LowBits(const char* text, int type, int signedness) {
  if (type != DECL_VALTYPE_LONGLONG) {
    return signedness == DECL_UNSIGNED ? static_cast<std::int32_t>(ConstParseUInt(text, nullptr))
                                       : ConstParseInt(text, nullptr);
  }
  return signedness == DECL_UNSIGNED ? static_cast<std::int32_t>(ConstParseULongLong(text, nullptr))
                                     : static_cast<std::int32_t>(ConstParseLongLong(text, nullptr));
}

std::int32_t IntegerPart(double value) {
  const bool fits = value > -2147483649.0 && value < 2147483648.0;
  return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

// The integer value that stands beside a text is the value of the text.
void CheckValue(const CdfgGraph* graph, NodeId constant) {
  const std::string text = CdfgGetAttrStr(graph, constant, DfgInputCnst_STRVALUE);
  const std::int32_t value = CdfgGetAttrInt(graph, constant, DfgInputCnst_INTVALUE);
  int signedness = 0;
  const int type = ConstClassify(graph, constant, &signedness);
  const bool is_finite = text.find('n') == std::string::npos;  // "inf" and "nan" have one
  if (!is_finite) {
    Check(value == std::numeric_limits<std::int32_t>::min(), "no finite number has no int");
  } else if (type == DECL_VALTYPE_FLOAT || type == DECL_VALTYPE_DOUBLE) {
    Check(value == IntegerPart(ConstParseDouble(text.c_str())), "integer part beside the text");
  } else if (type != kTypeLongDouble) {  // its six decimals may round up to another integer
    Check(value == LowBits(text.c_str(), type, signedness), "low bits beside the text");
  }
}

void CheckResult(CdfgGraph* graph, NodeId edge, NodeId last) {
  const NodeId constant = last + 1;
  Check(edge == constant + 1, "a constant and an edge are made");
  Check(CdfgGetKind(graph, edge) == DFG_EDGE_PRESEDE && CdfgGetNext(graph, edge) == constant,
        "the edge leads to the constant");
  Check(CdfgGetKind(graph, constant) == DFG_INPUT_CONST && CdfgGetPrev(graph, constant) == edge,
        "the constant stands behind the edge");
  const int radix = CdfgGetAttrInt(graph, constant, DfgInputCnst_BASE);
  Check(radix >= kRadixOctal && radix <= kRadixHexadecimal, "a radix");
  Check(CdfgGetAttrCount(graph, constant) == 4, "four attributes");
  CheckText(graph, constant);
  CheckValue(graph, constant);
}

void CheckFold(CdfgGraph* graph, std::uint32_t code, NodeId left, NodeId right) {
  const NodeId operation = CdfgAddNode(graph, DFG_OPERATION);
  CdfgSetAttrInt(graph, operation, DfgOpe_TYPE, static_cast<std::int32_t>(code));
  CdfgSetAttrNode(graph, operation, DfgOpe_LEFT, left);
  CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, right);
  const std::size_t count = CdfgNodeCount(graph);
  const NodeId edge = ConstFoldOperation(graph, operation);
  if (edge == 0 || code == CALC_Plus) {
    Check(edge == 0 || edge == left, "plus answers its operand");
    Check(CdfgNodeCount(graph) == count, "nothing is made");
    return;
  }
  Check(CdfgNodeCount(graph) == count + 2, "two nodes are made");
  CheckResult(graph, edge, operation);
}

// A constant made of a value alone reads back as that value.
void CheckMade(CdfgGraph* graph, std::int32_t value, int radix) {
  const NodeId constant = ConstMake(graph, nullptr, value, radix, 0, 0, 0);
  const char* text = CdfgGetAttrStr(graph, constant, DfgInputCnst_STRVALUE);
  Check(ConstParseInt(text, nullptr) == value, "a made constant has its value");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::uint32_t code = data[0] % 41U;
  const char* texts = reinterpret_cast<const char*>(data) + 2;
  const std::size_t length = size - 2;
  const std::size_t left_length = data[1] % (length + 1);
  CdfgGraph* graph = FreshGraph();
  const NodeId left = AddOperand(graph, std::string(texts, left_length));
  const NodeId right = AddOperand(graph, std::string(texts + left_length, length - left_length));
  CheckText(graph, CdfgGetNext(graph, left));
  CheckText(graph, CdfgGetNext(graph, right));
  CheckFold(graph, code, left, right);
  const char* left_text = CdfgGetAttrStr(graph, CdfgGetNext(graph, left), DfgInputCnst_STRVALUE);
  CheckMade(graph, ConstParseInt(left_text, nullptr), data[0] % 6);
  return 0;
}

#ifdef FUZZ_REPLAY_MAIN
int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::ifstream file(argv[i], std::ios::binary);
    if (!file) {
      std::fprintf(stderr, "cannot read %s\n", argv[i]);
      return 1;
    }
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  }
  std::printf("%d inputs\n", argc - 1);
  return 0;
}
#endif
