// The C type of an expression, by a walk from its operator down to the declarations.
//
// Part of the rules is looser than the language's (float with float gives double, a pointer wins
// over whatever it meets); the temporaries of later passes are declared by them, so they are kept.
#include "constant/expr_type.h"

#include <algorithm>
#include <optional>

#include "cdfg/chain.h"
#include "cdfg/deep.h"
#include "cdfg/kinds.h"
#include "cdfg/runaway.h"
#include "constant/literal.h"

namespace {

constexpr std::int32_t kShort = 3;

struct Typing {
  const CdfgGraph* graph;
  DeclaredTypes* known;
  DepthGuard depth = {};
};

// --- Binary operators ----------------------------------------------------------------------------

bool IsUnsigned(const ExprType& type) { return type.signedness == DECL_UNSIGNED; }

std::int32_t UnsignedIfEither(const ExprType& left, const ExprType& right) {
  return IsUnsigned(left) || IsUnsigned(right) ? DECL_UNSIGNED : DECL_SIGNED;
}

bool Either(const ExprType& left, const ExprType& right, std::int32_t value_type) {
  return left.value_type == value_type || right.value_type == value_type;
}

// The signedness of an integer result: of the operand that takes part in the result's type, of both
// when both do.
template <class TakesPart>
std::int32_t SignednessOf(const ExprType& left, const ExprType& right, TakesPart takes_part) {
  if (takes_part(left) && takes_part(right)) return UnsignedIfEither(left, right);
  return takes_part(left) ? left.signedness : right.signedness;
}

ExprType IntegerType(const ExprType& left, const ExprType& right, std::int32_t value_type) {
  const auto is_long_too = [&](const ExprType& type) {
    return type.value_type == value_type ||
           (value_type == DECL_VALTYPE_LONG && type.value_type == DECL_VALTYPE_INT);
  };
  ExprType type;
  type.value_type = value_type;
  type.signedness = SignednessOf(left, right, is_long_too);
  return type;
}

void TakeStructure(ExprType& type, const ExprType& left, const ExprType& right) {
  const ExprType& from = left.value_type == DECL_VALTYPE_STRUCT ? left : right;
  type.struct_origin = from.struct_origin;
  type.struct_members = from.struct_members;
  type.typedef_link = from.typedef_link;
}

ExprType CombineValues(const ExprType& left, const ExprType& right) {
  ExprType type;
  if (Either(left, right, DECL_VALTYPE_STRUCT)) {
    type.value_type = DECL_VALTYPE_STRUCT;
    TakeStructure(type, left, right);
    return type;
  }
  if (Either(left, right, kTypeLongDouble)) {
    type.value_type = kTypeLongDouble;
    return type;
  }
  if (Either(left, right, DECL_VALTYPE_DOUBLE) || Either(left, right, DECL_VALTYPE_FLOAT)) {
    type.value_type = DECL_VALTYPE_DOUBLE;
    return type;
  }
  for (const std::int32_t integer : {DECL_VALTYPE_LONGLONG, DECL_VALTYPE_LONG, DECL_VALTYPE_INT}) {
    if (Either(left, right, integer)) return IntegerType(left, right, integer);
  }
  return type;
}

ExprType CombinePointers(const ExprType& left, const ExprType& right) {
  constexpr std::int32_t kByRank[] = {DECL_VALTYPE_STRUCT,
                                      kTypeLongDouble,
                                      DECL_VALTYPE_DOUBLE,
                                      DECL_VALTYPE_FLOAT,
                                      DECL_VALTYPE_LONGLONG,
                                      DECL_VALTYPE_LONG,
                                      kShort,
                                      DECL_VALTYPE_CHAR,
                                      DECL_VALTYPE_BOOL};
  ExprType type;
  const auto* ranked = std::find_if(std::begin(kByRank), std::end(kByRank),
                                    [&](std::int32_t rank) { return Either(left, right, rank); });
  if (ranked != std::end(kByRank)) type.value_type = *ranked;
  if (type.value_type == DECL_VALTYPE_STRUCT) TakeStructure(type, left, right);
  type.signedness = UnsignedIfEither(left, right);
  type.pointer_count = std::max(left.pointer_count, right.pointer_count);
  return type;
}

ExprType Combine(const ExprType& left, const ExprType& right) {
  const bool is_pointer = left.pointer_count != 0 || right.pointer_count != 0;
  return is_pointer ? CombinePointers(left, right) : CombineValues(left, right);
}

// --- Operators -----------------------------------------------------------------------------------

// Operators whose result has the type of the left operand.
bool IsLeftOperator(std::int32_t code) {
  return code == CALC_Plus || code == CALC_Minus || code == CALC_BitNot ||
         code == CALC_RightShift || code == CALC_LeftShift;
}

ExprType Promote(const ExprType& type) {
  const bool is_small = type.value_type == DECL_VALTYPE_CHAR || type.value_type == kShort ||
                        type.value_type == DECL_VALTYPE_BOOL;
  return type.pointer_count == 0 && is_small ? ExprType{} : type;
}

// --- Leaves --------------------------------------------------------------------------------------

// What a declaration says, structures aside.
DeclaredTypes::Entry ReadDeclaration(const CdfgGraph* graph, NodeId declaration) {
  return {declaration, CdfgGetAttrInt(graph, declaration, CfgDecl_VALTYPE),
          CdfgGetAttrInt(graph, declaration, CfgDecl_SIGNED),
          std::int64_t{CdfgGetAttrInt(graph, declaration, CfgDecl_POINTERCNT)} +
              CdfgGetAttrInt(graph, declaration, CfgDecl_DIMCNT)};
}

// Ids count up from the last node's, so no node made later can have this one.
bool HasOldId(const CdfgGraph* graph, NodeId node) {
  return node <= CdfgNodeIdAt(graph, CdfgNodeCount(graph) - 1);
}

DeclaredTypes::Entry KnownDeclaration(const CdfgGraph* graph, NodeId declaration,
                                      DeclaredTypes* known) {
  if (known == nullptr || declaration == 0) return ReadDeclaration(graph, declaration);
  DeclaredTypes::Entry& entry = known->entries[declaration % known->entries.size()];
  if (entry.declaration == declaration) return entry;
  const DeclaredTypes::Entry read = ReadDeclaration(graph, declaration);
  if (HasOldId(graph, declaration)) entry = read;
  return read;
}

NodeId LastMember(const CdfgGraph* graph, NodeId variable) {
  if (CdfgGetMemberSon(graph, variable) == 0) return variable;
  NodeId last = variable;
  for (const NodeId member : MemberChain(graph, variable)) last = member;
  return last;
}

ExprType VariableType(const CdfgGraph* graph, NodeId variable, DeclaredTypes* known) {
  const NodeId last = LastMember(graph, variable);
  const NodeId declaration = CdfgGetAttr(graph, last, DfgPort_DECL);
  const DeclaredTypes::Entry declared = KnownDeclaration(graph, declaration, known);
  ExprType type;
  type.value_type = declared.value_type;
  type.signedness = declared.signedness;
  const std::int64_t used = std::int64_t{CdfgGetAttrInt(graph, last, DfgPort_POINTERCNT)} +
                            CdfgGetAttrInt(graph, last, DfgPort_DIMCNT) -
                            CdfgGetAttrInt(graph, last, DfgPort_ADDRFLG);
  type.pointer_count =
      static_cast<std::int32_t>(std::max<std::int64_t>(declared.indirection - used, 0));
  if (type.value_type == DECL_VALTYPE_STRUCT) {
    type.struct_origin = CdfgGetAttr(graph, declaration, CfgDecl_STRUCTORGNODE);
    type.struct_members = CdfgGetAttr(graph, declaration, CfgDecl_STRUCTNODE);
    type.typedef_link = CdfgGetAttr(graph, declaration, CfgDecl_TYPEDEFLINK);
  }
  return type;
}

ExprType ConstantType(const CdfgGraph* graph, NodeId constant) {
  ExprType type;
  int signedness = DECL_SIGNED;
  type.value_type = ConstClassify(graph, constant, &signedness);
  type.signedness = signedness;
  return type;
}

ExprType ReturnType(const CdfgGraph* graph, NodeId call, NodeId function) {
  ExprType type;
  if (function != 0) {
    type.value_type = CdfgGetAttrInt(graph, function, CfgFunc_RETTYPE);
    type.signedness = CdfgGetAttrInt(graph, function, CfgFunc_SIGNED);
    type.pointer_count = CdfgGetAttrInt(graph, function, CfgFunc_POINTERCNT);
    type.struct_members = CdfgGetAttr(graph, function, CfgFunc_RETDECL);
    type.typedef_link = CdfgGetAttr(graph, function, CfgFunc_TYPEDEFLINK);
    return type;
  }
  const std::int32_t value_type = CdfgGetAttrInt(graph, call, DfgFuncCall_FUNC_RETTYPE);
  if (value_type != DECL_VALTYPE_NONE) type.value_type = value_type;
  type.signedness = CdfgGetAttrInt(graph, call, DfgFuncCall_FUNC_SIGNED);
  type.pointer_count = CdfgGetAttrInt(graph, call, DfgFuncCall_FUNC_POINTERCNT);
  type.struct_members = CdfgGetAttr(graph, call, DfgFuncCall_FUNC_RETDECL);
  return type;
}

// A call that is dereferenced as often as it may be, or more, keeps its pointer count: kept.
ExprType CallType(const CdfgGraph* graph, NodeId call) {
  ExprType type = ReturnType(graph, call, CdfgGetJump(graph, call));
  const std::int32_t dereferences = CdfgGetAttrInt(graph, call, DfgFuncCall_POINCNT);
  if (dereferences < type.pointer_count) {
    type.pointer_count = static_cast<std::int32_t>(static_cast<std::uint32_t>(type.pointer_count) -
                                                   static_cast<std::uint32_t>(dereferences));
  }
  return type;
}

ExprType CastType(const CdfgGraph* graph, NodeId cast) {
  ExprType type;
  type.value_type = CdfgGetAttrInt(graph, cast, DfgSpec_VALTYPE);
  type.signedness = CdfgGetAttrInt(graph, cast, DfgSpec_SIGNED);
  type.pointer_count = CdfgGetAttrInt(graph, cast, DfgSpec_POINTERCNT);
  if (type.value_type == DECL_VALTYPE_STRUCT) {
    type.struct_members = CdfgGetAttr(graph, cast, DfgSpec_STRUCTNODE);
    type.typedef_link = CdfgGetAttr(graph, cast, DfgSpec_TYPEDEFLINK);
  }
  return type;
}

// --- Any node ------------------------------------------------------------------------------------

// A node that stands for a value.
struct Value {
  NodeId node;
  std::uint32_t kind;

  bool IsOperation() const { return kind == DFG_OPERATION; }
};

ExprType LeafType(const CdfgGraph* graph, const Value& leaf, DeclaredTypes* known) {
  switch (leaf.kind) {
    case DFG_INPUT_VAR:
    case DFG_OUTPUT_VAR:
      return VariableType(graph, leaf.node, known);
    case DFG_INPUT_CONST:
      return ConstantType(graph, leaf.node);
    case DFG_FUNC_CALL:
      return CallType(graph, leaf.node);
    case DFG_SPEC:
      return CastType(graph, leaf.node);
    default:
      return {};
  }
}

// What stands behind references, of which there is one as a rule.
Value ValueBehind(const CdfgGraph* graph, NodeId first) {
  const std::uint32_t kind = CdfgGetKind(graph, first);
  if (kind != DFG_EDGE_PRESEDE) return {first, kind};
  const NodeId next = CdfgGetNext(graph, first);
  const std::uint32_t next_kind = CdfgGetKind(graph, next);
  if (next_kind != DFG_EDGE_PRESEDE) return {next, next_kind};
  const NodeId last = CdfgSkipReferences(graph, first);
  return {last, CdfgGetKind(graph, last)};
}

Value OperandOf(const CdfgGraph* graph, NodeId operation, std::uint32_t attribute) {
  return ValueBehind(graph, CdfgGetAttr(graph, operation, attribute));
}

Deep<ExprType> OperationType(Typing& run, NodeId operation) {
  const CdfgGraph* graph = run.graph;
  const std::int32_t code = CdfgGetAttrInt(graph, operation, DfgOpe_TYPE);
  if (CdfgIsTruthOperator(code)) co_return ExprType{};
  const DepthScope inside(run.depth, operation);
  const Value left = OperandOf(graph, operation, DfgOpe_LEFT);
  const ExprType left_type = left.IsOperation() ? co_await OperationType(run, left.node)
                                                : LeafType(graph, left, run.known);
  if (IsLeftOperator(code)) co_return Promote(left_type);
  const Value right = OperandOf(graph, operation, DfgOpe_RIGHT);
  const ExprType right_type = right.IsOperation() ? co_await OperationType(run, right.node)
                                                  : LeafType(graph, right, run.known);
  co_return Combine(left_type, right_type);
}

// The type of an operand that is no operation itself; nothing when it is one.
std::optional<ExprType> FlatOperandType(const CdfgGraph* graph, NodeId operation,
                                        std::uint32_t attribute, DeclaredTypes* known) {
  const NodeId first = CdfgGetAttr(graph, operation, attribute);
  if (known != nullptr && first != 0 && first == known->reference) return known->reference_type;
  const Value value = ValueBehind(graph, first);
  if (value.IsOperation()) return {};
  return LeafType(graph, value, known);
}

// The type of an operation none of whose operands is one; nothing when one is. Once expressions are
// divided, all operations are like that.
std::optional<ExprType> FlatOperationType(const CdfgGraph* graph, NodeId operation,
                                          DeclaredTypes* known) {
  const std::int32_t code = CdfgGetAttrInt(graph, operation, DfgOpe_TYPE);
  if (CdfgIsTruthOperator(code)) return ExprType{};
  const auto left = FlatOperandType(graph, operation, DfgOpe_LEFT, known);
  if (!left) return {};
  if (IsLeftOperator(code)) return Promote(*left);
  const auto right = FlatOperandType(graph, operation, DfgOpe_RIGHT, known);
  if (!right) return {};
  return Combine(*left, *right);
}

ExprType TypeOfAnyOperation(const CdfgGraph* graph, NodeId operation, DeclaredTypes* known) {
  CdfgCountStep(operation);
  if (const auto type = FlatOperationType(graph, operation, known)) return *type;
  Typing run{graph, known};
  return RunDeep(OperationType(run, operation));
}

ExprType TypeOfAny(const CdfgGraph* graph, NodeId node, DeclaredTypes* known) {
  const Value value = ValueBehind(graph, node);
  return value.IsOperation() ? TypeOfAnyOperation(graph, value.node, known)
                             : LeafType(graph, value, known);
}

std::int32_t Answer(const ExprType& found, ExprType* type) {
  *type = found;
  return found.value_type;
}

}  // namespace

std::int32_t TypeOfExpression(const CdfgGraph* graph, NodeId node, ExprType* type) {
  return Answer(TypeOfAny(graph, node, nullptr), type);
}

ExprType TypeByKnown(const CdfgGraph* graph, NodeId node, DeclaredTypes& known) {
  return TypeOfAny(graph, node, &known);
}

std::int32_t TypeOfOperation(const CdfgGraph* graph, NodeId operation, ExprType* type) {
  return Answer(TypeOfAnyOperation(graph, operation, nullptr), type);
}

std::int32_t TypeOfVariable(const CdfgGraph* graph, NodeId variable, ExprType* type) {
  return Answer(VariableType(graph, variable, nullptr), type);
}

std::int32_t TypeOfCall(const CdfgGraph* graph, NodeId call, ExprType* type) {
  return Answer(CallType(graph, call), type);
}
