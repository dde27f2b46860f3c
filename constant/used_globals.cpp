// Finds the global variables that module code uses, at the cost of the module code alone.
//
//   int g = 1 + 2, h = 3 + 4;   f() { x = g; }   with f module code   ->   g
//
// Every global declaration gets a record, and its user data points there while the functions are
// walked; so a reference finds the record of what it refers to, and marks it, without a search.
//
// Owns the user data of the global declarations for the length of the walk.
#include "constant/used_globals.h"

#include <cassert>

#include "cdfg/chain.h"
#include "cdfg/chain_scan.h"
#include "cdfg/deep.h"
#include "cdfg/edit.h"
#include "cdfg/kinds.h"
#include "cdfg/runaway.h"

namespace {

struct GlobalRecord {
  NodeId declaration;
  bool is_used = false;
};
using GlobalRecords = std::vector<GlobalRecord>;  // in the order of the design

// --- The records ---------------------------------------------------------------------------------

GlobalRecords CollectGlobals(const CdfgGraph* graph) {
  GlobalRecords records;
  ChainWalk walk(graph, CdfgGetAttr(graph, CdfgGetRoot(graph), CfgRoot_ELEMENT));
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == CFG_FILEINFO) walk.Enter(CdfgGetAttr(graph, node, CfgFileinfo_ELEMENT));
    if (kind != CFG_DECLARE_DEF) continue;
    for (const NodeId declared : NextChain(graph, CdfgGetAttr(graph, node, CfgDeclDef_DECL))) {
      if (CdfgGetKind(graph, declared) == CFG_DECLARE) records.push_back({declared});
    }
  }
  return records;
}

// Attaches each record to its declaration for the length of a scope. Of several records of one
// declaration, which only a damaged graph has, the last one of the design counts.
class AttachedRecords {
 public:
  AttachedRecords(CdfgGraph* graph, GlobalRecords& records) : graph_(graph), records_(records) {
    for (const GlobalRecord& record : records_) {
      assert(CdfgGetUserData(graph_, record.declaration) == nullptr);
      (void)record;
    }
    for (GlobalRecord& record : records_) CdfgSetUserData(graph_, record.declaration, &record);
  }
  ~AttachedRecords() {
    for (const GlobalRecord& record : records_) {
      CdfgSetUserData(graph_, record.declaration, nullptr);
    }
  }
  AttachedRecords(const AttachedRecords&) = delete;
  AttachedRecords& operator=(const AttachedRecords&) = delete;

 private:
  CdfgGraph* graph_;
  GlobalRecords& records_;
};

// The search through the functions.
struct Marking {
  const CdfgGraph* graph;
  std::size_t unmarked;  // how many records there are still to be marked
  ChainScan expression;
  DepthGuard depth = {};

  Marking(const CdfgGraph* of, const GlobalRecords& records)
      : graph(of), unmarked(records.size()), expression(of) {}
};

void MarkPort(Marking& run, NodeId port) {
  if (!CdfgIsPortOrConcat(CdfgGetKind(run.graph, port))) return;
  const NodeId declaration = CdfgGetAttr(run.graph, port, DfgPort_DECL);
  auto* record = static_cast<GlobalRecord*>(CdfgGetUserData(run.graph, declaration));
  if (record == nullptr || record->is_used) return;
  record->is_used = true;
  --run.unmarked;
}

// --- Expressions ---------------------------------------------------------------------------------

// Marks one node and enters what the chain fold enters at it.
void MarkNode(Marking& run, NodeId node) {
  const CdfgGraph* graph = run.graph;
  ChainScan& walk = run.expression;
  const std::uint32_t kind = CdfgGetKind(graph, node);
  if (kind == DFG_OPERATION) {
    walk.EnterOperands(node);
  } else if (kind == DFG_FUNC_CALL) {
    const NodeId arguments = CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST);
    CdfgEnterListed(graph, walk, arguments, DfgPortInfo_SIGNAL);
  } else if (CdfgIsPortOrConcat(kind)) {
    MarkPort(run, node);
    CdfgEnterListed(graph, walk, CdfgGetAttr(graph, node, DfgPort_DIMNODE), DfgDim_NODE);
    walk.Enter(CdfgGetAttr(graph, node, DfgPort_STRSON));
  }
}

void MarkChain(Marking& run, NodeId first) {
  run.expression.Start(first);
  while (const NodeId node = run.expression.Next()) MarkNode(run, node);
}

// In front of an assignment edge the fold enters variables and operations only.
void MarkTarget(Marking& run, NodeId edge) {
  const CdfgGraph* graph = run.graph;
  ChainScan& walk = run.expression;
  walk.Start(CdfgPrevUntilOperation(graph, edge));
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    const bool is_entered =
        kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_VAR || kind == DFG_OPERATION;
    if (walk.Depth() > 0 || is_entered) {
      MarkNode(run, node);
    } else if (node == edge) {
      break;
    } else {
      MarkPort(run, node);
    }
  }
}

// Once nothing is left to be found this is left out: the fold has walked all of it, so that endless
// graphs have been stopped there.
void MarkOperationList(Marking& run, NodeId list) {
  const CdfgGraph* graph = run.graph;
  if (run.unmarked == 0) return;
  for (const NodeId element : NextChain(graph, list)) {
    const NodeId root = CdfgGetAttr(graph, element, DfgOpeman_OPE);
    if (CdfgIsAssignment(CdfgGetKind(graph, root))) MarkTarget(run, root);
    MarkChain(run, root);
  }
}

// --- Declarations --------------------------------------------------------------------------------

// What the tree fold enters: operands that are operations themselves.
Deep<> MarkTree(Marking& run, NodeId expression) {
  MarkPort(run, expression);
  if (CdfgGetKind(run.graph, expression) != DFG_OPERATION) co_return;
  const DepthScope inside(run.depth, expression);
  co_await MarkTree(run, CdfgGetAttr(run.graph, expression, DfgOpe_LEFT));
  co_await MarkTree(run, CdfgGetAttr(run.graph, expression, DfgOpe_RIGHT));
  co_await MarkTree(run, CdfgGetAttr(run.graph, expression, DfgOpe_COND));
}

void MarkDimensions(Marking& run, NodeId declaration) {
  const CdfgGraph* graph = run.graph;
  for (const NodeId item : NextChain(graph, CdfgGetAttr(graph, declaration, CfgDecl_DIMNODE))) {
    RunDeep(MarkTree(run, CdfgGetAttr(graph, item, DfgDim_NODE)));
  }
}

void MarkInitialiser(Marking& run, NodeId declaration) {
  const CdfgGraph* graph = run.graph;
  ChainScan& walk = run.expression;
  walk.Start(CdfgGetAttr(graph, declaration, CfgDecl_INIT));
  while (const NodeId node = walk.Next()) {
    switch (CdfgGetKind(graph, node)) {
      case CFG_MEMBER_LIST:
        walk.Enter(CdfgGetAttr(graph, node, CfgMemberList_MEMBER));
        break;
      case CFG_MEMBER:
        walk.Enter(CdfgGetAttr(graph, node, CfgMember_SIGNAL));
        break;
      default:
        MarkNode(run, node);
        break;
    }
  }
}

void MarkDeclarations(Marking& run, NodeId list) {
  const CdfgGraph* graph = run.graph;
  ChainWalk walk(graph, list);
  while (const NodeId node = walk.Next()) {
    if (CdfgGetKind(graph, node) != CFG_DECLARE) continue;
    MarkDimensions(run, node);
    MarkInitialiser(run, node);
    const NodeId structure = CdfgGetAttr(graph, node, CfgDecl_STRUCTNODE);
    walk.Enter(CdfgGetAttr(graph, structure, CfgStruct_MEMBER));
  }
}

// --- Functions -----------------------------------------------------------------------------------

void MarkFunction(Marking& run, NodeId function) {
  const CdfgGraph* graph = run.graph;
  MarkDeclarations(run, CdfgGetAttr(graph, function, CfgFunc_DECLARE));
  MarkDeclarations(run, CdfgGetAttr(graph, function, CfgFunc_ARGLIST));
  StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
  while (const NodeId statement = walk.Next()) {
    MarkOperationList(run, CdfgGetOperationList(graph, statement));
    if (CdfgGetKind(graph, statement) == CFG_DECLARE_DEF) {
      MarkDeclarations(run, CdfgGetAttr(graph, statement, CfgDeclDef_DECL));
    }
  }
}

}  // namespace

std::vector<NodeId> FindUsedGlobals(CdfgGraph* graph, FunctionCursor::Test is_module_code) {
  GlobalRecords records = CollectGlobals(graph);
  {
    const AttachedRecords attached(graph, records);
    Marking run(graph, records);
    FunctionCursor functions(graph, is_module_code);
    while (const NodeId function = functions.Next()) MarkFunction(run, function);
  }
  std::vector<NodeId> used;
  for (auto record = records.rbegin(); record != records.rend(); ++record) {
    if (record->is_used) used.push_back(record->declaration);
  }
  return used;
}
