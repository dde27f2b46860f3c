#include "bench/constructs.h"

#include <algorithm>
#include <utility>

namespace bench {

namespace {

constexpr std::int32_t kVariable = 257;
constexpr std::int32_t kStepUp = 61;  // x++
constexpr std::int32_t kDirective = 55;
constexpr std::int32_t kOctal = 2;
constexpr std::int32_t kDecimal = 3;

std::string NameOf(const Draft& draft, NodeId node, std::uint32_t attribute) {
  const char* name = CdfgGetAttrStr(draft.graph, node, attribute);
  return name == nullptr ? "" : name;
}

// Statements stand on lines of their own.
void NextLine(Draft& draft) {
  ++draft.line;
  draft.column = 1;
}

NodeId AddStatement(Draft& draft, Chain& body, std::uint32_t kind) {
  NextLine(draft);
  const NodeId node = AddNode(draft, kind);
  Append(draft, body, node);
  return node;
}

void JumpBothWays(Draft& draft, NodeId begin, NodeId end) {
  CdfgSetJump(draft.graph, begin, end);
  CdfgSetJump(draft.graph, end, begin);
}

// --- Expressions ---------------------------------------------------------------------------------

NodeId AddReference(Draft& draft, NodeId owner) {
  const NodeId edge = AddNode(draft, DFG_EDGE_PRESEDE);
  CdfgSetPrev(draft.graph, edge, owner);
  return edge;
}

void Link(Draft& draft, NodeId before, NodeId behind) {
  CdfgSetNext(draft.graph, before, behind);
  CdfgSetPrev(draft.graph, behind, before);
}

void AddIndex(Draft& draft, NodeId port, const Term& index) {
  CdfgSetAttrInt(draft.graph, port, DfgPort_DIMCNT, 1);
  const NodeId dimension = AddNode(draft, DFG_DIMENSION);
  CdfgSetPrev(draft.graph, dimension, port);
  CdfgSetAttrNode(draft.graph, port, DfgPort_DIMNODE, dimension);
  CdfgSetAttrNode(draft.graph, dimension, DfgDim_NODE, AddExpression(draft, index, dimension));
}

NodeId AddPlainPort(Draft& draft, NodeId declaration, std::uint32_t kind) {
  const NodeId port = AddNode(draft, kind);
  const std::string name = NameOf(draft, declaration, CfgDecl_NAME);
  CdfgSetAttrStr(draft.graph, port, DfgPort_NAME, name.c_str());
  CdfgSetAttrNode(draft.graph, port, DfgPort_DECL, declaration);
  return port;
}

NodeId AddPort(Draft& draft, const Term& term, std::uint32_t kind) {
  const NodeId port = AddPlainPort(draft, term.target, kind);
  if (!term.parts.empty()) AddIndex(draft, port, term.parts.front());
  if (term.member != 0) {
    const NodeId son = AddPlainPort(draft, term.member, kind);
    CdfgSetAttrNode(draft.graph, port, DfgPort_STRSON, son);
    CdfgSetAttrNode(draft.graph, son, DfgPort_STRPARENT, port);
  }
  return port;
}

NodeId AddConstant(Draft& draft, const Term& term) {
  const NodeId node = AddNode(draft, DFG_INPUT_CONST);
  CdfgSetAttrStr(draft.graph, node, DfgInputCnst_STRVALUE, term.text.c_str());
  CdfgSetAttrInt(draft.graph, node, DfgInputCnst_INTVALUE, term.code);
  CdfgSetAttrInt(draft.graph, node, DfgInputCnst_BASE, term.text == "0" ? kOctal : kDecimal);
  CdfgSetAttrInt(draft.graph, node, DfgInputCnst_WIDTH, 0);
  return node;
}

NodeId AddOperation(Draft& draft, const Term& term) {
  const NodeId node = AddNode(draft, DFG_OPERATION);
  CdfgSetAttrInt(draft.graph, node, DfgOpe_TYPE, term.code);
  constexpr std::uint32_t kOperands[] = {DfgOpe_LEFT, DfgOpe_RIGHT};
  for (std::size_t i = 0; i < term.parts.size(); ++i) {
    CdfgSetAttrNode(draft.graph, node, kOperands[i], AddExpression(draft, term.parts[i], node));
  }
  return node;
}

NodeId AddCast(Draft& draft, const Term& term) {
  const NodeId node = AddNode(draft, DFG_SPEC);
  CdfgSetAttrInt(draft.graph, node, DfgSpec_SIGNED, DECL_SIGNED);
  CdfgSetAttrInt(draft.graph, node, DfgSpec_VALTYPE, term.code);
  CdfgSetNext(draft.graph, node, AddExpression(draft, term.parts.front(), node));
  return node;
}

void AddArguments(Draft& draft, NodeId call, const std::vector<Term>& arguments) {
  Chain list{call, DfgFuncCall_ARGLIST};
  for (const Term& argument : arguments) {
    const NodeId info = AddNode(draft, DFG_PORT_INFO);
    Append(draft, list, info);
    CdfgSetAttrNode(draft.graph, info, DfgPortInfo_SIGNAL, AddExpression(draft, argument, info));
  }
}

NodeId AddCall(Draft& draft, const Term& term) {
  CdfgGraph* graph = draft.graph;
  const NodeId node = AddNode(draft, DFG_FUNC_CALL);
  CdfgSetJump(graph, node, term.target);
  const std::string name = NameOf(draft, term.target, CfgFunc_NAME);
  CdfgSetAttrStr(graph, node, DfgFuncCall_NAME, name.c_str());
  AddArguments(draft, node, term.parts);
  if (!term.text.empty()) {
    CdfgSetAttrNode(graph, node, DfgFuncCall_DIRECTIVE, AddDirective(draft, term.text, node));
  }
  CdfgSetAttrInt(graph, node, DfgFuncCall_FUNC_SIGNED, DECL_SIGNED);
  CdfgSetAttrInt(graph, node, DfgFuncCall_FUNC_RETTYPE,
                 CdfgGetAttrInt(graph, term.target, CfgFunc_RETTYPE));
  return node;
}

// Ports and constants stand behind a reference, everything else for itself.
NodeId AddBare(Draft& draft, const Term& term) {
  switch (term.shape) {
    case Term::Shape::Port:
      return AddPort(draft, term, DFG_INPUT_VAR);
    case Term::Shape::Constant:
      return AddConstant(draft, term);
    case Term::Shape::Operation:
      return AddOperation(draft, term);
    case Term::Shape::Cast:
      return AddCast(draft, term);
    case Term::Shape::Call:
      return AddCall(draft, term);
  }
  return 0;
}

bool NeedsReference(const Term& term) {
  return term.shape == Term::Shape::Port || term.shape == Term::Shape::Constant;
}

NodeId AddStep(Draft& draft, NodeId variable, NodeId owner) {
  return AddExpression(draft, Operation(kStepUp, Variable(variable)), owner);
}

// --- Operation lists -----------------------------------------------------------------------------

NodeId AddManaged(Draft& draft, NodeId owner, std::uint32_t list) {
  const NodeId managed = AddNode(draft, DFG_MANAGE_OPERATION);
  CdfgSetPrev(draft.graph, managed, owner);
  CdfgSetAttrNode(draft.graph, owner, list, managed);
  return managed;
}

void AddRoot(Draft& draft, NodeId owner, std::uint32_t list, const Term& expression) {
  const NodeId managed = AddManaged(draft, owner, list);
  CdfgSetAttrNode(draft.graph, managed, DfgOpeman_OPE, AddExpression(draft, expression, managed));
}

// target = ...: the target, the edge behind it, and the edge as the root.
NodeId AddEdge(Draft& draft, NodeId owner, std::uint32_t list, const Term& target) {
  const NodeId managed = AddManaged(draft, owner, list);
  const NodeId port = AddPort(draft, target, DFG_OUTPUT_VAR);
  const NodeId edge = AddNode(draft, DFG_EDGE_BLOCKING);
  Link(draft, port, edge);
  CdfgSetAttrNode(draft.graph, managed, DfgOpeman_OPE, edge);
  return edge;
}

// --- Declarations --------------------------------------------------------------------------------

void AddDimension(Draft& draft, NodeId declaration, std::int32_t length) {
  CdfgSetAttrInt(draft.graph, declaration, CfgDecl_DIMCNT, 1);
  const NodeId dimension = AddNode(draft, DFG_DIMENSION);
  CdfgSetPrev(draft.graph, dimension, declaration);
  CdfgSetAttrNode(draft.graph, declaration, CfgDecl_DIMNODE, dimension);
  if (length == 0) return;
  CdfgSetAttrInt(draft.graph, dimension, DfgDim_CNT, length);
  CdfgSetAttrNode(draft.graph, dimension, DfgDim_NODE,
                  AddExpression(draft, Number(length), dimension));
}

NodeId AddPairStructure(Draft& draft, NodeId owner) {
  const NodeId structure = AddNode(draft, CFG_STRUCT);
  CdfgSetPrev(draft.graph, structure, owner);
  CdfgSetAttrStr(draft.graph, structure, CfgStruct_TAGNAME, "pair");
  Chain members{structure, CfgStruct_MEMBER};
  Declare(draft, members, "low");
  Declare(draft, members, "high");
  CdfgSetAttrInt(draft.graph, structure, CfgStruct_UNION, 0);
  return structure;
}

}  // namespace

// --- Ids and nodes -------------------------------------------------------------------------------

NodeId IdAt(IdPattern pattern, std::uint32_t place) {
  constexpr std::uint32_t kLow31 = 0x7FFFFFFFU;
  const std::uint32_t number = place + 1;
  std::uint32_t mixed = number;
  switch (pattern) {
    case IdPattern::Dense:
      return number;
    case IdPattern::Gaps:
      return place * 7 + 1;
    case IdPattern::Random:
      // Both steps can be undone, so no two numbers give one id.
      mixed = (mixed * 0x2C1B3C6DU) & kLow31;
      mixed ^= mixed >> 16;
      return (mixed * 0x297A2D39U) & kLow31;
    case IdPattern::Descending:
      return 2'900'000'000U - place;
    case IdPattern::PowersOfTwo:
      return number * 256;
    case IdPattern::Duplicates:
      return place / 2 + 1;
  }
  return number;
}

NodeId AddNode(Draft& draft, std::uint32_t kind) {
  const auto place = static_cast<std::uint32_t>(CdfgNodeCount(draft.graph));
  const NodeId node = CdfgAddNodeWithId(draft.graph, IdAt(draft.ids, place));
  CdfgSetKind(draft.graph, node, kind);
  CdfgSetFileName(draft.graph, node, draft.file.c_str());
  CdfgSetLine(draft.graph, node, draft.line);
  CdfgSetColumn(draft.graph, node, draft.column++);
  return node;
}

void Append(Draft& draft, Chain& chain, NodeId node) {
  if (chain.last == 0) {
    CdfgSetAttrNode(draft.graph, chain.owner, chain.attribute, node);
    CdfgSetPrev(draft.graph, node, chain.owner);
  } else {
    Link(draft, chain.last, node);
  }
  chain.last = node;
}

// --- Expressions ---------------------------------------------------------------------------------

Term Variable(NodeId declaration) { return {Term::Shape::Port, declaration, 0, 0, {}, {}}; }

Term Element(NodeId array, Term index) {
  return {Term::Shape::Port, array, 0, 0, {}, {std::move(index)}};
}

Term Member(NodeId structure, NodeId member) {
  return {Term::Shape::Port, structure, member, 0, {}, {}};
}

Term Number(std::int32_t value) {
  return {Term::Shape::Constant, 0, 0, value, std::to_string(value), {}};
}

Term Real(const char* text, std::int32_t whole) {
  return {Term::Shape::Constant, 0, 0, whole, text, {}};
}

Term Operation(std::uint32_t code, Term left) {
  const auto number = static_cast<std::int32_t>(code);
  return {Term::Shape::Operation, 0, 0, number, {}, {std::move(left)}};
}

Term Operation(std::uint32_t code, Term left, Term right) {
  const auto number = static_cast<std::int32_t>(code);
  return {Term::Shape::Operation, 0, 0, number, {}, {std::move(left), std::move(right)}};
}

Term Cast(std::int32_t value_type, Term operand) {
  return {Term::Shape::Cast, 0, 0, value_type, {}, {std::move(operand)}};
}

Term Call(NodeId function, std::vector<Term> arguments, const char* directive) {
  return {Term::Shape::Call, function, 0, 0, directive, std::move(arguments)};
}

NodeId AddExpression(Draft& draft, const Term& term, NodeId owner) {
  if (!NeedsReference(term)) {
    const NodeId node = AddBare(draft, term);
    CdfgSetPrev(draft.graph, node, owner);
    return node;
  }
  const NodeId edge = AddReference(draft, owner);
  Link(draft, edge, AddBare(draft, term));
  return edge;
}

NodeId AddNestedOperations(Draft& draft, NodeId variable, std::uint32_t depth, NodeId owner) {
  constexpr std::uint32_t kOperators[] = {CALC_Add, CALC_Sub, CALC_And, CALC_Xor};
  const Term leaf = Variable(variable);
  NodeId first = 0;
  std::uint32_t hole = 0;  // the operand of the owner that the next level fills
  for (std::uint32_t level = 0; level < depth; ++level) {
    if (level % 16 == 0) NextLine(draft);
    const NodeId node = AddNode(draft, DFG_OPERATION);
    CdfgSetPrev(draft.graph, node, owner);
    if (hole != 0) CdfgSetAttrNode(draft.graph, owner, hole, node);
    if (first == 0) first = node;
    CdfgSetAttrInt(draft.graph, node, DfgOpe_TYPE,
                   static_cast<std::int32_t>(kOperators[level % 4]));
    CdfgSetAttrNode(draft.graph, node, DfgOpe_LEFT, 0);
    CdfgSetAttrNode(draft.graph, node, DfgOpe_RIGHT, 0);
    hole = level % 2 == 0 ? DfgOpe_RIGHT : DfgOpe_LEFT;
    const std::uint32_t filled = level % 2 == 0 ? DfgOpe_LEFT : DfgOpe_RIGHT;
    CdfgSetAttrNode(draft.graph, node, filled, AddExpression(draft, leaf, node));
    owner = node;
  }
  const NodeId innermost = AddExpression(draft, leaf, owner);
  if (hole != 0) CdfgSetAttrNode(draft.graph, owner, hole, innermost);
  return first == 0 ? innermost : first;
}

// --- Declarations --------------------------------------------------------------------------------

NodeId Declare(Draft& draft, Chain& list, const std::string& name, const Type& type) {
  CdfgGraph* graph = draft.graph;
  const NodeId node = AddNode(draft, CFG_DECLARE);
  Append(draft, list, node);
  CdfgSetAttrInt(graph, node, CfgDecl_KIND, kVariable);
  CdfgSetAttrStr(graph, node, CfgDecl_NAME, name.c_str());
  CdfgSetAttrInt(graph, node, CfgDecl_SIGNED, DECL_SIGNED);
  if (type.length >= 0) AddDimension(draft, node, type.length);
  CdfgSetAttrInt(graph, node, CfgDecl_VALTYPE, type.value_type);
  if (type.structure != 0) {
    CdfgSetAttrNode(graph, node, CfgDecl_STRUCTNODE, AddPairStructure(draft, node));
    CdfgSetAttrNode(graph, node, CfgDecl_STRUCTORGNODE, type.structure);
  }
  return node;
}

void Initialise(Draft& draft, NodeId declaration, const Term& value) {
  CdfgSetAttrNode(draft.graph, declaration, CfgDecl_INIT, AddExpression(draft, value, declaration));
}

void InitialiseTable(Draft& draft, NodeId declaration, std::int32_t length) {
  const NodeId braces = AddNode(draft, CFG_MEMBER_LIST);
  CdfgSetPrev(draft.graph, braces, declaration);
  CdfgSetAttrNode(draft.graph, declaration, CfgDecl_INIT, braces);
  Chain entries{braces, CfgMemberList_MEMBER};
  for (std::int32_t i = 0; i < length; ++i) {
    const NodeId entry = AddNode(draft, CFG_MEMBER);
    Append(draft, entries, entry);
    CdfgSetAttrNode(draft.graph, entry, CfgMember_SIGNAL,
                    AddExpression(draft, Number(i * 37 % 101), entry));
  }
}

NodeId AddDirective(Draft& draft, const std::string& text, NodeId owner) {
  const NodeId node = AddNode(draft, INFO_DIRECTIVE);
  CdfgSetPrev(draft.graph, node, owner);
  CdfgSetAttrInt(draft.graph, node, DfgDirective_TYPE, kDirective);
  CdfgSetAttrStr(draft.graph, node, DfgDirective_STR, text.c_str());
  return node;
}

NodeId DefinePair(Draft& draft, Chain& elements) {
  const NodeId definition = AddStatement(draft, elements, CFG_STRUCT_DEF);
  const NodeId structure = AddPairStructure(draft, definition);
  CdfgSetAttrNode(draft.graph, definition, CfgStructDef_STRUCT, structure);
  return structure;
}

NodeId MemberOf(const Draft& draft, NodeId declaration, int place) {
  const NodeId structure = CdfgGetAttr(draft.graph, declaration, CfgDecl_STRUCTNODE);
  NodeId member = CdfgGetAttr(draft.graph, structure, CfgStruct_MEMBER);
  for (; place > 0; --place) member = CdfgGetNext(draft.graph, member);
  return member;
}

Chain OpenDeclarations(Draft& draft, Chain& chain) {
  return {AddStatement(draft, chain, CFG_DECLARE_DEF), CfgDeclDef_DECL};
}

Function OpenFunction(Draft& draft, Chain& elements, const std::string& name,
                      std::int32_t value_type) {
  CdfgGraph* graph = draft.graph;
  const NodeId node = AddStatement(draft, elements, CFG_FUNCTION);
  for (const std::uint32_t list : {CfgFunc_STARTCFG, CfgFunc_ARGLIST, CfgFunc_DECLARE}) {
    CdfgSetAttrNode(graph, node, list, 0);
  }
  CdfgSetAttrStr(graph, node, CfgFunc_NAME, name.c_str());
  CdfgSetAttrInt(graph, node, CfgFunc_SIGNED, DECL_SIGNED);
  CdfgSetAttrInt(graph, node, CfgFunc_RETTYPE, value_type);
  return {node, {node, CfgFunc_ARGLIST}, {node, CfgFunc_DECLARE}, {node, CfgFunc_STARTCFG}};
}

// --- Statements ----------------------------------------------------------------------------------

void Evaluate(Draft& draft, Chain& body, const Term& expression) {
  AddRoot(draft, AddStatement(draft, body, CFG_STATE_DATAPATH), CfgDatapath_OPELIST, expression);
}

NodeId OpenAssignment(Draft& draft, Chain& body, const Term& target) {
  return AddEdge(draft, AddStatement(draft, body, CFG_STATE_DATAPATH), CfgDatapath_OPELIST, target);
}

void Assign(Draft& draft, Chain& body, const Term& target, const Term& value) {
  const NodeId edge = OpenAssignment(draft, body, target);
  CdfgSetNext(draft.graph, edge, AddExpression(draft, value, edge));
}

void Return(Draft& draft, Chain& body, const Term& value) {
  AddRoot(draft, AddStatement(draft, body, CFG_RETURN), CfgReturn_EXP, value);
}

void Break(Draft& draft, Chain& body) { AddStatement(draft, body, CFG_BREAK); }

NodeId Label(Draft& draft, Chain& body, const std::string& name) {
  const NodeId label = AddStatement(draft, body, CFG_STATE_LABEL);
  CdfgSetAttrStr(draft.graph, label, CfgStateLabel_NAME, name.c_str());
  return label;
}

void Goto(Draft& draft, Chain& body, NodeId label) {
  const NodeId jump = AddStatement(draft, body, CFG_GOTO);
  const std::string name = NameOf(draft, label, CfgStateLabel_NAME);
  CdfgSetAttrStr(draft.graph, jump, CfgGoto_LABEL, name.c_str());
  CdfgSetJump(draft.graph, jump, label);
}

Open OpenBlock(Draft& draft, Chain& body) {
  return {AddStatement(draft, body, CFG_STATE_BEGIN), CFG_STATE_END};
}

Open OpenIf(Draft& draft, Chain& body, const Term& condition) {
  const NodeId begin = AddStatement(draft, body, CFG_STATE_IF);
  AddRoot(draft, begin, CfgStateIf_CONDOPE, condition);
  return {begin, CFG_STATE_ENDIF, {begin, CfgStateIf_STATOPE}};
}

Open OpenSwitch(Draft& draft, Chain& body, const Term& selector) {
  const NodeId begin = AddStatement(draft, body, CFG_STATE_CASE);
  AddRoot(draft, begin, CfgStateCase_CONDOPE, selector);
  return {begin, CFG_STATE_ENDCASE, {begin, CfgStateCase_STATOPE}};
}

// LOOPTYPE stands behind the attribute that the first part will fill.
Open OpenLoop(Draft& draft, Chain& body, std::int32_t type) {
  const NodeId begin = AddStatement(draft, body, CFG_LOOP_BEGIN);
  CdfgSetAttrNode(draft.graph, begin, CfgLoopBegin_CFG, 0);
  CdfgSetAttrInt(draft.graph, begin, CfgLoopBegin_LOOPTYPE, type);
  return {begin, CFG_LOOP_END, {begin, CfgLoopBegin_CFG}};
}

NodeId AddLoopPart(Draft& draft, Open& loop, std::uint32_t kind) {
  const NodeId part = AddNode(draft, kind);
  Append(draft, loop.parts, part);
  return part;
}

Open OpenWhile(Draft& draft, Chain& body, const Term& condition) {
  Open loop = OpenLoop(draft, body, LOOP_WHILE);
  const NodeId part = AddLoopPart(draft, loop, CFG_LOOP_COND);
  AddRoot(draft, part, CfgLoopCond_CONDOPE, condition);
  return loop;
}

Open OpenFor(Draft& draft, Chain& body, NodeId variable, const Term& limit) {
  Open loop = OpenLoop(draft, body, LOOP_FOR);
  const NodeId init = AddLoopPart(draft, loop, CFG_LOOP_INIT);
  const NodeId edge = AddEdge(draft, init, CfgLoopInit_OPELIST, Variable(variable));
  CdfgSetNext(draft.graph, edge, AddExpression(draft, Number(0), edge));
  const NodeId condition = AddLoopPart(draft, loop, CFG_LOOP_COND);
  AddRoot(draft, condition, CfgLoopCond_CONDOPE, Operation(CALC_Les, Variable(variable), limit));
  return loop;
}

void CloseFor(Draft& draft, Chain& body, Open& loop, NodeId variable) {
  const NodeId part = AddLoopPart(draft, loop, CFG_LOOP_STEP);
  const NodeId managed = AddManaged(draft, part, CfgLoopStep_OPELIST);
  CdfgSetAttrNode(draft.graph, managed, DfgOpeman_OPE, AddStep(draft, variable, managed));
  Close(draft, body, loop);
}

void Close(Draft& draft, Chain& body, const Open& open) {
  JumpBothWays(draft, open.begin, AddStatement(draft, body, open.end_kind));
}

Chain OpenBranch(Draft& draft, Open& statement, std::uint32_t kind) {
  const NodeId branch = AddNode(draft, kind);
  Append(draft, statement.parts, branch);
  return {branch, CfgIfThen_CFG};
}

Chain OpenCase(Draft& draft, Open& statement, const Term* label) {
  NextLine(draft);
  const NodeId item = AddNode(draft, CFG_CASE_ITEM);
  Append(draft, statement.parts, item);
  if (label != nullptr) {
    CdfgSetAttrNode(draft.graph, item, CfgCaseItem_EXP, AddExpression(draft, *label, item));
  }
  return {item, CfgCaseItem_CFG};
}

Chain OpenLoopBody(Draft& draft, Open& loop) {
  return {AddLoopPart(draft, loop, CFG_LOOP_STAT), CfgLoopStat_CFG};
}

}  // namespace bench
