// Folds the array sizes of the variables that main hands to modules: they become the sizes of the
// modules' interfaces, while main itself is no module code and is not folded.
//
//   main() { int a[2 * 8];  f(a); }   with f called as a module   ->   int a[16];
//
// Looked at are the calls in the statements of main, operands of operations included, but not calls
// within the arguments of another call.
#include <cstring>
#include <string>

#include "cdfg/chain.h"
#include "cdfg/directive.h"
#include "cdfg/edit.h"
#include "cdfg/tokens.h"
#include "cdfg/walk.h"
#include "constant/fold.h"
#include "constant/fold_steps.h"

namespace {

int IsMain(const char* name, const char* /*file*/) {
  return name != nullptr && std::strcmp(name, "main") == 0 ? 1 : 0;
}

bool IsModuleCall(const CdfgGraph* graph, NodeId call) {
  std::int32_t unused = 0;
  const NodeId directives = CdfgGetAttr(graph, call, DfgFuncCall_DIRECTIVE);
  const NodeId found = CdfgFindByAttr1(graph, directives, kModuleDirective, &unused);
  const char* text = CdfgGetAttrStr(graph, found, DfgDirective_STR);
  if (text == nullptr) return false;
  std::string lowered = text;
  StrToLower(lowered.data());
  return Tokens(lowered).Next(" ,\t") == "module";
}

void FoldArguments(CdfgGraph* graph, NodeId call) {
  for (const NodeId argument : NextChain(graph, CdfgGetAttr(graph, call, DfgFuncCall_ARGLIST))) {
    const NodeId signal = CdfgGetAttr(graph, argument, DfgPortInfo_SIGNAL);
    const NodeId last = CdfgLastInChain(graph, signal);
    const std::uint32_t kind = CdfgGetKind(graph, last);
    if (kind != DFG_INPUT_VAR && kind != DFG_OUTPUT_VAR) continue;
    ConstFoldDimensions(graph, CdfgGetAttr(graph, last, DfgPort_DECL));
  }
}

void FoldCallsOf(CdfgGraph* graph, NodeId root) {
  ChainWalk walk(graph, root);
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == DFG_OPERATION) {
      walk.EnterOperands(node);
    } else if (kind == DFG_FUNC_CALL && IsModuleCall(graph, node)) {
      FoldArguments(graph, node);
    }
  }
}

void FoldStatement(CdfgGraph* graph, NodeId datapath) {
  const NodeId list = CdfgGetAttr(graph, datapath, CfgDatapath_OPELIST);
  for (const NodeId element : NextChain(graph, list)) {
    FoldCallsOf(graph, CdfgGetAttr(graph, element, DfgOpeman_OPE));
  }
}

}  // namespace

int FoldMainCalls(CdfgGraph* graph) {
  FunctionCursor functions(graph, IsMain);
  while (const NodeId function = functions.Next()) {
    StatementWalk walk(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG));
    while (const NodeId statement = walk.Next()) {
      if (CdfgGetKind(graph, statement) == CFG_STATE_DATAPATH) FoldStatement(graph, statement);
    }
  }
  return 0;
}
