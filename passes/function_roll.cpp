// Gives every call marked "roll" a hardware instance of its own.
//
//   m() { g(1); g(2) roll; g(3) roll; }
//   ->  g_roll_0001() {..}  g_roll_0002() {..}  m() { g(1); g_roll_0001(2); g_roll_0002(3); }
//
// A call is marked when the text of its first directive is roll and nothing else. Seen are the
// calls that stand for themselves or as the value of an assignment in a datapath.
//
// Phases:
//   1. count the unmarked calls of each function in module code;
//   2. number the marked calls on from there; from the second use of a function on, a call gets a
//      copy;
//   3. go through the copies as they are made: record each as module code and treat its own marked
//      calls like phase 2.
//
// A copy whose marked calls lead to a further copy of what it is a copy of itself would go on for
// ever; that stops the run.
#include "passes/function_roll.h"

#include <bit>
#include <cstdio>
#include <cstring>
#include <string>

#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/hash_index.h"
#include "cdfg/records.h"
#include "cdfg/runaway.h"
#include "cdfg/walk.h"
#include "passes/function_copy.h"
#include "passes/module_list.h"

namespace {

constexpr std::size_t kNoCopy = static_cast<std::size_t>(-1);

// A copy made for a roll call.
struct RollCopy {
  NodeId copy;
  NodeId base;
  std::size_t container;  // the roll copy whose body holds the call, kNoCopy if none does
  std::size_t depth;      // 1 for a copy without container
  bool base_is_final;     // no call in the base was changed after the copy was made
};

struct Rolling {
  CdfgGraph* graph;
  bool is_counting = true;
  NodeId function = 0;              // whose body is being scanned
  std::size_t container = kNoCopy;  // the same as a roll copy
  IdMap<int> use_counts = {};
  Records<RollCopy> copies = {};
  // The copies by their ids. Most are never asked for, so they are entered when the next question
  // comes.
  HashIndex copies_by_id = {};
  std::size_t entered = 0;
};

bool IsRollCall(const CdfgGraph* graph, NodeId call) {
  const NodeId directive = CdfgGetAttr(graph, call, DfgFuncCall_DIRECTIVE);
  const char* text = CdfgGetAttrStr(graph, directive, DfgDirective_STR);
  return text != nullptr && std::strcmp(text, "roll") == 0;
}

// --- Rolling without end -------------------------------------------------------------------------

// The roll copy that a function is, HashIndex::kNone if it is none.
std::uint32_t FindCopy(Rolling& run, NodeId function) {
  const auto is = [&](NodeId id) {
    return [&run, id](std::uint32_t number) { return run.copies[number].copy == id; };
  };
  for (; run.entered < run.copies.Size(); ++run.entered) {
    const NodeId copy = run.copies[run.entered].copy;
    run.copies_by_id.FindOrAdd(IdHash{}(copy), static_cast<std::uint32_t>(run.entered), is(copy));
  }
  return run.copies_by_id.Find(IdHash{}(function), is(function));
}

// Whether all calls in this function are what they will be: true while copies are gone through, but
// for copies that have not had their turn.
bool IsFinal(Rolling& run, NodeId function) {
  if (run.container == kNoCopy) return false;
  const std::uint32_t copy = FindCopy(run, function);
  return copy == HashIndex::kNone || copy < run.container;
}

// Looks for a copy of `base` among the innermost `most` of the copies around `copy`.
bool IsWithinCopyOf(const Rolling& run, NodeId base, std::size_t copy, std::size_t most) {
  for (; copy != kNoCopy && most > 0; copy = run.copies[copy].container, --most) {
    if (run.copies[copy].base == base && run.copies[copy].base_is_final) return true;
  }
  return false;
}

// A copy of a final function within a copy of it has the same calls as that one, and so leads to
// the next. Far out is only looked at depths of 2, 4, 8, ..., to keep long chains of copies cheap.
void StopIfEndless(Rolling& run, NodeId base) {
  if (!IsFinal(run, base)) return;
  constexpr std::size_t kNear = 64;
  const std::size_t depth = run.copies[run.container].depth;
  const std::size_t most = std::has_single_bit(depth) ? depth : kNear;
  if (IsWithinCopyOf(run, base, run.container, most)) CdfgStopEndless(base);
}

// --- Copies --------------------------------------------------------------------------------------

std::string RollName(const CdfgGraph* graph, NodeId callee, int number) {
  const char* name = CdfgGetAttrStr(graph, callee, CfgFunc_NAME);
  char suffix[32];
  std::snprintf(suffix, sizeof suffix, "_roll_%04d", number);
  return std::string(name == nullptr ? "(null)" : name) + suffix;
}

void InsertInFront(CdfgGraph* graph, NodeId function, NodeId copy) {
  const NodeId prev = CdfgGetPrev(graph, function);
  if (CdfgGetKind(graph, prev) == CFG_FILEINFO) {
    CdfgSetAttrNode(graph, prev, CfgFileinfo_ELEMENT, copy);
  } else {
    CdfgSetNext(graph, prev, copy);
  }
  CdfgSetPrev(graph, copy, prev);
  CdfgLink(graph, copy, function);
}

void RecordCopy(Rolling& run, NodeId copy, NodeId base) {
  const std::size_t depth = run.container == kNoCopy ? 1 : run.copies[run.container].depth + 1;
  run.copies.Add({copy, base, run.container, depth, IsFinal(run, base)});
}

void GiveCopy(Rolling& run, NodeId call, NodeId callee, int number) {
  CdfgGraph* graph = run.graph;
  StopIfEndless(run, callee);
  const NodeId copy = CopyFunction(graph, callee, MemberExpressions::Shared);
  CdfgSetFileName(graph, copy, CdfgGetFileName(graph, call));
  const std::string name = RollName(graph, callee, number);
  CdfgSetAttrStr(graph, copy, CfgFunc_NAME, name.c_str());
  CdfgSetAttrStr(graph, call, DfgFuncCall_NAME, name.c_str());
  CdfgSetJump(graph, call, copy);
  InsertInFront(graph, run.function, copy);
  RecordCopy(run, copy, callee);
}

// --- The scan ------------------------------------------------------------------------------------

void HandleCall(Rolling& run, NodeId call) {
  const NodeId callee = CdfgGetJump(run.graph, call);
  const bool is_marked = IsRollCall(run.graph, call);
  if (callee == run.function || CdfgHasNode(run.graph, callee) == 0) return;
  if (is_marked == run.is_counting) return;
  const int uses = ++run.use_counts[callee];
  if (is_marked && uses >= 2) GiveCopy(run, call, callee, uses - 1);
}

void ScanDatapath(Rolling& run, NodeId datapath) {
  const CdfgGraph* graph = run.graph;
  for (const NodeId operation :
       NextChain(graph, CdfgGetAttr(graph, datapath, CfgDatapath_OPELIST))) {
    if (CdfgGetKind(graph, operation) != DFG_MANAGE_OPERATION) continue;
    for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, operation, DfgOpeman_OPE))) {
      if (CdfgGetKind(graph, node) == DFG_FUNC_CALL) HandleCall(run, node);
    }
  }
}

void ScanFunction(Rolling& run, NodeId function) {
  run.function = function;
  StatementWalk walk(run.graph, CdfgGetAttr(run.graph, function, CfgFunc_STARTCFG));
  while (const NodeId statement = walk.Next()) {
    if (CdfgGetKind(run.graph, statement) == CFG_STATE_DATAPATH) ScanDatapath(run, statement);
  }
}

void ScanModuleCode(Rolling& run) {
  FunctionCursor functions = ModuleCode(run.graph);
  while (const NodeId function = functions.Next()) {
    CdfgSetDeclScope(function);
    ScanFunction(run, function);
  }
}

void ScanCopies(Rolling& run) {
  for (run.container = 0; run.container < run.copies.Size(); ++run.container) {
    const NodeId copy = run.copies[run.container].copy;
    const char* name = CdfgGetAttrStr(run.graph, copy, CfgFunc_NAME);
    const char* file = CdfgGetFileName(run.graph, copy);
    if (name != nullptr && file != nullptr) AddModuleInstance(copy, copy, name, file);
    ScanFunction(run, copy);
  }
}

}  // namespace

int RollFunctions(CdfgGraph* graph) {
  Rolling run{graph};
  ScanModuleCode(run);
  run.is_counting = false;
  ScanModuleCode(run);
  ScanCopies(run);
  return 0;
}
