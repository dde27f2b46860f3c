// Copies of functions and prototypes for modules with a prefix.
//
//   module f with prefix p:  f's body:  g(y);
//   ->  a copy of function g named p_g behind g, and in f's body:  p_g(y);
//
// The graph changes under the walk that looks for calls, so each call is handled where it is met,
// and the walk goes on from what stands there then. In a damaged graph that matters: a call may
// name a statement around itself as what it calls, and new ids may hide nodes that are still ahead.
#include "passes/module_copies.h"

#include <cstddef>
#include <string>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/copy.h"
#include "cdfg/deep.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/runaway.h"
#include "cdfg/walk.h"
#include "passes/function_copy.h"

namespace {

struct Copying {
  CdfgGraph* graph;
  ModuleFunctionRecord* module;
  // What each copy made for this module descends from, and how many copies of each function contain
  // the walk.
  IdMap<NodeId> origins = {};
  IdMap<int> copies_around = {};
};

// A copy within a copy of the same function, this many deep, goes on for ever: designs nest a few.
constexpr int kMostCopiesAround = 64;

Deep<> HandleCall(Copying& run, NodeId call);

// --- The walk ------------------------------------------------------------------------------------

// Answers whether there was a call.
Deep<bool> WalkExpression(Copying& run, NodeId first) {
  const CdfgGraph* graph = run.graph;
  bool has_calls = false;
  ChainWalk walk(graph, first);
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == DFG_FUNC_CALL) {
      has_calls = true;
      co_await HandleCall(run, node);
    }
    EnterForCalls(graph, walk, node, kind);
  }
  co_return has_calls;
}

Deep<> WalkOperations(Copying& run, NodeId list) {
  for (const NodeId operation : NextChain(run.graph, list)) {
    if (CdfgGetKind(run.graph, operation) != DFG_MANAGE_OPERATION) continue;
    co_await WalkExpression(run, CdfgGetAttr(run.graph, operation, DfgOpeman_OPE));
  }
}

// Every node of an initialiser that is no list or member starts an expression walk, and that walk
// goes along next itself: a call behind a reference is handled once for each node in front of it
// too. Kept. Where the first such walk meets no call, the others would not either.
Deep<> WalkInitialiser(Copying& run, NodeId first) {
  const CdfgGraph* graph = run.graph;
  std::vector<bool> has_no_calls(1);  // by chain
  ChainWalk walk(graph, first);
  while (const NodeId node = walk.Next()) {
    const auto chain = static_cast<std::size_t>(walk.Tag());
    switch (CdfgGetKind(graph, node)) {
      case CFG_MEMBER_LIST:
        walk.Enter(CdfgGetAttr(graph, node, CfgMemberList_MEMBER),
                   static_cast<int>(has_no_calls.size()));
        has_no_calls.push_back(false);
        break;
      case CFG_MEMBER:
        co_await WalkExpression(run, CdfgGetAttr(graph, node, CfgMember_SIGNAL));
        break;
      default:
        if (!has_no_calls[chain]) has_no_calls[chain] = !co_await WalkExpression(run, node);
        break;
    }
  }
}

Deep<> WalkDeclarations(Copying& run, NodeId list) {
  for (const NodeId declaration : NextChain(run.graph, list)) {
    if (CdfgGetKind(run.graph, declaration) != CFG_DECLARE) continue;
    co_await WalkInitialiser(run, CdfgGetAttr(run.graph, declaration, CfgDecl_INIT));
  }
}

Deep<> WalkFunction(Copying& run, NodeId function) {
  const CdfgGraph* graph = run.graph;
  StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
  while (const NodeId statement = walk.Next()) {
    if (CdfgGetKind(graph, statement) == CFG_DECLARE_DEF) {
      co_await WalkDeclarations(run, CdfgGetAttr(graph, statement, CfgDeclDef_DECL));
    } else if (const NodeId list = CdfgGetOperationList(graph, statement)) {
      co_await WalkOperations(run, list);
    }
  }
  co_await WalkDeclarations(run, CdfgGetAttr(graph, function, CfgFunc_DECLARE));
}

// --- Copies of functions -------------------------------------------------------------------------

// Links `copy` into the chain directly behind `original`.
void SpliceBehind(CdfgGraph* graph, NodeId original, NodeId copy) {
  const NodeId next = CdfgGetNext(graph, original);
  CdfgLink(graph, original, copy);
  CdfgAppend(graph, copy, next);
}

NodeId OriginOf(const Copying& run, NodeId function) {
  const auto found = run.origins.find(function);
  return found == run.origins.end() ? function : found->second;
}

Deep<ModuleInstanceRecord*> CopyForModule(Copying& run, NodeId callee, const char* name,
                                          const char* file) {
  // Initialiser expressions are copied too: the copy is to be elaborated on its own.
  const NodeId copy = CopyFunction(run.graph, callee, MemberExpressions::Copied);
  CdfgSetAttrStr(run.graph, copy, CfgFunc_NAME, name);
  SpliceBehind(run.graph, callee, copy);
  ModuleInstanceRecord* record = PushModuleInstance(run.module, copy, callee, name, file);
  const NodeId origin = OriginOf(run, callee);
  run.origins[copy] = origin;
  if (++run.copies_around[origin] > kMostCopiesAround) CdfgStopEndless(callee);
  co_await WalkFunction(run, copy);
  --run.copies_around[origin];
  co_return record;
}

// How a name shows where there is none.
std::string Shown(const char* name) { return name == nullptr ? "(null)" : name; }

Deep<> UseCopy(Copying& run, NodeId call, NodeId callee) {
  CdfgGraph* graph = run.graph;
  const std::string name =
      Shown(run.module->prefix) + "_" + Shown(CdfgGetAttrStr(graph, callee, CfgFunc_NAME));
  const char* file = CdfgGetFileName(graph, callee);
  ModuleInstanceRecord* record = FindModuleInstance(run.module, callee, name.c_str(), file);
  if (record == nullptr) {
    const ModuleInstanceRecord* shared = FindModuleInstance(nullptr, callee, name.c_str(), file);
    record = shared == nullptr
                 ? co_await CopyForModule(run, callee, name.c_str(), file)
                 : PushModuleInstance(run.module, shared->function, callee, name.c_str(), file);
  }
  CdfgSetAttrStr(graph, call, DfgFuncCall_NAME, record->name);
  CdfgSetJump(graph, call, record->function);
}

Deep<> HandleCall(Copying& run, NodeId call) {
  const NodeId callee = CdfgGetJump(run.graph, call);
  if (CdfgHasNode(run.graph, callee) != 0) co_await UseCopy(run, call, callee);
}

// --- Copies of prototypes ------------------------------------------------------------------------

// The copied functions by the name of what they are copies of, each name's in list order.
using CopiesByName = TextMap<std::vector<const ModuleInstanceRecord*>>;

CopiesByName CollectCopies(const CdfgGraph* graph) {
  CopiesByName copies;
  for (const ModuleFunctionRecord* module = ModuleFunctionList; module != nullptr;
       module = module->next) {
    for (const ModuleInstanceRecord* instance = module->instances; instance != nullptr;
         instance = instance->next) {
      const char* name = CdfgGetAttrStr(graph, instance->base, CfgFunc_NAME);
      const bool is_copy = instance->function != instance->base;
      if (!is_copy || name == nullptr || CdfgGetFileName(graph, instance->base) == nullptr)
        continue;
      copies[name].push_back(instance);
    }
  }
  return copies;
}

void CopyPrototype(CdfgGraph* graph, NodeId prototype, const CopiesByName& copies) {
  const char* name = CdfgGetAttrStr(graph, prototype, CfgFunc_NAME);
  if (name == nullptr) return;
  const auto found = copies.find(name);
  if (found == copies.end()) return;
  for (const ModuleInstanceRecord* instance : found->second) {
    const NodeId copy = CdfgCopyAlone(graph, prototype);
    CdfgSetAttrStr(graph, copy, CfgFunc_NAME, instance->name);
    SpliceBehind(graph, prototype, copy);
  }
}

// A copy stands behind its prototype and so is met again, with its own name.
void CopyListedPrototypes(CdfgGraph* graph, NodeId list, const CopiesByName& copies) {
  for (const NodeId node : NextChain(graph, list)) {
    if (CdfgGetKind(graph, node) == CFG_PROTO_FUNC) CopyPrototype(graph, node, copies);
  }
}

void CopyPrototypesOf(CdfgGraph* graph, NodeId elements, const CopiesByName& copies) {
  StatementWalk walk(graph, elements, StatementScope::Elements);
  walk.WithLeaves();
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == CFG_FUNCTION && walk.Leaving()) {
      CopyListedPrototypes(graph, CdfgGetAttr(graph, node, CfgFunc_DECLARE), copies);
    } else if (kind == CFG_DECLARE_DEF) {
      CopyListedPrototypes(graph, CdfgGetAttr(graph, node, CfgDeclDef_DECL), copies);
    } else if (kind == CFG_PROTO_FUNC && walk.Depth() == 0) {
      // Of a prototype outside any group its body is looked at, not the prototype: kept.
      CopyPrototype(graph, CdfgGetAttr(graph, node, CfgFunc_STARTCFG), copies);
    }
  }
}

}  // namespace

void CopyUsedFunctions(CdfgGraph* graph, ModuleFunctionRecord* module) {
  Copying run{graph, module};
  RunDeep(WalkFunction(run, module->function));
}

void CopyPrototypes(CdfgGraph* graph) {
  const CopiesByName copies = CollectCopies(graph);
  for (const NodeId file : CdfgGetFiles(graph)) {
    CopyPrototypesOf(graph, CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT), copies);
  }
}
