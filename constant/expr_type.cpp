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
  DepthGuard depth;
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

ExprType VariableType(const CdfgGraph* graph, NodeId variable) {
  NodeId last = variable;
  for (const NodeId member : MemberChain(graph, variable)) last = member;
  const NodeId declaration = CdfgGetAttr(graph, last, DfgPort_DECL);
  ExprType type;
  type.value_type = CdfgGetAttrInt(graph, declaration, CfgDecl_VALTYPE);
  type.signedness = CdfgGetAttrInt(graph, declaration, CfgDecl_SIGNED);
  const std::int64_t declared =
      std::int64_t{CdfgGetAttrInt(graph, declaration, CfgDecl_POINTERCNT)} +
      CdfgGetAttrInt(graph, declaration, CfgDecl_DIMCNT);
  const std::int64_t used = std::int64_t{CdfgGetAttrInt(graph, last, DfgPort_POINTERCNT)} +
                            CdfgGetAttrInt(graph, last, DfgPort_DIMCNT) -
                            CdfgGetAttrInt(graph, last, DfgPort_ADDRFLG);
  type.pointer_count = static_cast<std::int32_t>(std::max<std::int64_t>(declared - used, 0));
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

ExprType LeafType(const CdfgGraph* graph, NodeId node) {
  switch (CdfgGetKind(graph, node)) {
    case DFG_INPUT_VAR:
    case DFG_OUTPUT_VAR:
      return VariableType(graph, node);
    case DFG_INPUT_CONST:
      return ConstantType(graph, node);
    case DFG_FUNC_CALL:
      return CallType(graph, node);
    case DFG_SPEC:
      return CastType(graph, node);
    default:
      return {};
  }
}

// What stands behind an operand's references.
NodeId OperandOf(const CdfgGraph* graph, NodeId operation, std::uint32_t attribute) {
  return CdfgSkipReferences(graph, CdfgGetAttr(graph, operation, attribute));
}

bool IsOperation(const CdfgGraph* graph, NodeId node) {
  return CdfgGetKind(graph, node) == DFG_OPERATION;
}

Deep<ExprType> OperationType(Typing& run, NodeId operation) {
  const CdfgGraph* graph = run.graph;
  const std::int32_t code = CdfgGetAttrInt(graph, operation, DfgOpe_TYPE);
  if (CdfgIsTruthOperator(code)) co_return ExprType{};
  const DepthScope inside(run.depth, operation);
  const NodeId left_node = OperandOf(graph, operation, DfgOpe_LEFT);
  const ExprType left = IsOperation(graph, left_node) ? co_await OperationType(run, left_node)
                                                      : LeafType(graph, left_node);
  if (IsLeftOperator(code)) co_return Promote(left);
  const NodeId right_node = OperandOf(graph, operation, DfgOpe_RIGHT);
  const ExprType right = IsOperation(graph, right_node) ? co_await OperationType(run, right_node)
                                                        : LeafType(graph, right_node);
  co_return Combine(left, right);
}

// The type of an operation none of whose operands is one; nothing when one is. Once expressions are
// divided, all operations are like that.
std::optional<ExprType> FlatOperationType(const CdfgGraph* graph, NodeId operation) {
  const std::int32_t code = CdfgGetAttrInt(graph, operation, DfgOpe_TYPE);
  if (CdfgIsTruthOperator(code)) return ExprType{};
  const NodeId left = OperandOf(graph, operation, DfgOpe_LEFT);
  if (IsOperation(graph, left)) return {};
  if (IsLeftOperator(code)) return Promote(LeafType(graph, left));
  const NodeId right = OperandOf(graph, operation, DfgOpe_RIGHT);
  if (IsOperation(graph, right)) return {};
  return Combine(LeafType(graph, left), LeafType(graph, right));
}

ExprType TypeOfAnyOperation(const CdfgGraph* graph, NodeId operation) {
  CdfgCountStep(operation);
  if (const std::optional<ExprType> type = FlatOperationType(graph, operation)) return *type;
  Typing run{graph, {}};
  return RunDeep(OperationType(run, operation));
}

std::int32_t Answer(const ExprType& found, ExprType* type) {
  *type = found;
  return found.value_type;
}

}  // namespace

std::int32_t TypeOfExpression(const CdfgGraph* graph, NodeId node, ExprType* type) {
  const NodeId value = CdfgSkipReferences(graph, node);
  return Answer(
      IsOperation(graph, value) ? TypeOfAnyOperation(graph, value) : LeafType(graph, value), type);
}

std::int32_t TypeOfOperation(const CdfgGraph* graph, NodeId operation, ExprType* type) {
  return Answer(TypeOfAnyOperation(graph, operation), type);
}

std::int32_t TypeOfVariable(const CdfgGraph* graph, NodeId variable, ExprType* type) {
  return Answer(VariableType(graph, variable), type);
}

std::int32_t TypeOfCall(const CdfgGraph* graph, NodeId call, ExprType* type) {
  return Answer(CallType(graph, call), type);
}
