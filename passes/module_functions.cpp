// Finds the functions that become hardware modules, and what each of them uses.
//
// A call site marks the function that it calls with a directive: the word module, and optionally a
// prefix for the names of all that the module uses. From here on only the functions in the module
// function list are rewritten by most passes, so the list must hold whatever a module reaches.
//
//   f(x);  directive "module prefix=p"        f's body:  g(y);
//   ->  a record of f with prefix p, an instance p_g of g,
//       a copy of function g named p_g behind g, and in f's body:  p_g(y);
//
// Phases:
//   1. every call of the design: record the functions marked as modules;
//   2. every module, newest first: walk its body; record each function it calls, for a prefixed
//      module as a copy, and walk that function (the copy) in turn;
//   3. every prototype: copy it for each copied function of its name.
//
// Leaves behind the module function list; the table of copied declarations is in use only while
// one function is copied.
#include "passes/module_functions.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/copy.h"
#include "cdfg/deep.h"
#include "cdfg/directive.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/runaway.h"
#include "cdfg/tokens.h"
#include "cdfg/walk.h"
#include "passes/function_copy.h"
#include "passes/module_list.h"

namespace {

struct Collecting {
  CdfgGraph* graph;
  ModuleFunctionRecord* module;  // null in phase 1
  // Phase 2, prefixed modules: what each copy made for this module descends from, and how many
  // copies of each function contain the walk.
  IdMap<NodeId> origins = {};
  IdMap<int> copies_around = {};
  // Phase 2, other modules: the functions that each function calls, in order, each once. Nothing
  // is changed for such a module, so a function's calls are looked for once for all of them.
  IdMap<std::vector<NodeId>> callees = {};
  std::vector<NodeId>* found = nullptr;  // where the callees of the function at hand go
};

// A copy within a copy of the same function, this many deep, goes on for ever: designs nest a few.
constexpr int kMostCopiesAround = 64;

Deep<> HandleCall(Collecting& run, NodeId call);

// --- The walk of phases 1 and 2 ------------------------------------------------------------------

void EnterIndexes(const CdfgGraph* graph, ChainWalk& walk, NodeId port) {
  for (const NodeId index : NextChain(graph, CdfgGetAttr(graph, port, DfgPort_DIMNODE))) {
    walk.Enter(CdfgGetAttr(graph, index, DfgDim_NODE));
  }
}

void EnterArguments(const CdfgGraph* graph, ChainWalk& walk, NodeId call) {
  for (const NodeId info : NextChain(graph, CdfgGetAttr(graph, call, DfgFuncCall_ARGLIST))) {
    walk.Enter(CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL));
  }
}

// Answers whether there was a call that a second walk would not find handled.
Deep<bool> WalkExpression(Collecting& run, NodeId first) {
  const CdfgGraph* graph = run.graph;
  bool has_calls = false;
  ChainWalk walk(graph, first);
  while (const NodeId node = walk.Next()) {
    switch (CdfgGetKind(graph, node)) {
      case DFG_OPERATION:
        walk.EnterOperands(node);
        break;
      case DFG_INPUT_VAR:
      case DFG_OUTPUT_VAR:
        EnterIndexes(graph, walk, node);
        break;
      case DFG_FUNC_CALL:
        has_calls = run.found == nullptr;
        co_await HandleCall(run, node);
        EnterArguments(graph, walk, node);
        break;
      default:
        break;
    }
  }
  co_return has_calls;
}

Deep<> WalkOperations(Collecting& run, NodeId list) {
  for (const NodeId operation : NextChain(run.graph, list)) {
    if (CdfgGetKind(run.graph, operation) != DFG_MANAGE_OPERATION) continue;
    co_await WalkExpression(run, CdfgGetAttr(run.graph, operation, DfgOpeman_OPE));
  }
}

// In phase 2 every node of an initialiser that is no list or member starts an expression walk, and
// that walk goes along next itself: a call behind a reference is handled once for each node in
// front of it too. Kept. Where the first such walk meets no call, the others would not either.
Deep<> WalkInitialiser(Collecting& run, NodeId first) {
  const CdfgGraph* graph = run.graph;
  std::vector<bool> has_no_calls(1);  // by chain
  ChainWalk walk(graph, first);
  while (const NodeId node = walk.Next()) {
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
        if (run.module == nullptr) break;
        if (has_no_calls[static_cast<std::size_t>(walk.Tag())]) break;
        has_no_calls[static_cast<std::size_t>(walk.Tag())] = !co_await WalkExpression(run, node);
        break;
    }
  }
}

Deep<> WalkDeclarations(Collecting& run, NodeId list) {
  for (const NodeId declaration : NextChain(run.graph, list)) {
    if (CdfgGetKind(run.graph, declaration) != CFG_DECLARE) continue;
    co_await WalkInitialiser(run, CdfgGetAttr(run.graph, declaration, CfgDecl_INIT));
  }
}

Deep<> WalkStatements(Collecting& run, NodeId first, StatementScope scope) {
  const CdfgGraph* graph = run.graph;
  StatementWalk walk(graph, first, scope);
  while (const NodeId statement = walk.Next()) {
    switch (CdfgGetKind(graph, statement)) {
      case CFG_FUNCTION:
        if (scope == StatementScope::Elements) {
          co_await WalkDeclarations(run, CdfgGetAttr(graph, statement, CfgFunc_DECLARE));
        }
        break;
      case CFG_DECLARE_DEF:
        co_await WalkDeclarations(run, CdfgGetAttr(graph, statement, CfgDeclDef_DECL));
        break;
      default:
        if (const NodeId list = CdfgGetOperationList(graph, statement)) {
          co_await WalkOperations(run, list);
        }
        break;
    }
  }
}

// --- Phase 1: which functions are modules --------------------------------------------------------

// The text of the call's module directive, null if it has none.
const char* ModuleDirective(const CdfgGraph* graph, NodeId call) {
  const NodeId directive =
      CdfgFindDirective(graph, CdfgGetAttr(graph, call, DfgFuncCall_DIRECTIVE), kModuleDirective);
  return CdfgGetAttrStr(graph, directive, DfgDirective_STR);
}

void RecordMarkedCallee(const CdfgGraph* graph, NodeId call) {
  const NodeId callee = CdfgGetJump(graph, call);
  const char* text = callee == 0 ? nullptr : ModuleDirective(graph, call);
  if (text == nullptr) return;
  Tokens tokens(text);
  if (tokens.Next(" \t,") != "module") return;
  constexpr std::string_view kDelimiters = " =:\t,";
  std::string prefix;
  if (tokens.Next(kDelimiters) == "prefix") prefix = tokens.Next(kDelimiters);
  AddModuleFunction(graph, callee, prefix.empty() ? nullptr : prefix.c_str());
}

// --- Phase 2: what each module uses --------------------------------------------------------------

Deep<> WalkFunction(Collecting& run, NodeId function) {
  const CdfgGraph* graph = run.graph;
  co_await WalkStatements(run, CdfgGetAttr(graph, function, CfgFunc_STARTCFG),
                          StatementScope::Body);
  co_await WalkDeclarations(run, CdfgGetAttr(graph, function, CfgFunc_DECLARE));
}

// Links `copy` into the chain directly behind `original`.
void SpliceBehind(CdfgGraph* graph, NodeId original, NodeId copy) {
  const NodeId next = CdfgGetNext(graph, original);
  CdfgLink(graph, original, copy);
  CdfgAppend(graph, copy, next);
}

NodeId OriginOf(const Collecting& run, NodeId function) {
  const auto found = run.origins.find(function);
  return found == run.origins.end() ? function : found->second;
}

Deep<ModuleInstanceRecord*> CopyForModule(Collecting& run, NodeId callee, const char* name,
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

Deep<> UseCopy(Collecting& run, NodeId call, NodeId callee) {
  CdfgGraph* graph = run.graph;
  const std::string name =
      Shown(run.module->prefix.get()) + "_" + Shown(CdfgGetAttrStr(graph, callee, CfgFunc_NAME));
  const char* file = CdfgGetFileName(graph, callee);
  ModuleInstanceRecord* record = FindModuleInstance(run.module, callee, name.c_str(), file);
  if (record == nullptr) {
    const ModuleInstanceRecord* shared = FindModuleInstance(nullptr, callee, name.c_str(), file);
    record = shared == nullptr
                 ? co_await CopyForModule(run, callee, name.c_str(), file)
                 : PushModuleInstance(run.module, shared->function, callee, name.c_str(), file);
  }
  CdfgSetAttrStr(graph, call, DfgFuncCall_NAME, record->name.get());
  CdfgSetJump(graph, call, record->function);
}

// The functions that a function calls, each where it is first called.
Deep<std::vector<NodeId>> FindCallees(Collecting& run, NodeId function) {
  const auto known = run.callees.find(function);
  if (known != run.callees.end()) co_return known->second;
  std::vector<NodeId> found;
  run.found = &found;
  co_await WalkFunction(run, function);
  run.found = nullptr;
  IdSet met;
  std::erase_if(found, [&](NodeId callee) { return !met.insert(callee).second; });
  run.callees.emplace(function, found);
  co_return found;
}

// Records what a function calls, and what that calls in turn, as used by a module without prefix.
Deep<> UseCallees(Collecting& run, NodeId function) {
  for (const NodeId callee : co_await FindCallees(run, function)) {
    const char* name = CdfgGetAttrStr(run.graph, callee, CfgFunc_NAME);
    const char* file = CdfgGetFileName(run.graph, callee);
    if (FindModuleInstance(run.module, callee, name, file) != nullptr) continue;
    PushModuleInstance(run.module, callee, callee, name, file);
    co_await UseCallees(run, callee);
  }
}

Deep<> HandleCall(Collecting& run, NodeId call) {
  if (run.module == nullptr) {
    RecordMarkedCallee(run.graph, call);
    co_return;
  }
  const NodeId callee = CdfgGetJump(run.graph, call);
  if (CdfgHasNode(run.graph, callee) == 0) co_return;
  if (run.found != nullptr) {
    run.found->push_back(callee);
  } else {
    co_await UseCopy(run, call, callee);
  }
}

// --- Phase 3: prototypes of copies ---------------------------------------------------------------

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
    CdfgSetAttrStr(graph, copy, CfgFunc_NAME, instance->name.get());
    SpliceBehind(graph, prototype, copy);
  }
}

// A copy stands behind its prototype and so is met again, with its own name.
void CopyListedPrototypes(CdfgGraph* graph, NodeId list, const CopiesByName& copies) {
  for (const NodeId node : NextChain(graph, list)) {
    if (CdfgGetKind(graph, node) == CFG_PROTO_FUNC) CopyPrototype(graph, node, copies);
  }
}

void CopyPrototypes(CdfgGraph* graph, NodeId elements, const CopiesByName& copies) {
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

// --- The phases ----------------------------------------------------------------------------------

Deep<> RunPhase1(Collecting& run) {
  for (const NodeId file : CdfgGetFiles(run.graph)) {
    co_await WalkStatements(run, CdfgGetAttr(run.graph, file, CfgFileinfo_ELEMENT),
                            StatementScope::Elements);
  }
}

Deep<> RunPhase2(Collecting& run) {
  for (run.module = ModuleFunctionList; run.module != nullptr; run.module = run.module->next) {
    if (run.module->prefix == nullptr) {
      co_await UseCallees(run, run.module->function);
    } else {
      run.origins.clear();
      run.callees.clear();  // calls are redirected now
      co_await WalkFunction(run, run.module->function);
    }
  }
}

void RunPhase3(CdfgGraph* graph) {
  const CopiesByName copies = CollectCopies(graph);
  for (const NodeId file : CdfgGetFiles(graph)) {
    CopyPrototypes(graph, CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT), copies);
  }
}

}  // namespace

int CollectModuleFunctions(CdfgGraph* graph) {
  Collecting run{graph, nullptr};
  RunDeep(RunPhase1(run));
  RunDeep(RunPhase2(run));
  RunPhase3(graph);
  return 0;
}
