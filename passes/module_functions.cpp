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
//   2. every module, newest first: record each function it calls and look through that in turn; for
//      a prefixed module these are copies (passes/module_copies.h);
//   3. every prototype: copy it for each copied function of its name.
//
// Leaves behind the module function list; the table of copied declarations is in use only while
// one function is copied.
#include "passes/module_functions.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/chain_scan.h"
#include "cdfg/deep.h"
#include "cdfg/directive.h"
#include "cdfg/hash.h"
#include "cdfg/tokens.h"
#include "cdfg/walk.h"
#include "passes/module_copies.h"
#include "passes/module_list.h"

namespace {

// An initialiser of whose inside only a part was looked at, and which calls were found there.
struct HalfSeen {
  NodeId initialiser;
  std::size_t first;  // in the list of calls
  std::size_t last;   // behind the range
};

// Calls that were found in a row.
struct FoundCalls {
  std::vector<NodeId> calls = {};
  std::vector<HalfSeen> half_seen = {};
};

// How much had been found at some time.
struct FoundSize {
  std::size_t calls;
  std::size_t half_seen;
};

struct FoundRange {
  FoundSize first;
  FoundSize last;  // behind the range
};

FoundSize SizeOf(const FoundCalls& found) { return {found.calls.size(), found.half_seen.size()}; }

struct Collecting {
  CdfgGraph* graph;
  ModuleFunctionRecord* module = nullptr;  // null in phase 1
  // The calls of the design as phase 1 found them, and those in the body of each function.
  FoundCalls found = {};
  IdMap<FoundRange> found_in = {};
  // Phase 2, modules without prefix: the functions that each function calls, in order, each once.
  // Nothing is changed for such a module, so a function's calls are looked for once for all of
  // them.
  IdMap<std::vector<NodeId>> callees = {};
};

// --- Calls ---------------------------------------------------------------------------------------

// What is looked for in an initialiser beside its members.
enum class Values : std::uint8_t { Nothing, Calls };

struct CallSearch {
  const CdfgGraph* graph;
  Values values;
  FoundCalls& found;  // where they go, in the order in which they are met
  ChainScan expression;

  CallSearch(const CdfgGraph* of, Values in, FoundCalls& to)
      : graph(of), values(in), found(to), expression(of) {}
};

void FindInExpression(CallSearch& search, NodeId first) {
  const CdfgGraph* graph = search.graph;
  ChainScan& walk = search.expression;
  walk.Start(first);
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == DFG_FUNC_CALL) search.found.calls.push_back(node);
    EnterForCalls(graph, walk, node, kind);
  }
}

void FindInOperations(CallSearch& search, NodeId list) {
  for (const NodeId operation : NextChain(search.graph, list)) {
    if (CdfgGetKind(search.graph, operation) != DFG_MANAGE_OPERATION) continue;
    FindInExpression(search, CdfgGetAttr(search.graph, operation, DfgOpeman_OPE));
  }
}

// The first node of an initialiser's chain that is no list or member starts an expression walk,
// which goes along next itself and so finds what the others would.
void FindInInitialiser(CallSearch& search, NodeId first) {
  const CdfgGraph* graph = search.graph;
  const std::vector<NodeId>& calls = search.found.calls;
  const std::size_t count_before = calls.size();
  bool is_half_seen = false;
  std::vector<bool> is_done(1);  // by chain
  ChainWalk walk(graph, first);
  while (const NodeId node = walk.Next()) {
    const auto chain = static_cast<std::size_t>(walk.Tag());
    switch (CdfgGetKind(graph, node)) {
      case CFG_MEMBER_LIST:
        walk.Enter(CdfgGetAttr(graph, node, CfgMemberList_MEMBER),
                   static_cast<int>(is_done.size()));
        is_done.push_back(false);
        break;
      case CFG_MEMBER:
        FindInExpression(search, CdfgGetAttr(graph, node, CfgMember_SIGNAL));
        break;
      default:
        if (is_done[chain]) break;
        if (search.values == Values::Nothing) {
          is_half_seen = true;
          break;
        }
        FindInExpression(search, node);
        is_done[chain] = true;
        break;
    }
  }
  if (is_half_seen) search.found.half_seen.push_back({first, count_before, calls.size()});
}

void FindInDeclarations(CallSearch& search, NodeId list) {
  const CdfgGraph* graph = search.graph;
  for (const NodeId declaration : NextChain(graph, list)) {
    if (CdfgGetKind(graph, declaration) != CFG_DECLARE) continue;
    const NodeId initialiser = CdfgGetAttr(graph, declaration, CfgDecl_INIT);
    if (initialiser != 0) FindInInitialiser(search, initialiser);
  }
}

void FindInStatement(CallSearch& search, NodeId statement) {
  const CdfgGraph* graph = search.graph;
  if (CdfgGetKind(graph, statement) == CFG_DECLARE_DEF) {
    FindInDeclarations(search, CdfgGetAttr(graph, statement, CfgDeclDef_DECL));
  } else {
    FindInOperations(search, CdfgGetOperationList(graph, statement));
  }
}

void FindInBody(CallSearch& search, NodeId function) {
  StatementWalk walk(search.graph, CdfgGetAttr(search.graph, function, CfgFunc_STARTCFG));
  while (const NodeId statement = walk.Next()) FindInStatement(search, statement);
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

// Looks through the elements of a file. Which calls stand in the body of a function is kept for
// phase 2, unless another function stands in there, which is none of its body.
void FindInElements(Collecting& run, CallSearch& search, NodeId elements) {
  const CdfgGraph* graph = run.graph;
  NodeId function = 0;  // the one whose body is looked through
  FoundSize before{};
  const auto keep_found = [&] {
    if (function != 0) run.found_in.try_emplace(function, FoundRange{before, SizeOf(run.found)});
    function = 0;
  };
  StatementWalk walk(graph, elements, StatementScope::Elements);
  while (const NodeId statement = walk.Next()) {
    const bool is_element = walk.Depth() == 0;
    if (is_element) keep_found();
    if (CdfgGetKind(graph, statement) == CFG_FUNCTION) {
      FindInDeclarations(search, CdfgGetAttr(graph, statement, CfgFunc_DECLARE));
      function = is_element ? statement : 0;
      before = SizeOf(run.found);
    } else {
      FindInStatement(search, statement);
    }
  }
  keep_found();
}

// --- Phase 2: what each module uses --------------------------------------------------------------

// Finds once more what phase 1 found, and now all of the initialisers.
void FindAgain(CallSearch& search, const FoundCalls& found, const FoundRange& range) {
  const auto take_calls = [&](std::size_t first, std::size_t last) {
    const auto begin = found.calls.begin();
    search.found.calls.insert(search.found.calls.end(), begin + static_cast<std::ptrdiff_t>(first),
                              begin + static_cast<std::ptrdiff_t>(last));
  };
  std::size_t next = range.first.calls;
  for (std::size_t i = range.first.half_seen; i < range.last.half_seen; ++i) {
    const HalfSeen& half_seen = found.half_seen[i];
    take_calls(next, half_seen.first);
    FindInInitialiser(search, half_seen.initialiser);
    next = half_seen.last;
  }
  take_calls(next, range.last.calls);
}

// The calls of a function, those of its statements first.
std::vector<NodeId> CallsOf(const Collecting& run, NodeId function) {
  FoundCalls found;
  CallSearch search(run.graph, Values::Calls, found);
  const auto known = run.found_in.find(function);
  if (known == run.found_in.end()) {
    FindInBody(search, function);
  } else {
    FindAgain(search, run.found, known->second);
  }
  FindInDeclarations(search, CdfgGetAttr(run.graph, function, CfgFunc_DECLARE));
  return std::move(found.calls);
}

// The functions that a function calls, each where it is first called.
std::vector<NodeId> FindCallees(Collecting& run, NodeId function) {
  const auto [entry, is_new] = run.callees.try_emplace(function);
  if (!is_new) return entry->second;
  IdSet met;
  for (const NodeId call : CallsOf(run, function)) {
    const NodeId callee = CdfgGetJump(run.graph, call);
    if (CdfgHasNode(run.graph, callee) == 0 || !met.insert(callee).second) continue;
    entry->second.push_back(callee);
  }
  return entry->second;
}

// Records what a function calls, and what that calls in turn, as used by a module without prefix.
Deep<> UseCallees(Collecting& run, NodeId function) {
  for (const NodeId callee : FindCallees(run, function)) {
    const char* name = CdfgGetAttrStr(run.graph, callee, CfgFunc_NAME);
    const char* file = CdfgGetFileName(run.graph, callee);
    if (FindModuleInstance(run.module, callee, name, file) != nullptr) continue;
    PushModuleInstance(run.module, callee, callee, name, file);
    co_await UseCallees(run, callee);
  }
}

// --- The phases ----------------------------------------------------------------------------------

void RunPhase1(Collecting& run) {
  CallSearch search(run.graph, Values::Nothing, run.found);
  for (const NodeId file : CdfgGetFiles(run.graph)) {
    FindInElements(run, search, CdfgGetAttr(run.graph, file, CfgFileinfo_ELEMENT));
  }
  for (const NodeId call : run.found.calls) RecordMarkedCallee(run.graph, call);
}

void RunPhase2(Collecting& run) {
  for (run.module = ModuleFunctionList; run.module != nullptr; run.module = run.module->next) {
    if (run.module->prefix == nullptr) {
      RunDeep(UseCallees(run, run.module->function));
      continue;
    }
    CopyUsedFunctions(run.graph, run.module);
    run.callees.clear();  // calls are redirected now
    run.found_in.clear();
  }
}

}  // namespace

int CollectModuleFunctions(CdfgGraph* graph) {
  Collecting run{graph};
  RunPhase1(run);
  RunPhase2(run);
  CopyPrototypes(graph);
  return 0;
}
