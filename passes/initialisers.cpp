// Turns initialisers into assignments where an initial value would not do: hardware gives a
// variable its initial value once, but a declaration in a loop is executed every time round, and
// the value of another variable is not known beforehand.
//
//   f(int a) {                          f(int a) {
//     int i = a, j = 1;                   int i, j = 1;
//     while (c) {                 ->      i = a;
//       int v[2][2] = {{1, 2}, {3}};      while (c) {
//     }                                     int v[2][2];
//   }                                       v[0][0] = 1; v[0][1] = 2; v[1][0] = 3;
//                                         }
//                                       }
//
// At the top of a function only scalars whose value is not constant are converted, in branches,
// items and loop bodies everything but structures is.
//
// Shape: sizes of arrays are constants (folding has made them so where it could), an initialiser is
// the head of an expression or nested CFG_MEMBER_LISTs of CFG_MEMBERs. Each assignment comes in a
// datapath of its own.
#include "passes/initialisers.h"

#include <cstdio>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/runaway.h"
#include "cdfg/walk.h"
#include "constant/literal.h"
#include "passes/module_list.h"

namespace {

// The statements made from one list of declarations, not placed yet.
struct Pending {
  NodeId head = 0;
  NodeId tail = 0;
};

struct Conversion {
  CdfgGraph* graph;
  NodeId declaration;
  Pending& pending;
};

// Braces of a damaged graph may share their lists, so that the elements double with every level.
// The steps of a pass are bounded; indexes count for more, so that memory is bounded too.
void CountIndex(NodeId declaration) {
  constexpr int kStepsPerIndex = 40;
  for (int i = 0; i < kStepsPerIndex; ++i) CdfgCountStep(declaration);
}

void WarnOfSize(const CdfgGraph* graph, NodeId declaration) {
  const char* file = CdfgGetFileName(graph, declaration);
  const char* name = CdfgGetAttrStr(graph, declaration, CfgDecl_NAME);
  std::printf("kelvo : Warning : Not support array size, %s:%d:%s\n",
              file == nullptr ? "(null)" : file, CdfgGetLine(graph, declaration),
              name == nullptr ? "(null)" : name);
}

// --- One assignment ------------------------------------------------------------------------------

void AppendPending(CdfgGraph* graph, Pending& pending, NodeId statement) {
  if (pending.head == 0) {
    pending.head = statement;
  } else {
    CdfgAppend(graph, pending.tail, statement);
  }
  pending.tail = statement;
}

NodeId MakeTarget(const Conversion& run) {
  CdfgGraph* graph = run.graph;
  const NodeId target = CdfgCreateNode(graph, DFG_OUTPUT_VAR, run.declaration);
  CdfgSetAttrNode(graph, target, DfgPort_DECL, run.declaration);
  CdfgSetAttrStr(graph, target, DfgPort_NAME, CdfgGetAttrStr(graph, run.declaration, CfgDecl_NAME));
  return target;
}

NodeId MakeEdge(const Conversion& run, NodeId target, NodeId value) {
  CdfgGraph* graph = run.graph;
  const NodeId edge = CdfgCreateNode(graph, DFG_EDGE_BLOCKING, run.declaration);
  CdfgLink(graph, target, edge);
  CdfgSetNext(graph, edge, value);
  if (CdfgGetKind(graph, value) != DFG_EDGE_BLOCKING) CdfgSetPrev(graph, value, edge);
  return edge;
}

NodeId MakeStatement(const Conversion& run, NodeId edge) {
  CdfgGraph* graph = run.graph;
  const NodeId operation = CdfgCreateNode(graph, DFG_MANAGE_OPERATION, run.declaration);
  CdfgSetAttrNode(graph, operation, DfgOpeman_OPE, edge);
  const NodeId datapath = CdfgCreateNode(graph, CFG_STATE_DATAPATH, run.declaration);
  CdfgSetAttrNode(graph, datapath, CfgDatapath_OPELIST, operation);
  CdfgSetPrev(graph, operation, datapath);
  return datapath;
}

// Makes the statement that assigns the value to the variable and answers its target.
NodeId Assign(const Conversion& run, NodeId value) {
  const NodeId target = MakeTarget(run);
  const NodeId edge = MakeEdge(run, target, value);
  AppendPending(run.graph, run.pending, MakeStatement(run, edge));
  return target;
}

// --- Arrays --------------------------------------------------------------------------------------

// The sizes of the first dimensions, as many as asked for or as there are. 0 for what is no number.
std::vector<std::int32_t> ReadSizes(const Conversion& run, std::size_t count) {
  const CdfgGraph* graph = run.graph;
  std::vector<std::int32_t> sizes;
  for (const NodeId item : NextChain(graph, CdfgGetAttr(graph, run.declaration, CfgDecl_DIMNODE))) {
    const NodeId size = CdfgLastInChain(graph, CdfgGetAttr(graph, item, DfgDim_NODE));
    if (CdfgGetKind(graph, size) == DFG_INPUT_CONST) {
      sizes.push_back(CdfgGetAttrInt(graph, size, DfgInputCnst_INTVALUE));
    } else {
      WarnOfSize(graph, run.declaration);
      sizes.push_back(0);
    }
    if (sizes.size() == count) break;
  }
  return sizes;
}

// One level of braces and the entry that it has come to.
struct BraceLevel {
  NextChain::Iterator entry;
  std::int32_t position = -1;
};

// The next entry; 0 at the end of the list or of the size. What lies beyond is not looked at.
NodeId NextEntry(BraceLevel& level, std::int32_t size) {
  if (++level.position >= size) return 0;
  if (level.position > 0) ++level.entry;
  return *level.entry;
}

// The entries of a list, the value of a member. Anything else has nothing inside, as far as braces
// are concerned: there, the same attribute is a text or a number.
NodeId InsideOf(const CdfgGraph* graph, NodeId node) {
  static_assert(CfgMemberList_MEMBER == 1 && CfgMember_SIGNAL == 1);
  const std::uint32_t kind = CdfgGetKind(graph, node);
  const bool has_inside = kind == CFG_MEMBER_LIST || kind == CFG_MEMBER;
  return has_inside ? CdfgGetAttr(graph, node, CfgMemberList_MEMBER) : 0;
}

NodeId MakeIndex(const Conversion& run, std::int32_t position) {
  CdfgGraph* graph = run.graph;
  const NodeId index = CdfgCreateNode(graph, DFG_DIMENSION, run.declaration);
  const NodeId number = ConstMake(graph, nullptr, position, kRadixDecimal, 0, index, 1);
  CdfgSetAttrNode(graph, index, DfgDim_NODE, number);
  CdfgSetPrev(graph, number, index);
  return index;
}

void AssignElement(const Conversion& run, const std::vector<BraceLevel>& levels, NodeId value) {
  CdfgGraph* graph = run.graph;
  const NodeId target = Assign(run, value);
  NodeId first = 0;
  NodeId last = 0;
  for (const BraceLevel& level : levels) {
    CountIndex(run.declaration);
    const NodeId index = MakeIndex(run, level.position);
    if (first == 0) first = index;
    CdfgAppend(graph, last, index);
    last = index;
  }
  CdfgSetAttrNode(graph, target, DfgPort_DIMNODE, first);
  CdfgSetAttrInt(graph, target, DfgPort_DIMCNT, static_cast<std::int32_t>(levels.size()));
}

// Walks the braces down to the level of the last index, whose entries are the elements.
void AssignElements(const Conversion& run, NodeId initialiser,
                    const std::vector<std::int32_t>& sizes) {
  const CdfgGraph* graph = run.graph;
  std::vector<BraceLevel> levels;
  DepthGuard guard;
  const auto enter = [&](NodeId node) {
    guard.EnterAt(levels.size(), node);
    levels.push_back({NextChain(graph, InsideOf(graph, node)).begin()});
  };
  enter(initialiser);
  while (!levels.empty()) {
    const NodeId entry = NextEntry(levels.back(), sizes[levels.size() - 1]);
    if (entry == 0) {
      levels.pop_back();
    } else if (levels.size() < sizes.size()) {
      enter(entry);
    } else if (const NodeId value = InsideOf(graph, entry)) {
      AssignElement(run, levels, value);
    }
  }
}

// --- Declarations --------------------------------------------------------------------------------

bool IsStructure(const CdfgGraph* graph, NodeId declaration) {
  return CdfgGetAttrInt(graph, declaration, CfgDecl_VALTYPE) == DECL_VALTYPE_STRUCT;
}

// Structures keep their initialisers.
void Convert(const Conversion& run) {
  CdfgGraph* graph = run.graph;
  if (IsStructure(graph, run.declaration)) return;
  const NodeId initialiser = CdfgGetAttr(graph, run.declaration, CfgDecl_INIT);
  const std::int32_t dimensions = CdfgGetAttrInt(graph, run.declaration, CfgDecl_DIMCNT);
  if (dimensions < 1) {
    Assign(run, initialiser);
  } else {
    const auto wanted = static_cast<std::size_t>(dimensions);
    const std::vector<std::int32_t> sizes = ReadSizes(run, wanted);
    // A dimension that is missing has no elements, so the array has none.
    if (sizes.size() == wanted) AssignElements(run, initialiser, sizes);
  }
  CdfgSetAttrNode(graph, run.declaration, CfgDecl_INIT, 0);
}

bool IsVariable(std::uint32_t kind) {
  return kind == DFG_INPUT_PORT || kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_PORT ||
         kind == DFG_OUTPUT_VAR || kind == DFG_FUNC_CALL;
}

// Only operations are looked into: an index or an argument does not make a value vary that is no
// reference or call itself.
bool HasVariables(const CdfgGraph* graph, NodeId initialiser) {
  bool has_variables = false;
  ChainWalk walk(graph, initialiser);
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (IsVariable(kind)) has_variables = true;
    if (kind != DFG_OPERATION) continue;
    walk.EnterOperands(node);
  }
  return has_variables;
}

// Whether the initialiser of a declaration at the top of a function cannot stay.
bool IsConvertedAtTop(const CdfgGraph* graph, NodeId declaration) {
  return !IsStructure(graph, declaration) &&
         CdfgGetAttrInt(graph, declaration, CfgDecl_DIMCNT) <= 0 &&
         HasVariables(graph, CdfgGetAttr(graph, declaration, CfgDecl_INIT));
}

// Puts the statements at the start of a function, or behind a group of declarations.
void Place(CdfgGraph* graph, NodeId container, const Pending& pending) {
  if (pending.head == 0) return;
  NodeId follower = 0;
  if (CdfgGetKind(graph, container) == CFG_FUNCTION) {
    follower = CdfgGetAttr(graph, container, CfgFunc_STARTCFG);
    // The first statement's prev stays empty: kept.
    CdfgSetAttrNode(graph, container, CfgFunc_STARTCFG, pending.head);
  } else {
    follower = CdfgGetNext(graph, container);
    CdfgLink(graph, container, pending.head);
  }
  CdfgAppend(graph, pending.tail, follower);
}

void ConvertList(CdfgGraph* graph, NodeId container, std::uint32_t attribute, bool is_nested) {
  Pending pending;
  for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, container, attribute))) {
    if (CdfgGetKind(graph, node) != CFG_DECLARE) continue;
    if (CdfgGetAttr(graph, node, CfgDecl_INIT) == 0) continue;
    if (is_nested || IsConvertedAtTop(graph, node)) Convert({graph, node, pending});
  }
  Place(graph, container, pending);
}

}  // namespace

int InitialisersToAssignments(CdfgGraph* graph) {
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) {
    ConvertList(graph, function, CfgFunc_DECLARE, false);
    StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
    while (const NodeId statement = walk.Next()) {
      if (CdfgGetKind(graph, statement) != CFG_DECLARE_DEF) continue;
      ConvertList(graph, statement, CfgDeclDef_DECL, walk.Depth() > 0);
    }
  }
  return 0;
}
