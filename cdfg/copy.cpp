#include "cdfg/copy.h"

#include <cstdint>
#include <deque>
#include <utility>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/deep.h"
#include "cdfg/edit.h"
#include "cdfg/kinds.h"
#include "cdfg/runaway.h"

int CdfgRemapSwitch = 0;
int CdfgMemberShareSwitch = 0;

namespace {

// One copy may make this many nodes and more for each node of the graph: what is copied once for
// each of several references to it stays below, what doubles with every level does not.
constexpr std::size_t kCopiesPerNode = 8;
constexpr std::size_t kCopiesAtLeast = 16'000'000;

// Made when first used: memory that is short is nobody's to handle before the program begins.
std::deque<DeclarationCopy>& DeclarationCopies() {
  static std::deque<DeclarationCopy> copies;
  return copies;
}

// --- Which references are shared -----------------------------------------------------------------

struct ReferenceRow {
  std::uint32_t kind;
  std::uint32_t attribute;
};

// References that a copy shares with its source although the source owns them.
constexpr ReferenceRow kSharedThoughOwned[] = {
    {CFG_DEFPARAM, CfgDefparam_PARADECL},
    {CFG_FUNCTION, CfgFunc_RETDECL},
    {CFG_DECLARE, CfgDecl_BITMSB},
    {CFG_DECLARE, CfgDecl_QUALITI},
};

bool IsShared(std::uint32_t kind, std::uint32_t attribute) {
  if (kind == CFG_MEMBER && attribute == CfgMember_SIGNAL) return CdfgMemberShareSwitch == 0;
  if (CdfgOwnsReference(kind, attribute) == 0) return true;
  for (const ReferenceRow& row : kSharedThoughOwned) {
    if (row.kind == kind && row.attribute == attribute) return true;
  }
  return false;
}

bool HasMappedJump(std::uint32_t kind) {
  switch (kind) {
    case CFG_STATE_BEGIN:
    case CFG_STATE_END:
    case CFG_STATE_IF:
    case CFG_STATE_ENDIF:
    case CFG_STATE_CASE:
    case CFG_STATE_ENDCASE:
    case CFG_LOOP_BEGIN:
    case CFG_LOOP_END:
    case CFG_STATE_LABEL:
    case CFG_GOTO:
      return true;
    default:
      return false;
  }
}

// --- One copy ------------------------------------------------------------------------------------

struct CopyRun {
  CdfgGraph* graph;
  std::size_t copies_left;
  DepthGuard depth;
  // The copies of nodes whose jumps are mapped, with their sources, in the order of the walk. Each
  // source knows its first copy through its user data until the run is over.
  std::vector<std::pair<NodeId, NodeId>> jumps;
};

Deep<NodeId> CopyChain(CopyRun& run, NodeId first);

Deep<> CopyReference(CopyRun& run, NodeId source, NodeId copy, std::uint32_t attribute) {
  CdfgGraph* graph = run.graph;
  const NodeId target = CdfgGetAttr(graph, source, attribute);
  if (target == 0) co_return;
  const std::uint32_t kind = CdfgGetKind(graph, source);
  if (IsShared(kind, attribute)) {
    CdfgSetAttrNode(graph, copy, attribute, target);
    co_return;
  }
  const NodeId target_copy = co_await CopyChain(run, target);
  CdfgSetAttrNode(graph, copy, attribute, target_copy);
  if (!CdfgIsAssignment(CdfgGetKind(graph, target)) && kind != DFG_MANAGE_OPERATION) {
    CdfgSetPrev(graph, target_copy, copy);
  }
}

Deep<> CopyAttributes(CopyRun& run, NodeId source, NodeId copy) {
  CdfgGraph* graph = run.graph;
  const std::int32_t count = CdfgGetAttrCount(graph, source);
  for (std::int32_t place = 1; place <= count; ++place) {
    const std::uint32_t id = CdfgGetAttrIdAt(graph, source, place);
    switch (CdfgGetAttrTypeAt(graph, source, place)) {
      case ATTR_CHAR:
        CdfgSetAttrChar(graph, copy, id, CdfgGetAttrChar(graph, source, id));
        break;
      case ATTR_INT:
        CdfgSetAttrInt(graph, copy, id, CdfgGetAttrInt(graph, source, id));
        break;
      case ATTR_LONGLONG:
        CdfgSetAttrInt64(graph, copy, id, CdfgGetAttrInt64(graph, source, id));
        break;
      case ATTR_FLOAT:
        CdfgSetAttrDouble(graph, copy, id, CdfgGetAttrDouble(graph, source, id));
        break;
      case ATTR_STRING:
        if (const char* text = CdfgGetAttrStr(graph, source, id)) {
          CdfgSetAttrStr(graph, copy, id, text);
        }
        break;
      case ATTR_NODE:
        co_await CopyReference(run, source, copy, id);
        break;
      default:
        break;
    }
  }
}

// A copy of one node with all that hangs below it, but without its links.
Deep<NodeId> CopyNode(CopyRun& run, NodeId source) {
  if (run.copies_left-- == 0) CdfgStopEndless(source);
  const NodeId copy = CdfgCreateNode(run.graph, CdfgGetKind(run.graph, source), source);
  const DepthScope inside(run.depth, source);
  co_await CopyAttributes(run, source, copy);
  co_return copy;
}

// Copies the nodes that stand in front of an assignment edge, last first, and links the edge's copy
// behind them. The statement that holds the edge ends them.
Deep<bool> CopyTargets(CopyRun& run, NodeId target, NodeId edge_copy) {
  CdfgGraph* graph = run.graph;
  NodeId behind = 0;
  for (const NodeId node : PrevChain(graph, target)) {
    if (CdfgHasNode(graph, node) == 0 || CdfgGetKind(graph, node) == DFG_MANAGE_OPERATION) break;
    const NodeId copy = co_await CopyNode(run, node);
    if (behind == 0) {
      CdfgAppend(graph, copy, edge_copy);
    } else {
      CdfgLink(graph, copy, behind);
    }
    behind = copy;
  }
  co_return behind != 0;
}

void RecordDeclaration(CdfgGraph* graph, NodeId source, NodeId copy) {
  DeclarationCopies().push_back({source, copy});
  CdfgSetUserData(graph, source, &DeclarationCopies().back());
}

void RemapOrigin(CdfgGraph* graph, NodeId declaration) {
  const NodeId origin = CdfgGetAttr(graph, declaration, CfgDecl_STRUCTORGNODE);
  const DeclarationCopy* record = CdfgGetDeclarationCopy(graph, origin);
  if (record == nullptr || record->copy == 0) return;
  CdfgSetAttrNode(graph, declaration, CfgDecl_STRUCTORGNODE, record->copy);
}

// The copy of a node whose jumps are mapped, 0 if it was not copied.
NodeId FirstCopyOf(const CdfgGraph* graph, NodeId source) {
  if (!HasMappedJump(CdfgGetKind(graph, source))) return 0;
  return static_cast<NodeId>(reinterpret_cast<std::uintptr_t>(CdfgGetUserData(graph, source)));
}

void NoteFirstCopy(CdfgGraph* graph, NodeId source, NodeId copy) {
  if (FirstCopyOf(graph, source) != 0) return;
  CdfgSetUserData(graph, source, reinterpret_cast<void*>(static_cast<std::uintptr_t>(copy)));
}

void NoteCopy(CopyRun& run, NodeId source, NodeId copy) {
  CdfgGraph* graph = run.graph;
  const std::uint32_t kind = CdfgGetKind(graph, source);
  if (HasMappedJump(kind)) {
    run.jumps.emplace_back(source, copy);
    NoteFirstCopy(graph, source, copy);
  } else if (kind == DFG_FUNC_CALL) {
    CdfgSetJump(graph, copy, CdfgGetJump(graph, source));
  } else if (CdfgRemapSwitch != 0 && (kind == CFG_STRUCT || kind == CFG_DECLARE)) {
    RecordDeclaration(graph, source, copy);
    if (kind == CFG_DECLARE) RemapOrigin(graph, copy);
  }
}

// Copies a chain and answers the copy of its first node.
Deep<NodeId> CopyChain(CopyRun& run, NodeId first) {
  CdfgGraph* graph = run.graph;
  NodeId first_copy = 0;
  NodeId previous = 0;
  NodeId previous_copy = 0;
  for (const NodeId node : NextChain(graph, first)) {
    if (CdfgHasNode(graph, node) == 0) break;
    const NodeId copy = co_await CopyNode(run, node);
    bool has_targets = false;
    if (CdfgIsAssignment(CdfgGetKind(graph, node)) && CdfgGetPrev(graph, node) != previous) {
      has_targets = co_await CopyTargets(run, CdfgGetPrev(graph, node), copy);
    }
    if (first_copy == 0) {
      first_copy = copy;
    } else if (has_targets) {
      CdfgSetNext(graph, previous_copy, copy);
    } else {
      CdfgAppend(graph, previous_copy, copy);
    }
    NoteCopy(run, node, copy);
    previous = node;
    previous_copy = copy;
  }
  co_return first_copy;
}

void RepointJumps(const CopyRun& run) {
  for (const auto& [source, copy] : run.jumps) {
    const NodeId target = FirstCopyOf(run.graph, CdfgGetJump(run.graph, source));
    if (target != 0) CdfgSetJump(run.graph, copy, target);
  }
  for (const auto& [source, copy] : run.jumps) CdfgSetUserData(run.graph, source, nullptr);
}

// --- Operands ------------------------------------------------------------------------------------

void CopyString(CdfgGraph* graph, NodeId source, NodeId copy, std::uint32_t attribute) {
  CdfgSetAttrStr(graph, copy, attribute, CdfgGetAttrStr(graph, source, attribute));
}

void CopyInts(CdfgGraph* graph, NodeId source, NodeId copy, std::uint32_t from, std::uint32_t to) {
  for (std::uint32_t attribute = from; attribute <= to; ++attribute) {
    CdfgSetAttrInt(graph, copy, attribute, CdfgGetAttrInt(graph, source, attribute));
  }
}

void CopyPortAttributes(CdfgGraph* graph, NodeId source, NodeId copy) {
  CopyString(graph, source, copy, DfgPort_NAME);
  CdfgSetAttrNode(graph, copy, DfgPort_DECL, CdfgGetAttr(graph, source, DfgPort_DECL));
  CopyInts(graph, source, copy, DfgPort_DIMCNT, DfgPort_DIMCNT);
  if (const NodeId indexes = CdfgGetAttr(graph, source, DfgPort_DIMNODE)) {
    CdfgSetAttrNode(graph, copy, DfgPort_DIMNODE, CdfgCopyTree(graph, indexes));
  }
  CopyInts(graph, source, copy, DfgPort_POINTERCNT, DfgPort_CASTPOINTCNT);
}

// Answers whether the operand may have a member behind it.
bool CopyOperandAttributes(CdfgGraph* graph, NodeId source, NodeId copy) {
  switch (CdfgGetKind(graph, source)) {
    case DFG_INPUT_CONST:
      CopyString(graph, source, copy, DfgInputCnst_STRVALUE);
      CopyInts(graph, source, copy, DfgInputCnst_INTVALUE, DfgInputCnst_CASTPOINTCNT);
      return false;
    case DFG_INPUT_STRING:
      CopyString(graph, source, copy, DfgInputStr_STRING);
      return false;
    default:
      CopyPortAttributes(graph, source, copy);
      return true;
  }
}

// Links the copies of a member chain, last pair first: a port is whole, its own member included,
// before it is told its parent.
void LinkMembers(CdfgGraph* graph, const std::vector<NodeId>& copies) {
  for (std::size_t i = copies.size(); i-- > 1;) {
    CdfgSetAttrNode(graph, copies[i - 1], DfgPort_STRSON, copies[i]);
    CdfgSetAttrNode(graph, copies[i], DfgPort_STRPARENT, copies[i - 1]);
  }
}

}  // namespace

NodeId CdfgCopyTree(CdfgGraph* graph, NodeId id) {
  if (CdfgHasNode(graph, id) == 0) return 0;
  CopyRun run{graph, kCopiesAtLeast + kCopiesPerNode * CdfgNodeCount(graph), {}, {}};
  const NodeId copy = RunDeep(CopyChain(run, id));
  RepointJumps(run);
  return copy;
}

NodeId CdfgCopyAlone(CdfgGraph* graph, NodeId id) {
  const NodeId next = CdfgGetNext(graph, id);
  CdfgSetNext(graph, id, 0);
  const NodeId copy = CdfgCopyTree(graph, id);
  CdfgSetNext(graph, id, next);
  return copy;
}

const DeclarationCopy* CdfgGetDeclarationCopy(const CdfgGraph* graph, NodeId source) {
  // The user data of nodes with jumps holds something else while a copy is made.
  if (HasMappedJump(CdfgGetKind(graph, source))) return nullptr;
  return static_cast<const DeclarationCopy*>(CdfgGetUserData(graph, source));
}

void CdfgClearUserTable(CdfgGraph* graph) {
  for (const DeclarationCopy& record : DeclarationCopies()) {
    CdfgSetUserData(graph, record.source, nullptr);
  }
  DeclarationCopies().clear();
}

NodeId CdfgCopyInput(CdfgGraph* graph, NodeId operand) {
  std::vector<NodeId> copies;
  for (const NodeId node : MemberChain(graph, operand)) {
    if (CdfgHasNode(graph, node) == 0) break;
    const NodeId copy = CdfgCreateNode(graph, CdfgGetKind(graph, node), node);
    copies.push_back(copy);
    if (!CopyOperandAttributes(graph, node, copy)) break;
  }
  LinkMembers(graph, copies);
  return copies.empty() ? 0 : copies.front();
}
