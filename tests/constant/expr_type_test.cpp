// What type an expression has: the rule of each kind of node in tables written by hand, every
// operator on every pair of operand types, graphs that make no sense, and great depth.
//
// A type is written here as what a record of it holds; structures are told apart by the ids of
// their three nodes, which need not exist, since typing never looks into a structure.
#include "constant/expr_type.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <iostream>
#include <iterator>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "cdfg/runaway.h"
#include "tests/support/graphs.h"
#include "tests/support/stack.h"
#include "tests/support/stop.h"

static bool operator==(const ExprType& left, const ExprType& right) {
  return left.value_type == right.value_type && left.signedness == right.signedness &&
         left.pointer_count == right.pointer_count && left.struct_origin == right.struct_origin &&
         left.struct_members == right.struct_members && left.typedef_link == right.typedef_link;
}

static void PrintTo(const ExprType& type, std::ostream* out) {
  *out << "value type " << type.value_type << " signedness " << type.signedness << " pointers "
       << type.pointer_count << " structure " << type.struct_origin << ' ' << type.struct_members
       << ' ' << type.typedef_link;
}

namespace {

// --- Types ---------------------------------------------------------------------------------------

constexpr std::int32_t kNone = 0;
constexpr std::int32_t kVoid = 1;
constexpr std::int32_t kChar = 2;
constexpr std::int32_t kShort = 3;
constexpr std::int32_t kInt = 4;
constexpr std::int32_t kLong = 5;
constexpr std::int32_t kLongLong = 6;
constexpr std::int32_t kBool = 7;
constexpr std::int32_t kFloat = 8;
constexpr std::int32_t kDouble = 9;
constexpr std::int32_t kStruct = 10;
constexpr std::int32_t kLongDouble = 11;

constexpr ExprType Make(std::int32_t value_type, std::int32_t signedness, std::int32_t pointers,
                        NodeId origin = 0, NodeId members = 0, NodeId link = 0) {
  return {value_type, signedness, pointers, origin, members, link};
}
constexpr ExprType Signed(std::int32_t value_type, std::int32_t pointers = 0) {
  return Make(value_type, 1, pointers);
}
constexpr ExprType Unsigned(std::int32_t value_type, std::int32_t pointers = 0) {
  return Make(value_type, 2, pointers);
}
// One of any number of structures; `number` tells them apart.
constexpr ExprType Structure(NodeId number, std::int32_t signedness = 1,
                             std::int32_t pointers = 0) {
  return Make(kStruct, signedness, pointers, number + 1, number + 2, number + 3);
}

constexpr ExprType kDefaults = Make(4, 1, 0, 0, 0, 0);

// Every code that an operation may have, known or not.
std::vector<std::int32_t> Codes() {
  std::vector<std::int32_t> codes = {-1, std::numeric_limits<std::int32_t>::min(),
                                     std::numeric_limits<std::int32_t>::max()};
  for (std::int32_t code = 0; code <= 45; ++code) codes.push_back(code);
  return codes;
}

bool IsIn(std::initializer_list<std::int32_t> codes, std::int32_t code) {
  return std::find(codes.begin(), codes.end(), code) != codes.end();
}
// Not, the comparisons, logical and, logical or.
bool GivesTruth(std::int32_t code) { return IsIn({3, 18, 19, 20, 21, 22, 23, 24, 25}, code); }
// Plus, minus, complement, the shifts.
bool TakesLeft(std::int32_t code) { return IsIn({1, 2, 4, 16, 17}, code); }
bool TakesBoth(std::int32_t code) { return !GivesTruth(code) && !TakesLeft(code); }

// --- Names of rows -------------------------------------------------------------------------------

// "uLong", "sFloat1" (one level), "sStruct500", "n77" (no signedness, no such type).
std::string NameOf(const ExprType& type) {
  constexpr const char* kNames[] = {"None",     "Void", "Char",  "Short",  "Int",    "Long",
                                    "LongLong", "Bool", "Float", "Double", "Struct", "LongDouble"};
  const bool is_known = type.value_type >= kNone && type.value_type <= kLongDouble;
  std::string name(1, "nsu"[type.signedness]);
  name += is_known ? kNames[type.value_type] : std::to_string(std::abs(type.value_type));
  if (type.struct_origin != 0) name += std::to_string(type.struct_origin - 1);
  if (type.pointer_count > 0) name += "p" + std::to_string(type.pointer_count);
  return name;
}

// The name of a row of a table, unique in it and made of letters, digits and underscores.
template <class Row>
std::string RowName(const testing::TestParamInfo<Row>& row) {
  return NameOf(row.param);
}

// --- Graphs --------------------------------------------------------------------------------------

using Rule = std::int32_t (*)(const CdfgGraph*, NodeId, ExprType*);

// What a rule leaves in a record that held something else. It answers the value type in it.
ExprType Ask(Rule rule, const CdfgGraph* graph, NodeId node) {
  ExprType type = Make(-7, -7, -7, 777, 777, 777);
  EXPECT_EQ(rule(graph, node, &type), type.value_type);
  return type;
}

class ExprTyping : public support::GraphTest {
 protected:
  ExprType TypeOf(NodeId node) const { return Ask(TypeOfExpression, graph, node); }

  void SetInts(NodeId node,
               std::initializer_list<std::pair<std::uint32_t, std::int32_t>> attributes) {
    for (const auto& [attribute, value] : attributes) CdfgSetAttrInt(graph, node, attribute, value);
  }

  // A declaration of a type; the structure's nodes are named whatever the value type.
  NodeId Declare(const ExprType& type) {
    const NodeId declaration = Add(CFG_DECLARE);
    SetInts(declaration, {{CfgDecl_VALTYPE, type.value_type},
                          {CfgDecl_SIGNED, type.signedness},
                          {CfgDecl_POINTERCNT, type.pointer_count}});
    CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, type.struct_origin);
    CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTNODE, type.struct_members);
    CdfgSetAttrNode(graph, declaration, CfgDecl_TYPEDEFLINK, type.typedef_link);
    return declaration;
  }
  NodeId Refer(NodeId declaration, std::uint32_t kind = DFG_INPUT_VAR) {
    const NodeId port = Add(kind);
    CdfgSetAttrNode(graph, port, DfgPort_DECL, declaration);
    return port;
  }
  // A variable of a type.
  NodeId Variable(const ExprType& type) { return Refer(Declare(type)); }

  NodeId Literal(const char* text) {
    const NodeId constant = Add(DFG_INPUT_CONST);
    CdfgSetAttrStr(graph, constant, DfgInputCnst_STRVALUE, text);
    return constant;
  }
  // A reference that leads to a value.
  NodeId Behind(NodeId value) {
    const NodeId reference = Add(DFG_EDGE_PRESEDE);
    Chain({reference, value});
    return reference;
  }
  NodeId Operate(std::int32_t code, NodeId left, NodeId right = 0) {
    const NodeId operation = Add(DFG_OPERATION);
    CdfgSetAttrInt(graph, operation, DfgOpe_TYPE, code);
    if (left != 0) Own(operation, DfgOpe_LEFT, left);
    if (right != 0) Own(operation, DfgOpe_RIGHT, right);
    return operation;
  }
};

std::string Picture(const CdfgGraph* graph) {
  std::string picture;
  for (NodeId id = 1; CdfgHasNode(graph, id) != 0; ++id) {
    picture += std::to_string(id) + ": " + std::to_string(CdfgGetKind(graph, id)) + " prev " +
               std::to_string(CdfgGetPrev(graph, id)) + " next " +
               std::to_string(CdfgGetNext(graph, id)) + " " + support::Attributes(graph, id) + "\n";
  }
  return picture;
}

// --- Constants -----------------------------------------------------------------------------------

struct LiteralRow {
  const char* text;
  ExprType type;
};

std::string NameOf(const LiteralRow& row) {
  if (row.text == nullptr) return "none";
  std::string name = "text_";
  for (const char* next = row.text; *next != 0; ++next) {
    name += *next == '.' ? "point" : *next == '-' ? "minus" : std::string(1, *next);
  }
  return name;
}
void PrintTo(const LiteralRow& row, std::ostream* out) { *out << NameOf(row); }

class TypeOfLiteral : public ExprTyping, public testing::WithParamInterface<LiteralRow> {};

TEST_P(TypeOfLiteral, IsWhatItsTextSays) {
  const NodeId constant = Literal(GetParam().text);
  EXPECT_EQ(TypeOf(constant), GetParam().type);
  EXPECT_EQ(TypeOf(Behind(constant)), GetParam().type);
}

INSTANTIATE_TEST_SUITE_P(
    Rows, TypeOfLiteral,
    testing::Values(LiteralRow{nullptr, Signed(kInt)}, LiteralRow{"", Signed(kInt)},
                    LiteralRow{"0", Signed(kInt)}, LiteralRow{"08", Signed(kInt)},
                    LiteralRow{"-5", Signed(kInt)}, LiteralRow{"4294967295", Signed(kInt)},
                    LiteralRow{"0x7FFFFFFF", Signed(kInt)},
                    LiteralRow{"0xFFFFFFFF", Unsigned(kInt)},
                    LiteralRow{"037777777777", Unsigned(kInt)}, LiteralRow{"0x1e5", Signed(kInt)},
                    LiteralRow{"5u", Unsigned(kInt)}, LiteralRow{"3L", Signed(kLong)},
                    LiteralRow{"10UL", Unsigned(kLong)}, LiteralRow{"10lu", Unsigned(kLong)},
                    LiteralRow{"10lL", Signed(kLongLong)}, LiteralRow{"10ull", Unsigned(kLongLong)},
                    LiteralRow{"0x8000000000000000LL", Unsigned(kLongLong)},
                    LiteralRow{"1.0f", Signed(kFloat)}, LiteralRow{"1.0F", Signed(kFloat)},
                    LiteralRow{"1.0", Signed(kDouble)}, LiteralRow{"1e5", Signed(kDouble)},
                    LiteralRow{"1.0L", Signed(kLongDouble)},
                    LiteralRow{"1.0fl", Signed(kLongDouble)}),
    RowName<LiteralRow>);

// --- References ----------------------------------------------------------------------------------

TEST_F(ExprTyping, AReferenceHasTheTypeOfWhatItLeadsTo) {
  const NodeId sum = Operate(CALC_Add, Literal("1.5"), Literal("1"));
  EXPECT_EQ(TypeOf(Behind(Variable(Unsigned(kChar, 1)))), Unsigned(kChar, 1));
  EXPECT_EQ(TypeOf(Behind(sum)), Signed(kDouble));
  EXPECT_EQ(TypeOf(Behind(Behind(Behind(sum)))), Signed(kDouble));
}

TEST_F(ExprTyping, AReferenceToNothingIsAnInt) {
  const NodeId dangling = Add(DFG_EDGE_PRESEDE);
  EXPECT_EQ(TypeOf(dangling), kDefaults);
  CdfgSetNext(graph, dangling, 9999);
  EXPECT_EQ(TypeOf(dangling), kDefaults);
}

// --- Variables -----------------------------------------------------------------------------------

TEST_F(ExprTyping, AVariableHasTheTypeOfItsDeclaration) {
  int rows = 0;
  for (const std::uint32_t kind : {DFG_INPUT_VAR, DFG_OUTPUT_VAR}) {
    for (std::int32_t value_type = kNone; value_type <= kLongDouble; ++value_type) {
      for (std::int32_t signedness = 0; signedness <= 2; ++signedness) {
        const NodeId declaration = Declare(Make(value_type, signedness, 0, 501, 502, 503));
        const NodeId variable = Refer(declaration, kind);
        const ExprType expected = value_type == kStruct
                                      ? Make(kStruct, signedness, 0, 501, 502, 503)
                                      : Make(value_type, signedness, 0);
        EXPECT_EQ(TypeOf(variable), expected);
        EXPECT_EQ(Ask(TypeOfVariable, graph, variable), expected);
        ++rows;
      }
    }
  }
  std::cout << rows << " declarations\n";
}

TEST_F(ExprTyping, AVariableWithoutADeclarationHasNoType) {
  const NodeId variable = Add(DFG_INPUT_VAR);
  EXPECT_EQ(TypeOf(variable), Make(0, 0, 0));
  CdfgSetAttrNode(graph, variable, DfgPort_DECL, 9999);
  EXPECT_EQ(TypeOf(variable), Make(0, 0, 0));
}

TEST_F(ExprTyping, ADeclarationWithoutATypeHasNoType) {
  EXPECT_EQ(TypeOf(Refer(Add(CFG_DECLARE))), Make(0, 0, 0));
}

struct DepthRow {
  std::int32_t declared_pointers;
  std::int32_t declared_dimensions;
  std::int32_t dereferences;
  std::int32_t indexes;
  std::int32_t address;
  std::int32_t pointers;  // what is left
};

// Declared, used and left: "declared11_used201_left1".
std::string NameOf(const DepthRow& row) {
  return "declared" + std::to_string(row.declared_pointers) +
         std::to_string(row.declared_dimensions) + "_used" + std::to_string(row.dereferences) +
         std::to_string(row.indexes) + std::to_string(row.address) + "_left" +
         std::to_string(row.pointers);
}
void PrintTo(const DepthRow& row, std::ostream* out) { *out << NameOf(row); }

class DepthOfVariable : public ExprTyping, public testing::WithParamInterface<DepthRow> {};

TEST_P(DepthOfVariable, IsWhatTheReferenceLeaves) {
  const DepthRow& row = GetParam();
  const NodeId declaration = Declare(Unsigned(kLong, row.declared_pointers));
  SetInts(declaration, {{CfgDecl_DIMCNT, row.declared_dimensions}});
  const NodeId variable = Refer(declaration);
  SetInts(variable, {{DfgPort_POINTERCNT, row.dereferences},
                     {DfgPort_DIMCNT, row.indexes},
                     {DfgPort_ADDRFLG, row.address}});
  EXPECT_EQ(TypeOf(variable), Unsigned(kLong, row.pointers));
  EXPECT_EQ(Ask(TypeOfVariable, graph, variable), Unsigned(kLong, row.pointers));
}

INSTANTIATE_TEST_SUITE_P(
    Rows, DepthOfVariable,
    testing::Values(
        // x, *x and x[i] of a plain variable
        DepthRow{0, 0, 0, 0, 0, 0}, DepthRow{0, 0, 1, 0, 0, 0}, DepthRow{0, 0, 0, 1, 0, 0},
        // &x
        DepthRow{0, 0, 0, 0, 1, 1},
        // a pointer: p, *p, p[i], **p, &p, &*p, &p[i]
        DepthRow{1, 0, 0, 0, 0, 1}, DepthRow{1, 0, 1, 0, 0, 0}, DepthRow{1, 0, 0, 1, 0, 0},
        DepthRow{1, 0, 2, 0, 0, 0}, DepthRow{1, 0, 0, 0, 1, 2}, DepthRow{1, 0, 1, 0, 1, 1},
        DepthRow{1, 0, 0, 1, 1, 1},
        // an array: a, a[i], *a, a[i][j], &a, &a[i]
        DepthRow{0, 1, 0, 0, 0, 1}, DepthRow{0, 1, 0, 1, 0, 0}, DepthRow{0, 1, 1, 0, 0, 0},
        DepthRow{0, 1, 0, 2, 0, 0}, DepthRow{0, 1, 0, 0, 1, 2}, DepthRow{0, 1, 0, 1, 1, 1},
        // an array of pointers: one level used in each way, then two, then more
        DepthRow{1, 1, 0, 0, 0, 2}, DepthRow{1, 1, 1, 0, 0, 1}, DepthRow{1, 1, 0, 1, 0, 1},
        DepthRow{1, 1, 1, 1, 1, 1}, DepthRow{1, 1, 2, 0, 1, 1}, DepthRow{1, 1, 0, 2, 1, 1},
        DepthRow{1, 1, 1, 1, 0, 0}, DepthRow{1, 1, 2, 0, 0, 0}, DepthRow{1, 1, 0, 2, 0, 0},
        DepthRow{1, 1, 2, 1, 0, 0}, DepthRow{1, 1, 3, 2, 0, 0},
        // more of everything
        DepthRow{3, 2, 0, 0, 0, 5}, DepthRow{3, 2, 1, 2, 0, 2}, DepthRow{0, 3, 0, 1, 0, 2}),
    RowName<DepthRow>);

TEST_F(ExprTyping, DepthsThatDoNotFitAnswerNonetheless) {
  constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
  constexpr std::int32_t kLeast = std::numeric_limits<std::int32_t>::min();
  const NodeId declaration = Declare(Signed(kInt, kLeast));
  SetInts(declaration, {{CfgDecl_DIMCNT, kLeast}});
  const NodeId variable = Refer(declaration);
  SetInts(variable, {{DfgPort_POINTERCNT, kMost}, {DfgPort_DIMCNT, kMost}});
  EXPECT_EQ(TypeOf(variable), Signed(kInt));
  SetInts(declaration, {{CfgDecl_POINTERCNT, kMost}, {CfgDecl_DIMCNT, 0}});
  SetInts(variable, {{DfgPort_POINTERCNT, 0}, {DfgPort_DIMCNT, 1}});
  EXPECT_EQ(TypeOf(variable), Signed(kInt, kMost - 1));
}

// s.a.b: the last member alone decides, by its declaration and by how it is referred to.
class TypeOfMember : public ExprTyping {
 protected:
  TypeOfMember() {
    CdfgSetAttrNode(graph, outer, DfgPort_STRSON, middle);
    CdfgSetAttrNode(graph, middle, DfgPort_STRSON, last);
  }

  const NodeId outer = Variable(Structure(500, 2, 3));
  const NodeId middle = Variable(Structure(600, 2, 2));
  const NodeId last = Variable(Unsigned(kChar, 1));
};

TEST_F(TypeOfMember, IsThatOfTheLastOne) {
  EXPECT_EQ(TypeOf(outer), Unsigned(kChar, 1));
  EXPECT_EQ(TypeOf(middle), Unsigned(kChar, 1));
  EXPECT_EQ(Ask(TypeOfVariable, graph, outer), Unsigned(kChar, 1));
}

TEST_F(TypeOfMember, IsReducedByTheLastReferenceAlone) {
  SetInts(outer, {{DfgPort_POINTERCNT, 1}, {DfgPort_DIMCNT, 1}});
  SetInts(middle, {{DfgPort_ADDRFLG, 1}, {DfgPort_DIMCNT, 1}});
  EXPECT_EQ(TypeOf(outer), Unsigned(kChar, 1));
  SetInts(last, {{DfgPort_DIMCNT, 1}});
  EXPECT_EQ(TypeOf(outer), Unsigned(kChar));
  SetInts(last, {{DfgPort_ADDRFLG, 1}});
  EXPECT_EQ(TypeOf(outer), Unsigned(kChar, 1));
}

TEST_F(TypeOfMember, MayBeAStructureItself) {
  CdfgSetAttrNode(graph, middle, DfgPort_STRSON, 0);
  EXPECT_EQ(TypeOf(outer), Structure(600, 2, 2));
}

TEST_F(TypeOfMember, NeedsADeclarationOfTheLastOne) {
  CdfgSetAttrNode(graph, last, DfgPort_DECL, 0);
  EXPECT_EQ(TypeOf(outer), Make(0, 0, 0));
}

TEST_F(TypeOfMember, IsFoundBehindAMemberOfAnyKind) {
  CdfgSetKind(graph, last, DFG_OUTPUT_PORT);
  CdfgSetKind(graph, middle, DFG_OUTPUT_WIRE);
  EXPECT_EQ(TypeOf(outer), Unsigned(kChar, 1));
}

// --- Calls ---------------------------------------------------------------------------------------

class TypeOfCallNode : public ExprTyping {
 protected:
  // What the call says of its function by itself.
  void Say(std::int32_t value_type, std::int32_t signedness, std::int32_t pointers) {
    SetInts(call, {{DfgFuncCall_FUNC_RETTYPE, value_type},
                   {DfgFuncCall_FUNC_SIGNED, signedness},
                   {DfgFuncCall_FUNC_POINTERCNT, pointers}});
    CdfgSetAttrNode(graph, call, DfgFuncCall_FUNC_RETDECL, 801);
    CdfgSetAttrNode(graph, call, DfgFuncCall_FUNC_TYPEDEFLINK, 802);
  }
  // A function to jump to.
  NodeId Return(std::int32_t value_type, std::int32_t signedness, std::int32_t pointers,
                std::uint32_t kind = CFG_FUNCTION) {
    const NodeId function = Add(kind);
    SetInts(function, {{CfgFunc_RETTYPE, value_type},
                       {CfgFunc_SIGNED, signedness},
                       {CfgFunc_POINTERCNT, pointers}});
    CdfgSetAttrNode(graph, function, CfgFunc_RETDECL, 901);
    CdfgSetAttrNode(graph, function, CfgFunc_TYPEDEFLINK, 902);
    return function;
  }
  void Dereference(std::int32_t count) { SetInts(call, {{DfgFuncCall_POINCNT, count}}); }

  const NodeId call = Add(DFG_FUNC_CALL);
};

TEST_F(TypeOfCallNode, WithAFunctionIsWhatTheFunctionReturns) {
  Say(kDouble, 1, 4);
  int rows = 0;
  for (const std::uint32_t kind : {CFG_FUNCTION, CFG_PROTO_FUNC}) {
    for (std::int32_t value_type = kNone; value_type <= kLongDouble; ++value_type) {
      for (std::int32_t signedness = 0; signedness <= 2; ++signedness) {
        CdfgSetJump(graph, call, Return(value_type, signedness, 2, kind));
        const ExprType expected = Make(value_type, signedness, 2, 0, 901, 902);
        EXPECT_EQ(TypeOf(call), expected);
        EXPECT_EQ(Ask(TypeOfCall, graph, call), expected);
        ++rows;
      }
    }
  }
  std::cout << rows << " functions\n";
}

TEST_F(TypeOfCallNode, WithAFunctionThatSaysNothingIsNothing) {
  Say(kDouble, 2, 4);
  CdfgSetJump(graph, call, Add(CFG_FUNCTION));
  EXPECT_EQ(TypeOf(call), Make(0, 0, 0));
}

// The link alone decides, not what it leads to.
TEST_F(TypeOfCallNode, WithALinkToAMissingFunctionIsNothing) {
  Say(kDouble, 2, 4);
  CdfgSetJump(graph, call, 9999);
  EXPECT_EQ(TypeOf(call), Make(0, 0, 0));
}

TEST_F(TypeOfCallNode, WithoutAFunctionIsWhatTheCallSays) {
  int rows = 0;
  for (std::int32_t value_type = kVoid; value_type <= kLongDouble; ++value_type) {
    for (std::int32_t signedness = 0; signedness <= 2; ++signedness) {
      Say(value_type, signedness, 2);
      const ExprType expected = Make(value_type, signedness, 2, 0, 801, 0);
      EXPECT_EQ(TypeOf(call), expected);
      EXPECT_EQ(Ask(TypeOfCall, graph, call), expected);
      ++rows;
    }
  }
  std::cout << rows << " calls\n";
}

TEST_F(TypeOfCallNode, WithoutAFunctionAndValueTypeIsAnInt) {
  Say(kNone, 2, 1);
  EXPECT_EQ(TypeOf(call), Make(kInt, 2, 1, 0, 801, 0));
}

TEST_F(TypeOfCallNode, ThatSaysNothingIsAnIntOfNoSignedness) {
  EXPECT_EQ(TypeOf(call), Make(kInt, 0, 0));
}

TEST_F(TypeOfCallNode, IsDereferencedAsLongAsSomethingIsLeft) {
  struct Row {
    std::int32_t pointers, dereferences, left;
  };
  constexpr Row kRows[] = {{0, 0, 0}, {0, 1, 0}, {1, 0, 1}, {1, 1, 1}, {1, 2, 1},
                           {2, 0, 2}, {2, 1, 1}, {2, 2, 2}, {2, 3, 2}, {3, 1, 2},
                           {3, 2, 1}, {3, 3, 3}, {3, 4, 3}, {9, 8, 1}, {9, 9, 9}};
  for (const auto& [pointers, dereferences, left] : kRows) {
    SCOPED_TRACE(std::to_string(pointers) + " dereferenced " + std::to_string(dereferences));
    Dereference(dereferences);
    CdfgSetJump(graph, call, 0);
    Say(kChar, 2, pointers);
    EXPECT_EQ(TypeOf(call), Make(kChar, 2, left, 0, 801, 0));
    CdfgSetJump(graph, call, Return(kFloat, 1, pointers));
    EXPECT_EQ(TypeOf(call), Make(kFloat, 1, left, 0, 901, 902));
  }
  std::cout << 2 * std::size(kRows) << " calls\n";
}

TEST_F(TypeOfCallNode, DereferencesThatDoNotFitAnswerNonetheless) {
  Say(kInt, 1, std::numeric_limits<std::int32_t>::max());
  Dereference(std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(TypeOf(call).value_type, kInt);
}

TEST_F(TypeOfCallNode, DoesNotDependOnItsArguments) {
  Say(kLong, 2, 0);
  const NodeId argument = Add(DFG_PORT_INFO);
  Own(call, DfgFuncCall_ARGLIST, argument);
  CdfgSetAttrNode(graph, argument, DfgPortInfo_SIGNAL, call);
  EXPECT_EQ(TypeOf(call), Make(kLong, 2, 0, 0, 801, 0));
}

// --- Casts ---------------------------------------------------------------------------------------

TEST_F(ExprTyping, ACastHasTheTypeItNames) {
  int rows = 0;
  for (std::int32_t value_type = kNone; value_type <= kLongDouble; ++value_type) {
    for (std::int32_t signedness = 0; signedness <= 2; ++signedness) {
      for (std::int32_t pointers = 0; pointers <= 2; ++pointers) {
        const NodeId cast = Add(DFG_SPEC);
        SetInts(cast, {{DfgSpec_VALTYPE, value_type},
                       {DfgSpec_SIGNED, signedness},
                       {DfgSpec_POINTERCNT, pointers},
                       {DfgSpec_DIMCNT, 1}});
        CdfgSetAttrNode(graph, cast, DfgSpec_STRUCTNODE, 701);
        CdfgSetAttrNode(graph, cast, DfgSpec_TYPEDEFLINK, 702);
        Chain({cast, Literal("1.5L")});
        const bool is_structure = value_type == kStruct;
        EXPECT_EQ(TypeOf(cast), Make(value_type, signedness, pointers, 0, is_structure ? 701 : 0,
                                     is_structure ? 702 : 0));
        ++rows;
      }
    }
  }
  std::cout << rows << " casts\n";
}

TEST_F(ExprTyping, ACastThatNamesNothingHasNoType) {
  EXPECT_EQ(TypeOf(Add(DFG_SPEC)), Make(0, 0, 0));
}

TEST_F(ExprTyping, NotWhatStandsBehindACast) {
  const NodeId cast = Add(DFG_SPEC);
  CdfgSetAttrInt(graph, cast, DfgSpec_VALTYPE, kShort);
  Chain({cast, Operate(CALC_Add, Literal("1.5"), cast)});
  EXPECT_EQ(TypeOf(cast), Make(kShort, 0, 0));
}

// --- Other kinds ---------------------------------------------------------------------------------

TEST_F(ExprTyping, AnyOtherNodeIsAnInt) {
  const NodeId value = Literal("1.5");
  int kinds = 0;
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    switch (kind) {
      case DFG_OPERATION:
      case DFG_EDGE_PRESEDE:
      case DFG_INPUT_VAR:
      case DFG_OUTPUT_VAR:
      case DFG_INPUT_CONST:
      case DFG_FUNC_CALL:
      case DFG_SPEC:
        continue;
      default:
        break;
    }
    const NodeId node = Add(kind);
    for (std::uint32_t attribute = 1; attribute <= 31; ++attribute) {
      CdfgSetAttrInt(graph, node, attribute, 2);
    }
    CdfgSetNext(graph, node, value);
    CdfgSetJump(graph, node, value);
    EXPECT_EQ(TypeOf(node), kDefaults) << kind;
    EXPECT_EQ(TypeOf(Operate(CALC_Add, node, Variable(Unsigned(kLongLong)))), Unsigned(kLongLong));
    EXPECT_EQ(TypeOf(Operate(CALC_Add, Variable(Unsigned(kChar)), node)), Signed(kInt)) << kind;
    ++kinds;
  }
  std::cout << kinds << " kinds\n";
}

// --- Operators: some of C ------------------------------------------------------------------------

struct PairRow {
  ExprType left;
  ExprType right;
  ExprType type;
};

std::string NameOf(const PairRow& row) {
  return NameOf(row.left) + "_and_" + NameOf(row.right) + "_give_" + NameOf(row.type);
}
void PrintTo(const PairRow& row, std::ostream* out) { *out << NameOf(row); }

class TypeOfSum : public ExprTyping, public testing::WithParamInterface<PairRow> {};

TEST_P(TypeOfSum, IsThatOfTheOperands) {
  const auto& [left, right, type] = GetParam();
  const NodeId left_variable = Variable(left);
  const NodeId right_variable = Variable(right);
  for (const std::int32_t code : Codes()) {
    if (!TakesBoth(code)) continue;
    EXPECT_EQ(TypeOf(Operate(code, left_variable, right_variable)), type) << code;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Values, TypeOfSum,
    testing::Values(
        // A structure wins, the left one of two, and is signed.
        PairRow{Structure(500, 2), Unsigned(kLongDouble), Structure(500)},
        PairRow{Signed(kDouble), Structure(500, 2), Structure(500)},
        PairRow{Structure(500), Structure(600), Structure(500)},
        PairRow{Unsigned(kInt), Structure(500, 0), Structure(500)},
        // Then floating types, all of them signed.
        PairRow{Unsigned(kLongDouble), Unsigned(kInt), Signed(kLongDouble)},
        PairRow{Signed(kDouble), Signed(kLongDouble), Signed(kLongDouble)},
        PairRow{Signed(kFloat), Signed(kLongDouble), Signed(kLongDouble)},
        PairRow{Unsigned(kDouble), Unsigned(kDouble), Signed(kDouble)},
        PairRow{Signed(kFloat), Signed(kDouble), Signed(kDouble)},
        PairRow{Signed(kFloat), Signed(kFloat), Signed(kDouble)},
        PairRow{Unsigned(kLongLong), Signed(kFloat), Signed(kDouble)},
        PairRow{Signed(kFloat), Unsigned(kChar), Signed(kDouble)},
        // Then long long, whose side decides about the sign.
        PairRow{Signed(kLongLong), Unsigned(kLong), Signed(kLongLong)},
        PairRow{Unsigned(kLongLong), Signed(kInt), Unsigned(kLongLong)},
        PairRow{Unsigned(kInt), Signed(kLongLong), Signed(kLongLong)},
        PairRow{Signed(kBool), Unsigned(kLongLong), Unsigned(kLongLong)},
        PairRow{Signed(kLongLong), Signed(kLongLong), Signed(kLongLong)},
        PairRow{Signed(kLongLong), Unsigned(kLongLong), Unsigned(kLongLong)},
        PairRow{Unsigned(kLongLong), Signed(kLongLong), Unsigned(kLongLong)},
        PairRow{Make(kLongLong, 0, 0), Unsigned(kInt), Make(kLongLong, 0, 0)},
        PairRow{Make(kLongLong, 0, 0), Make(kLongLong, 0, 0), Signed(kLongLong)},
        // Then long, where an int has a say too.
        PairRow{Unsigned(kInt), Signed(kLong), Unsigned(kLong)},
        PairRow{Signed(kLong), Unsigned(kInt), Unsigned(kLong)},
        PairRow{Signed(kLong), Signed(kInt), Signed(kLong)},
        PairRow{Unsigned(kLong), Signed(kLong), Unsigned(kLong)},
        PairRow{Signed(kLong), Unsigned(kChar), Signed(kLong)},
        PairRow{Unsigned(kShort), Signed(kLong), Signed(kLong)},
        PairRow{Signed(kBool), Unsigned(kLong), Unsigned(kLong)},
        PairRow{Make(kLong, 0, 0), Make(kInt, 0, 0), Signed(kLong)},
        PairRow{Unsigned(kChar), Make(kLong, 0, 0), Make(kLong, 0, 0)},
        // Then int.
        PairRow{Unsigned(kInt), Signed(kInt), Unsigned(kInt)},
        PairRow{Signed(kInt), Signed(kInt), Signed(kInt)},
        PairRow{Signed(kInt), Unsigned(kShort), Signed(kInt)},
        PairRow{Unsigned(kChar), Unsigned(kInt), Unsigned(kInt)},
        PairRow{Unsigned(kBool), Signed(kInt), Signed(kInt)},
        // All that is narrower is a signed int, and so is what is no value at all.
        PairRow{Unsigned(kChar), Unsigned(kChar), Signed(kInt)},
        PairRow{Unsigned(kShort), Unsigned(kBool), Signed(kInt)},
        PairRow{Unsigned(kVoid), Unsigned(kVoid), Signed(kInt)},
        PairRow{Make(kNone, 0, 0), Make(kNone, 0, 0), Signed(kInt)},
        PairRow{Unsigned(77), Unsigned(-78), Signed(kInt)}),
    RowName<PairRow>);

INSTANTIATE_TEST_SUITE_P(
    Pointers, TypeOfSum,
    testing::Values(
        // The larger number of levels, on either side.
        PairRow{Signed(kInt, 1), Signed(kInt), Signed(kInt, 1)},
        PairRow{Signed(kInt), Signed(kInt, 2), Signed(kInt, 2)},
        PairRow{Signed(kInt, 3), Signed(kInt, 2), Signed(kInt, 3)},
        // A value type by its rank: structure, the floating types, long long, long, short, char,
        // bool, all else int.
        PairRow{Structure(500, 2, 1), Signed(kLongDouble), Structure(500, 2, 1)},
        PairRow{Signed(kInt, 1), Structure(500), Structure(500, 1, 1)},
        PairRow{Structure(500, 1, 1), Structure(600, 1, 2), Structure(500, 1, 2)},
        PairRow{Signed(kLongDouble), Signed(kDouble, 1), Signed(kLongDouble, 1)},
        PairRow{Signed(kFloat, 1), Signed(kDouble), Signed(kDouble, 1)},
        PairRow{Signed(kFloat, 1), Signed(kFloat), Signed(kFloat, 1)},
        PairRow{Signed(kFloat), Unsigned(kLongLong, 1), Unsigned(kFloat, 1)},
        PairRow{Signed(kLong, 1), Signed(kLongLong), Signed(kLongLong, 1)},
        PairRow{Signed(kShort, 1), Signed(kLong), Signed(kLong, 1)},
        PairRow{Signed(kChar, 1), Signed(kShort), Signed(kShort, 1)},
        PairRow{Signed(kChar, 1), Signed(kInt), Signed(kChar, 1)},
        PairRow{Signed(kInt, 1), Signed(kShort), Signed(kShort, 1)},
        PairRow{Signed(kBool, 1), Signed(kChar), Signed(kChar, 1)},
        PairRow{Signed(kBool), Signed(kInt, 1), Signed(kBool, 1)},
        PairRow{Signed(kVoid, 1), Signed(kVoid, 1), Signed(kInt, 1)},
        PairRow{Make(kNone, 0, 1), Make(kNone, 0, 0), Signed(kInt, 1)},
        PairRow{Signed(77, 1), Signed(77), Signed(kInt, 1)},
        // Unsigned when either side is, whatever the value types.
        PairRow{Unsigned(kChar, 1), Signed(kLong), Unsigned(kLong, 1)},
        PairRow{Signed(kLong, 1), Unsigned(kChar), Unsigned(kLong, 1)},
        PairRow{Make(kLong, 0, 1), Make(kChar, 0, 0), Signed(kLong, 1)}),
    RowName<PairRow>);

TEST_F(ExprTyping, FloatConstantsAddUpToADouble) {
  EXPECT_EQ(TypeOf(Operate(CALC_Add, Behind(Literal("1.5F")), Behind(Literal("2.5F")))),
            Signed(kDouble));
}

TEST_F(ExprTyping, APointerToFloatPlusAFloatStaysFloat) {
  EXPECT_EQ(TypeOf(Operate(CALC_Add, Behind(Variable(Signed(kFloat, 1))), Behind(Literal("1.5F")))),
            Signed(kFloat, 1));
}

TEST_F(ExprTyping, ACharMinusAnIntIsAnInt) {
  EXPECT_EQ(TypeOf(Operate(CALC_Sub, Behind(Variable(Unsigned(kChar))), Behind(Literal("1")))),
            Signed(kInt));
}

TEST_F(ExprTyping, MinusPromotesACharAndKeepsAnUnsignedLong) {
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, Behind(Variable(Signed(kChar))))), Signed(kInt));
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, Behind(Variable(Unsigned(kLong))))), Unsigned(kLong));
}

TEST_F(ExprTyping, AComparisonIsAnIntWhateverIsCompared) {
  EXPECT_EQ(TypeOf(Operate(CALC_Les, Variable(Unsigned(kLongLong, 2)), Variable(Structure(500)))),
            Signed(kInt));
}

TEST_F(ExprTyping, AnUnsignedIntPlusALongIsUnsigned) {
  EXPECT_EQ(TypeOf(Operate(CALC_Add, Behind(Literal("5U")), Behind(Literal("3L")))),
            Unsigned(kLong));
}

TEST_F(ExprTyping, OperandsAreTypedAsDeepAsTheyAre) {
  const NodeId product = Operate(CALC_Mul, Behind(Variable(Unsigned(kChar))), Literal("2"));
  const NodeId less = Operate(CALC_Les, Literal("1.5"), Literal("2.5"));
  EXPECT_EQ(TypeOf(Operate(CALC_Add, product, Behind(less))), Signed(kInt));
  EXPECT_EQ(TypeOf(Operate(CALC_LeftShift, Operate(CALC_Add, product, Literal("1UL")), less)),
            Unsigned(kLong));
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, Operate(CALC_Plus, Variable(Unsigned(kShort))))),
            Signed(kInt));
  EXPECT_EQ(TypeOf(Operate(CALC_Sub, Operate(CALC_Not, Literal("1.5")), Literal("1LLU"))),
            Unsigned(kLongLong));
}

TEST_F(ExprTyping, TheConditionOfAChoiceHasNoSay) {
  const NodeId choice = Operate(CALC_LogCond, Literal("1"), Literal("2L"));
  Own(choice, DfgOpe_COND, Literal("1.5"));
  EXPECT_EQ(TypeOf(choice), Signed(kLong));
}

// --- Operators: one operand ----------------------------------------------------------------------

TEST_F(ExprTyping, OnlyTheLeftOperandOfAUnaryOperatorOrAShiftCounts) {
  for (const std::int32_t code :
       {CALC_Plus, CALC_Minus, CALC_BitNot, CALC_RightShift, CALC_LeftShift}) {
    const NodeId operation = Operate(code, Literal("1U"));
    CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, operation);
    EXPECT_EQ(TypeOf(operation), Unsigned(kInt));
  }
}

TEST_F(ExprTyping, NoOperandOfATruthValueIsLookedAt) {
  int rows = 0;
  for (const std::int32_t code : Codes()) {
    if (!GivesTruth(code)) continue;
    const NodeId operation = Operate(code, Variable(Structure(500, 2, 1)), Literal("1.5L"));
    EXPECT_EQ(TypeOf(operation), kDefaults) << code;
    CdfgSetAttrNode(graph, operation, DfgOpe_LEFT, operation);
    CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, operation);
    EXPECT_EQ(TypeOf(operation), kDefaults) << code;
    ++rows;
  }
  EXPECT_EQ(rows, 9);
}

// A call names structure nodes whatever its type is. Only what is promoted, or takes part in a
// binary operation, loses them.
TEST_F(TypeOfCallNode, KeepsItsStructureBehindAUnaryOperatorUnlessPromoted) {
  CdfgSetJump(graph, call, Return(kChar, 2, 0));
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, call)), kDefaults);
  CdfgSetJump(graph, call, Return(kChar, 2, 1));
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, call)), Make(kChar, 2, 1, 0, 901, 902));
  CdfgSetJump(graph, call, Return(kLong, 2, 0));
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, call)), Make(kLong, 2, 0, 0, 901, 902));
  EXPECT_EQ(TypeOf(Operate(CALC_Add, call, Literal("1"))), Unsigned(kLong));
  CdfgSetJump(graph, call, Return(kLong, 2, 1));
  EXPECT_EQ(TypeOf(Operate(CALC_Add, call, Literal("1"))), Unsigned(kLong, 1));
  CdfgSetJump(graph, call, Return(kStruct, 2, 0));
  EXPECT_EQ(TypeOf(Operate(CALC_Add, Literal("1"), call)), Make(kStruct, 1, 0, 0, 901, 902));
}

TEST_F(ExprTyping, MissingOperandsAreInts) {
  for (const std::int32_t code : Codes()) {
    EXPECT_EQ(TypeOf(Operate(code, 0)), kDefaults) << code;
    if (!TakesBoth(code)) continue;
    EXPECT_EQ(TypeOf(Operate(code, Variable(Unsigned(kLong)))), Unsigned(kLong)) << code;
    EXPECT_EQ(TypeOf(Operate(code, 0, Variable(Unsigned(kShort, 1)))), Unsigned(kShort, 1)) << code;
    const NodeId dangling = Operate(code, Variable(Unsigned(kChar)));
    CdfgSetAttrNode(graph, dangling, DfgOpe_RIGHT, 9999);
    EXPECT_EQ(TypeOf(dangling), Signed(kInt)) << code;
  }
}

// --- Every operator on every pair of types -------------------------------------------------------

constexpr int kTypes = 12;

// The value type of two values, left by right: none, void, char, short, int, long, long long, bool,
// float, double, structure, long double.
constexpr std::int32_t kOfValues[kTypes][kTypes] = {
    {4, 4, 4, 4, 4, 5, 6, 4, 9, 9, 10, 11},             // none
    {4, 4, 4, 4, 4, 5, 6, 4, 9, 9, 10, 11},             // void
    {4, 4, 4, 4, 4, 5, 6, 4, 9, 9, 10, 11},             // char
    {4, 4, 4, 4, 4, 5, 6, 4, 9, 9, 10, 11},             // short
    {4, 4, 4, 4, 4, 5, 6, 4, 9, 9, 10, 11},             // int
    {5, 5, 5, 5, 5, 5, 6, 5, 9, 9, 10, 11},             // long
    {6, 6, 6, 6, 6, 6, 6, 6, 9, 9, 10, 11},             // long long
    {4, 4, 4, 4, 4, 5, 6, 4, 9, 9, 10, 11},             // bool
    {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 10, 11},             // float
    {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 10, 11},             // double
    {10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10},   // structure
    {11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 10, 11}};  // long double

// Whose signedness it has: of the left or the right one as it is, of both (unsigned when either is,
// else signed), or none (signed).
constexpr char kSignOfValues[kTypes][kTypes + 1] = {"----RRR-----",   // none
                                                    "----RRR-----",   // void
                                                    "----RRR-----",   // char
                                                    "----RRR-----",   // short
                                                    "LLLLBBRL----",   // int
                                                    "LLLLBBRL----",   // long
                                                    "LLLLLLBL----",   // long long
                                                    "----RRR-----",   // bool
                                                    "------------",   // float
                                                    "------------",   // double
                                                    "------------",   // structure
                                                    "------------"};  // long double

// The value type when either is a pointer.
constexpr std::int32_t kOfPointers[kTypes][kTypes] = {
    {4, 4, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},             // none
    {4, 4, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},             // void
    {2, 2, 2, 3, 2, 5, 6, 2, 8, 9, 10, 11},             // char
    {3, 3, 3, 3, 3, 5, 6, 3, 8, 9, 10, 11},             // short
    {4, 4, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},             // int
    {5, 5, 5, 5, 5, 5, 6, 5, 8, 9, 10, 11},             // long
    {6, 6, 6, 6, 6, 6, 6, 6, 8, 9, 10, 11},             // long long
    {7, 7, 2, 3, 7, 5, 6, 7, 8, 9, 10, 11},             // bool
    {8, 8, 8, 8, 8, 8, 8, 8, 8, 9, 10, 11},             // float
    {9, 9, 9, 9, 9, 9, 9, 9, 9, 9, 10, 11},             // double
    {10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10, 10},   // structure
    {11, 11, 11, 11, 11, 11, 11, 11, 11, 11, 10, 11}};  // long double

// The type of a left operand, promoted: where this says int, it is a plain one.
constexpr std::int32_t kPromoted[kTypes] = {0, 1, 4, 4, 4, 5, 6, 4, 8, 9, 10, 11};

std::int32_t EitherUnsigned(const ExprType& left, const ExprType& right) {
  return left.signedness == 2 || right.signedness == 2 ? 2 : 1;
}

std::int32_t ExpectSign(char whose, const ExprType& left, const ExprType& right) {
  if (whose == 'L') return left.signedness;
  if (whose == 'R') return right.signedness;
  return whose == 'B' ? EitherUnsigned(left, right) : 1;
}

ExprType ExpectBoth(const ExprType& left, const ExprType& right) {
  const auto row = static_cast<std::size_t>(left.value_type);
  const auto column = static_cast<std::size_t>(right.value_type);
  ExprType type = Signed(kOfValues[row][column]);
  if (left.pointer_count > 0 || right.pointer_count > 0) {
    type.value_type = kOfPointers[row][column];
    type.signedness = EitherUnsigned(left, right);
    type.pointer_count =
        left.pointer_count > right.pointer_count ? left.pointer_count : right.pointer_count;
  } else {
    type.signedness = ExpectSign(kSignOfValues[row][column], left, right);
  }
  if (type.value_type != kStruct) return type;
  const ExprType& origin = left.value_type == kStruct ? left : right;
  return Make(kStruct, type.signedness, type.pointer_count, origin.struct_origin,
              origin.struct_members, origin.typedef_link);
}

ExprType ExpectLeft(const ExprType& left) {
  const std::int32_t promoted = kPromoted[left.value_type];
  const bool is_kept = left.pointer_count > 0 || promoted == left.value_type;
  return is_kept ? left : Signed(promoted);
}

ExprType Expect(std::int32_t code, const ExprType& left, const ExprType& right) {
  if (GivesTruth(code)) return kDefaults;
  return TakesLeft(code) ? ExpectLeft(left) : ExpectBoth(left, right);
}

class EveryOperatorTyped : public ExprTyping {
 protected:
  struct Operand {
    ExprType type;
    NodeId node;
  };

  // An operand of every value type, signedness and number of levels up to 2.
  std::vector<Operand> MakeOperands(NodeId structures) {
    std::vector<Operand> operands;
    for (std::int32_t value_type = kNone; value_type <= kLongDouble; ++value_type) {
      for (std::int32_t signedness = 0; signedness <= 2; ++signedness) {
        for (std::int32_t pointers = 0; pointers <= 2; ++pointers) {
          const ExprType plain = Make(value_type, signedness, pointers);
          structures += 3;
          const ExprType structure = Structure(structures, signedness, pointers);
          const ExprType& type = value_type == kStruct ? structure : plain;
          operands.push_back({type, Behind(Variable(type))});
        }
      }
    }
    return operands;
  }
};

TEST_F(EveryOperatorTyped, AgreesWithTheTables) {
  const std::vector<Operand> lefts = MakeOperands(10'000);
  const std::vector<Operand> rights = MakeOperands(20'000);
  const NodeId operation = Operate(0, 0);
  long rows = 0;
  for (const std::int32_t code : Codes()) {
    CdfgSetAttrInt(graph, operation, DfgOpe_TYPE, code);
    for (const Operand& left : lefts) {
      CdfgSetAttrNode(graph, operation, DfgOpe_LEFT, left.node);
      for (const Operand& right : rights) {
        CdfgSetAttrNode(graph, operation, DfgOpe_RIGHT, right.node);
        const ExprType expected = Expect(code, left.type, right.type);
        ASSERT_EQ(TypeOf(operation), expected)
            << "operator " << code << " on " << testing::PrintToString(left.type) << " and "
            << testing::PrintToString(right.type);
        ASSERT_EQ(Ask(TypeOfOperation, graph, operation), expected);
        ++rows;
      }
    }
  }
  EXPECT_EQ(rows, 49L * 108 * 108);
  std::cout << "checked " << rows << " operations: " << Codes().size() << " operators on "
            << lefts.size() << " times " << rights.size() << " operand types\n";
}

// A second way to get there: what an operation answers does not depend on where the type of an
// operand comes from.
TEST_F(EveryOperatorTyped, IsTheSameForCasts) {
  const NodeId left = Add(DFG_SPEC);
  const NodeId right = Add(DFG_SPEC);
  const NodeId operation = Operate(CALC_Add, left, right);
  const auto set = [&](NodeId cast, std::int32_t number) {
    const ExprType type = Make(number / 9, number / 3 % 3, number % 3);
    SetInts(cast, {{DfgSpec_VALTYPE, type.value_type},
                   {DfgSpec_SIGNED, type.signedness},
                   {DfgSpec_POINTERCNT, type.pointer_count}});
    return type;
  };
  for (std::int32_t one = 0; one < 108; ++one) {
    const ExprType left_type = set(left, one);
    for (std::int32_t other = 0; other < 108; ++other) {
      const ExprType right_type = set(right, other);
      ASSERT_EQ(TypeOf(operation), ExpectBoth(left_type, right_type));
    }
  }
}

// --- Nonsense ------------------------------------------------------------------------------------

TEST_F(ExprTyping, NothingHasATypeTooAndTheRecordIsFilled) {
  for (const NodeId node : {NodeId{0}, NodeId{9999}, std::numeric_limits<NodeId>::max()}) {
    for (const CdfgGraph* asked :
         {static_cast<const CdfgGraph*>(graph), static_cast<const CdfgGraph*>(nullptr)}) {
      EXPECT_EQ(Ask(TypeOfExpression, asked, node), kDefaults);
      EXPECT_EQ(Ask(TypeOfOperation, asked, node), kDefaults);
      EXPECT_EQ(Ask(TypeOfVariable, asked, node), Make(0, 0, 0));
      EXPECT_EQ(Ask(TypeOfCall, asked, node), Make(kInt, 0, 0));
    }
  }
}

TEST_F(ExprTyping, TextsWhereNumbersBelongReadAsMissing) {
  const NodeId declaration = Add(CFG_DECLARE);
  for (const std::uint32_t attribute :
       {CfgDecl_VALTYPE, CfgDecl_SIGNED, CfgDecl_POINTERCNT, CfgDecl_DIMCNT}) {
    CdfgSetAttrStr(graph, declaration, attribute, "9");
  }
  EXPECT_EQ(TypeOf(Refer(declaration)), Make(0, 0, 0));
  const NodeId operation = Operate(CALC_Les, Literal("1.5"), Literal("1"));
  CdfgSetAttrNode(graph, operation, DfgOpe_TYPE, 0);
  EXPECT_EQ(TypeOf(operation), Signed(kDouble));
}

TEST_F(ExprTyping, AValueTypeThatIsNoneIsKeptBehindAUnaryOperator) {
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, Variable(Unsigned(77)))), Unsigned(77));
  EXPECT_EQ(TypeOf(Operate(CALC_Minus, Variable(Make(kVoid, 0, 0)))), Make(kVoid, 0, 0));
}

TEST_F(ExprTyping, AStructureThatContainsItselfIsNamedAndNotEntered) {
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId declaration = Declare(Make(kStruct, 1, 0));
  Own(declaration, CfgDecl_STRUCTNODE, structure);
  Own(structure, CfgStruct_MEMBER, declaration);
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, declaration);
  CdfgSetAttrNode(graph, declaration, CfgDecl_TYPEDEFLINK, declaration);
  CdfgSetNext(graph, declaration, declaration);
  const ExprType expected = Make(kStruct, 1, 0, declaration, structure, declaration);
  const NodeId variable = Refer(declaration);
  EXPECT_EQ(TypeOf(variable), expected);
  EXPECT_EQ(TypeOf(Operate(CALC_Add, Literal("1"), variable)), expected);

  const NodeId cast = Add(DFG_SPEC);
  CdfgSetAttrInt(graph, cast, DfgSpec_VALTYPE, kStruct);
  CdfgSetAttrNode(graph, cast, DfgSpec_STRUCTNODE, cast);
  CdfgSetAttrNode(graph, cast, DfgSpec_TYPEDEFLINK, cast);
  EXPECT_EQ(TypeOf(cast), Make(kStruct, 0, 0, 0, cast, cast));

  const NodeId call = Add(DFG_FUNC_CALL);
  CdfgSetJump(graph, call, call);
  EXPECT_EQ(TypeOf(call), Make(0, 0, 0));
}

TEST_F(ExprTyping, ChangesNothing) {
  const NodeId sum = Operate(CALC_Add, Behind(Variable(Structure(500, 1, 1))),
                             Behind(Operate(CALC_Minus, Behind(Literal("0xFFFFFFFF")))));
  const NodeId call = Add(DFG_FUNC_CALL);
  const NodeId all = Operate(CALC_Xor, sum, Operate(CALC_LeftShift, call, Literal(nullptr)));
  const std::string before = Picture(graph);
  EXPECT_EQ(TypeOf(all), Structure(500, 2, 1));
  EXPECT_EQ(Picture(graph), before);
}

// --- Circles -------------------------------------------------------------------------------------

class TypeOfCircle : public ExprTyping {
 protected:
  // Typing the node stops the run, naming one of the nodes of the circle.
  void ExpectStop(NodeId node, std::initializer_list<NodeId> circle) {
    for (const Rule rule : {TypeOfExpression, TypeOfOperation, TypeOfVariable}) {
      if (!Walks(rule, CdfgGetKind(graph, node))) continue;
      ExprType type;
      const support::Outcome outcome = support::RunCatchingStop([&] { rule(graph, node, &type); });
      EXPECT_TRUE(std::any_of(circle.begin(), circle.end(), [&](NodeId one) {
        return outcome == support::Endless(one);
      })) << outcome;
    }
    // Nothing is left behind.
    EXPECT_EQ(TypeOf(Operate(CALC_Add, Literal("1"), Literal("1.5"))), Signed(kDouble));
  }

 private:
  static bool Walks(Rule rule, std::uint32_t kind) {
    if (rule == TypeOfOperation) return kind == DFG_OPERATION;
    return rule == TypeOfExpression || kind == DFG_INPUT_VAR;
  }
};

TEST_F(TypeOfCircle, OfAnOperationThatIsItsOwnOperand) {
  const NodeId left = Operate(CALC_Minus, 0);
  CdfgSetAttrNode(graph, left, DfgOpe_LEFT, left);
  ExpectStop(left, {left});
  const NodeId right = Operate(CALC_Add, Literal("1"));
  CdfgSetAttrNode(graph, right, DfgOpe_RIGHT, right);
  ExpectStop(right, {right});
  const NodeId both = Operate(CALC_Add, 0);
  CdfgSetAttrNode(graph, both, DfgOpe_LEFT, both);
  CdfgSetAttrNode(graph, both, DfgOpe_RIGHT, both);
  ExpectStop(both, {both});
}

TEST_F(TypeOfCircle, OfOperationsThatAreEachOthersOperands) {
  const NodeId first = Operate(CALC_Add, 0, Literal("1"));
  const NodeId second = Operate(CALC_Minus, first);
  const NodeId third = Operate(CALC_Sub, Literal("1"), Behind(second));
  CdfgSetAttrNode(graph, first, DfgOpe_LEFT, third);
  ExpectStop(first, {first, second, third});
  ExpectStop(third, {first, second, third});
  ExpectStop(Operate(CALC_Mul, Literal("2"), Behind(Operate(CALC_Plus, second))),
             {first, second, third});
}

TEST_F(TypeOfCircle, OfAReferenceThatLeadsBack) {
  const NodeId reference = Add(DFG_EDGE_PRESEDE);
  CdfgSetNext(graph, reference, reference);
  ExpectStop(reference, {reference});
  ExpectStop(Operate(CALC_Add, Literal("1"), reference), {reference});
  const NodeId first = Add(DFG_EDGE_PRESEDE);
  const NodeId second = Add(DFG_EDGE_PRESEDE);
  Chain({first, second, first});
  ExpectStop(first, {first, second});
}

TEST_F(TypeOfCircle, OfAReferenceToTheOperationThatHoldsIt) {
  const NodeId operation = Operate(CALC_BitNot, 0);
  CdfgSetAttrNode(graph, operation, DfgOpe_LEFT, Behind(operation));
  ExpectStop(operation, {operation});
}

TEST_F(TypeOfCircle, OfMembersThatLeadBack) {
  const NodeId variable = Variable(Signed(kInt));
  CdfgSetAttrNode(graph, variable, DfgPort_STRSON, variable);
  ExpectStop(variable, {variable});
  const NodeId first = Variable(Signed(kInt));
  const NodeId second = Variable(Signed(kInt));
  CdfgSetAttrNode(graph, first, DfgPort_STRSON, second);
  CdfgSetAttrNode(graph, second, DfgPort_STRSON, first);
  ExpectStop(first, {first, second});
  ExpectStop(Operate(CALC_LeftShift, Behind(first), Literal("1")), {first, second});
}

TEST_F(TypeOfCircle, NotOfWhatIsOnlySharedOrPointedAt) {
  const NodeId shared = Behind(Operate(CALC_Add, Literal("1U"), Literal("1")));
  const NodeId sum = Operate(CALC_Add, shared, shared);
  EXPECT_EQ(TypeOf(Operate(CALC_Sub, sum, sum)), Unsigned(kInt));
  const NodeId member = Variable(Signed(kLong));
  const NodeId variable = Variable(Structure(500));
  CdfgSetAttrNode(graph, variable, DfgPort_STRSON, member);
  CdfgSetAttrNode(graph, member, DfgPort_STRPARENT, variable);
  EXPECT_EQ(TypeOf(variable), Signed(kLong));
}

// --- Depth and cost ------------------------------------------------------------------------------

constexpr int kMillion = 1'000'000;

class TypeOfDeep : public ExprTyping {
 protected:
  // An unsigned long below this many operations, each with one operand more, on the side asked for
  // and, if they alternate, on the other one in turn.
  NodeId Nest(int operations, std::uint32_t side, bool alternate = false) {
    NodeId nested = Literal("1UL");
    for (int i = 0; i < operations; ++i) {
      const std::uint32_t other = side == DfgOpe_LEFT ? DfgOpe_RIGHT : DfgOpe_LEFT;
      const NodeId operation = Add(DFG_OPERATION);
      CdfgSetAttrInt(graph, operation, DfgOpe_TYPE, CALC_Add);
      Own(operation, side, i % 3 == 0 ? Behind(nested) : nested);
      Own(operation, other, one);
      nested = operation;
      if (alternate) side = other;
    }
    return nested;
  }

  ExprType TypeOnDefaultStack(NodeId node) {
    ExprType type;
    support::RunOnStack(support::kDefaultStack, [&] { type = TypeOf(node); });
    return type;
  }

  std::uint64_t CountSteps(NodeId node) {
    const std::uint64_t before = runaway::steps_left;
    TypeOf(node);
    return before - runaway::steps_left;
  }

  const NodeId one = Literal("1");
};

TEST_F(TypeOfDeep, AMillionOperationsNestedOnTheLeft) {
  EXPECT_EQ(TypeOnDefaultStack(Nest(kMillion, DfgOpe_LEFT)), Unsigned(kLong));
}

TEST_F(TypeOfDeep, AMillionOperationsNestedOnTheRight) {
  EXPECT_EQ(TypeOnDefaultStack(Nest(kMillion, DfgOpe_RIGHT)), Unsigned(kLong));
}

TEST_F(TypeOfDeep, AMillionOperationsNestedOnBothSidesInTurn) {
  EXPECT_EQ(TypeOnDefaultStack(Nest(kMillion, DfgOpe_LEFT, true)), Unsigned(kLong));
}

TEST_F(TypeOfDeep, AMillionUnaryOperations) {
  NodeId nested = Variable(Unsigned(kShort));
  for (int i = 0; i < kMillion; ++i) nested = Operate(CALC_Minus, nested);
  EXPECT_EQ(TypeOnDefaultStack(nested), Signed(kInt));
}

TEST_F(TypeOfDeep, AMillionCastsAreTheFirstOfThem) {
  NodeId nested = Literal("1.5");
  for (int i = 0; i < kMillion; ++i) {
    const NodeId cast = Add(DFG_SPEC);
    CdfgSetAttrInt(graph, cast, DfgSpec_VALTYPE, i % 2 == 0 ? kFloat : kLong);
    Chain({cast, nested});
    nested = cast;
  }
  EXPECT_EQ(TypeOnDefaultStack(nested), Make(kLong, 0, 0));
  EXPECT_LE(CountSteps(nested), 10U);
  EXPECT_EQ(TypeOnDefaultStack(Operate(CALC_Add, nested, CdfgGetNext(graph, nested))),
            Signed(kDouble));
}

TEST_F(TypeOfDeep, AMillionReferencesInARow) {
  NodeId nested = Literal("1.5");
  for (int i = 0; i < kMillion; ++i) nested = Behind(nested);
  EXPECT_EQ(TypeOnDefaultStack(nested), Signed(kDouble));
}

TEST_F(TypeOfDeep, AMillionMembersInARow) {
  NodeId member = Variable(Unsigned(kChar, 1));
  for (int i = 0; i < kMillion; ++i) {
    const NodeId outer = Add(DFG_INPUT_VAR);
    CdfgSetAttrNode(graph, outer, DfgPort_STRSON, member);
    member = outer;
  }
  EXPECT_EQ(TypeOnDefaultStack(member), Unsigned(kChar, 1));
}

TEST_F(TypeOfDeep, StepsGrowLikeTheExpression) {
  for (const std::uint32_t side : {DfgOpe_LEFT, DfgOpe_RIGHT}) {
    const std::uint64_t few = CountSteps(Nest(1'000, side));
    const std::uint64_t many = CountSteps(Nest(100'000, side));
    EXPECT_GE(few, 1'000U);
    EXPECT_LE(many, 101 * few);
    std::cout << few << " steps for 1,000 operations, " << many << " for 100,000\n";
  }
}

// Each level holds the one below it twice: 64 operations, and more ways through them than anybody
// can walk.
TEST_F(TypeOfDeep, OperandsSharedOverAndOverEndWithTheStepsGranted) {
  NodeId nested = one;
  for (int i = 0; i < 64; ++i) nested = Operate(CALC_Add, nested, nested);
  const std::uint64_t before = runaway::steps_left;
  runaway::steps_left = kMillion;
  const support::Outcome outcome = support::RunCatchingStop([&] { TypeOf(nested); });
  runaway::steps_left = before;
  EXPECT_EQ(outcome.status, 255);
  EXPECT_EQ(outcome.output.rfind("kelvo : Error : Endless graph : node ", 0), 0U);
  EXPECT_EQ(TypeOf(Operate(CALC_Add, one, Literal("1L"))), Signed(kLong));
}

}  // namespace
