#include "cdfg/walk.h"

#include <algorithm>
#include <cstddef>

#include "cdfg/chain.h"
#include "cdfg/graph_store.h"
#include "cdfg/kinds.h"
#include "cdfg/read_ahead.h"

namespace {

// What kind of chain a statement walk is on: which nodes of it are visited and entered.
enum Tag : int { kStatements, kIfParts, kCaseParts, kLoopParts };

bool IsBranch(std::uint32_t kind) { return kind == CFG_IF_THEN || kind == CFG_IF_ELSE; }

struct Inside {
  std::uint32_t attribute = 0;  // 0: the node is not entered
  Tag tag = kStatements;
};

// The parts of a statement; the chain they stand in is not looked at.
Inside PartsOf(std::uint32_t kind) {
  switch (kind) {
    case CFG_STATE_IF:
      return {CfgStateIf_STATOPE, kIfParts};
    case CFG_STATE_CASE:
    case CFG_STATE_CASEX:
    case CFG_STATE_CASEZ:
      return {CfgStateCase_STATOPE, kCaseParts};
    case CFG_LOOP_BEGIN:
      return {CfgLoopBegin_CFG, kLoopParts};
    default:
      return {};
  }
}

// What stands inside a statement and is none itself.
bool IsPart(std::uint32_t kind) {
  return IsBranch(kind) || kind == CFG_CASE_ITEM || CdfgIsLoopPart(kind);
}

// The statements inside a part.
Inside BodyOf(std::uint32_t kind) {
  if (!IsPart(kind)) return {};
  return {CdfgBodyAttribute(kind)};
}

// The elements inside a file, a module or a function.
Inside ElementsOf(std::uint32_t kind) {
  switch (kind) {
    case CFG_FILEINFO:
      return {CfgFileinfo_ELEMENT};
    case CFG_MODULE:
      return {CfgModule_ELEMENT};
    case CFG_FUNCTION:
      return {CfgFunc_STARTCFG};
    default:
      return {};
  }
}

Inside InsideAnywhere(std::uint32_t kind) {
  Inside inside = PartsOf(kind);
  if (inside.attribute == 0) inside = BodyOf(kind);
  if (inside.attribute == 0) inside = ElementsOf(kind);
  inside.tag = kStatements;
  return inside;
}

Inside InsideOf(std::uint32_t kind, int tag, StatementScope scope) {
  if (scope == StatementScope::Anywhere) return InsideAnywhere(kind);
  if (tag != kStatements) return BodyOf(kind);
  if (scope == StatementScope::Elements && kind == CFG_FUNCTION) return {CfgFunc_STARTCFG};
  return PartsOf(kind);
}

}  // namespace

// --- Operands ------------------------------------------------------------------------------------

CdfgOperands CdfgGetOperands(const CdfgGraph* graph, NodeId operation) {
  CdfgOperands operands;
  const std::uint32_t place = FindPlace(graph, operation);
  if (place == kNoPlace) return operands;
  const NodeRecord& node = NodeAt(*graph, place);
  if (HasRun(node)) {
    operands.left = CdfgGetAttr(graph, operation, DfgOpe_LEFT);
    operands.right = CdfgGetAttr(graph, operation, DfgOpe_RIGHT);
    operands.condition = CdfgGetAttr(graph, operation, DfgOpe_COND);
    return operands;
  }
  for (const Attribute& attribute : node.own) {
    if (attribute.type == ATTR_STRING) continue;
    const auto value = static_cast<NodeId>(BitsOf(*graph, attribute));
    if (attribute.id == DfgOpe_LEFT) operands.left = value;
    if (attribute.id == DfgOpe_RIGHT) operands.right = value;
    if (attribute.id == DfgOpe_COND) operands.condition = value;
  }
  return operands;
}

// --- ChainWalk -----------------------------------------------------------------------------------

void ChainWalk::PushChain(NodeId first, std::uint32_t depth, int tag) {
  Frame frame;
  frame.node = first;
  frame.depth = depth;
  frame.tag = tag;
  frames_.Push(frame);
}

void ChainWalk::PutInOrder() { std::reverse(frames_.End() - asked_, frames_.End()); }

void ChainWalk::Start(NodeId first, int tag) {
  frames_.ShrinkTo(0);
  asked_ = 0;
  if (first != 0) PushChain(first, 0, tag);
}

void ChainWalk::Enter(NodeId first, int tag) {
  if (frames_.IsEmpty()) return;
  Frame& current = frames_.Below(asked_);
  if (current.state == State::Left) return;
  current.entered = true;
  if (first == 0) return;
  if (in_order_) PutInOrder();
  in_order_ = false;
  if (asked_ == 0) guard_.EnterAt(current.depth, current.node);
  ++asked_;
  PushChain(first, current.depth + 1, tag);
}

void ChainWalk::EnterOperands(NodeId operation, int tag) {
  const CdfgOperands operands = CdfgGetOperands(graph_, operation);
  if (asked_ != 0 || frames_.IsEmpty()) {
    Enter(operands.left, tag);
    Enter(operands.right, tag);
    Enter(operands.condition, tag);
    return;
  }
  Enter(operands.condition, tag);
  Enter(operands.right, tag);
  Enter(operands.left, tag);
  in_order_ = true;
}

NodeId ChainWalk::Visit(Frame& frame) {
  frame.guard.Visit(frame.node);
  CdfgReadAhead(graph_, frame.node);
  frame.state = State::Visited;
  frame.entered = false;
  return frame.node;
}

NodeId ChainWalk::Next() {
  if (asked_ > 1 && !in_order_) PutInOrder();
  in_order_ = false;
  asked_ = 0;
  while (!frames_.IsEmpty()) {
    Frame& frame = frames_.Back();
    if (frame.state == State::Ahead) return Visit(frame);
    if (leaves_ && frame.entered) {
      frame.entered = false;
      frame.state = State::Left;
      return frame.node;
    }
    frame.node = CdfgGetNext(graph_, frame.node);
    if (frame.node != 0) return Visit(frame);
    frames_.Pop();
  }
  return 0;
}

// --- StatementWalk -------------------------------------------------------------------------------

StatementWalk::StatementWalk(const CdfgGraph* graph, NodeId first, StatementScope scope)
    : graph_(graph), scope_(scope), walk_(graph, first) {}

NodeId StatementWalk::Next() {
  if (last_ != 0) EnterInside(last_);
  NodeId node = walk_.Next();
  while (node != 0 && !IsVisited(node)) node = walk_.Next();
  CdfgReadRestAhead(graph_, node);
  last_ = walk_.Leaving() ? 0 : node;
  return node;
}

void StatementWalk::EnterInside(NodeId node) {
  const Inside inside = InsideOf(CdfgGetKind(graph_, node), walk_.Tag(), scope_);
  if (inside.attribute == 0) return;
  walk_.Enter(CdfgGetAttr(graph_, node, inside.attribute), inside.tag);
}

bool StatementWalk::IsVisited(NodeId node) const {
  const std::uint32_t kind = CdfgGetKind(graph_, node);
  switch (walk_.Tag()) {
    case kIfParts:
      return IsBranch(kind);
    case kCaseParts:
      return kind == CFG_CASE_ITEM;
    case kLoopParts:
      return CdfgIsLoopPart(kind);
    default:
      return scope_ == StatementScope::Anywhere || !IsPart(kind);
  }
}

bool StatementWalk::AtPart() const { return walk_.Tag() != kStatements; }

NodeId CdfgGetOperationList(const CdfgGraph* graph, NodeId statement) {
  const std::uint32_t kind = CdfgGetKind(graph, statement);
  static_assert(CfgDatapath_OPELIST == 2 && CfgReturn_EXP == 2 && CfgStateIf_CONDOPE == 2);
  static_assert(CfgStateCase_CONDOPE == 2 && CfgLoopCond_CONDOPE == 2);
  static_assert(CfgLoopInit_OPELIST == 2 && CfgLoopStep_OPELIST == 2);
  const bool has_list = kind == CFG_STATE_DATAPATH || kind == CFG_RETURN || kind == CFG_STATE_IF ||
                        CdfgIsCase(kind) || kind == CFG_LOOP_INIT || kind == CFG_LOOP_COND ||
                        kind == CFG_LOOP_STEP;
  return has_list ? CdfgGetAttr(graph, statement, CfgDatapath_OPELIST) : 0;
}

// --- Files and functions -------------------------------------------------------------------------

std::vector<NodeId> CdfgGetFiles(const CdfgGraph* graph) {
  std::vector<NodeId> files;
  const NodeId elements = CdfgGetAttr(graph, CdfgGetRoot(graph), CfgRoot_ELEMENT);
  for (const NodeId node : NextChain(graph, elements)) {
    if (CdfgGetKind(graph, node) == CFG_FILEINFO) files.push_back(node);
  }
  return files;
}

FunctionCursor::FunctionCursor(const CdfgGraph* graph, Test is_wanted)
    : graph_(graph),
      is_wanted_(is_wanted),
      walk_(graph, CdfgGetAttr(graph, CdfgGetRoot(graph), CfgRoot_ELEMENT)) {}

NodeId FunctionCursor::Next() {
  while (const NodeId node = walk_.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph_, node);
    if (walk_.Depth() == 0) {
      if (kind != CFG_FILEINFO) continue;
      file_name_ = CdfgGetAttrStr(graph_, node, CfgFileinfo_NAME);
      walk_.Enter(CdfgGetAttr(graph_, node, CfgFileinfo_ELEMENT));
    } else if (kind == CFG_FUNCTION &&
               is_wanted_(CdfgGetAttrStr(graph_, node, CfgFunc_NAME), file_name_) == 1) {
      return node;
    }
  }
  return 0;
}
