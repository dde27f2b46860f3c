#include "driver/pipeline.h"

#include "cdfg/name_set.h"
#include "cdfg/runaway.h"
#include "constant/fold.h"
#include "driver/stop.h"
#include "passes/division_expression.h"
#include "passes/function_roll.h"
#include "passes/initialisers.h"
#include "passes/inout_directives.h"
#include "passes/modify_structure.h"
#include "passes/module_functions.h"
#include "passes/module_list.h"
#include "passes/mul_div.h"
#include "passes/name_table.h"
#include "passes/remake_dfg.h"
#include "passes/rename_locals.h"
#include "passes/split_datapaths.h"
#include "passes/statement_to_block.h"
#include "passes/temporaries.h"

namespace {

// The folding passes stand below the passes and are told what module code is.
int FoldModuleBodies(CdfgGraph* graph) { return FoldBodies(graph, IsModuleFunction); }

constexpr PipelineStep kSteps[] = {
    // Every function that becomes hardware is in the list; prefixed ones call copies of their own.
    {"module-functions", "--- Makeing of module function list's ...", CollectModuleFunctions},
    // Every identifier of the design is in the name set.
    {"name-table", "--- Makeing of name's table ...", CollectNames},
    // Every loop body of module code is a block.
    {"statement-to-block", "--- Statement to block ...", StatementsToBlocks},
    // No structure is defined inside another one.
    {"modify-structure", "--- Modify structure ...", ModifyStructures},
    // Array sizes written as constant expressions are numbers.
    {"fold-declarations", "--- Constant expression ...", FoldDeclarations},
    // Constant expressions in module code, and in the globals that it uses, are constants.
    {"fold-bodies", nullptr, FoldModuleBodies},
    // So are the array sizes of what main hands to modules.
    {"fold-main-calls", nullptr, FoldMainCalls},
    // Initialisers of module code that cannot stay initial values are assignments.
    {"initialisers", nullptr, InitialisersToAssignments},
    // All variables of a module function have names of their own.
    {"rename-locals", nullptr, RenameBlockLocals},
    // Every further roll call of a function calls a copy of its own.
    {"function-roll", "--- Function roll instance ...", RollFunctions},
    // From here every expression of module code is flat.
    {"division-expression", "--- Divison  expression ...", DivideExpressions},
    // One target per assignment, one reference per operand.
    {"remake-dfg", "--- Remake dfg node ...", RemakeDfgNodes},
    // One statement per datapath.
    {"split-datapaths", "--- Manage opration -> Datapath ...", SplitDatapaths},
    // Floating multiplications and divisions read temporaries only.
    {"mul-div", "--- Mul | Div exp -> temporary variable ...", MulDivToTemporaries},
    // Directives of structure variables stand on their members.
    {"inout-directives", "--- Divison inout directive ...", DivideInoutDirectives},
};

}  // namespace

std::span<const PipelineStep> Pipeline() { return kSteps; }

void RunStep(const PipelineStep& step, CdfgGraph* graph) {
  CdfgGrantSteps(graph);
  if (step.run != nullptr) step.run(graph);
  StopIfMemoryIsShort(graph);
}

void FreePassState() {
  NameSetFree();
  FreeModuleFunctions();
  ResetTemporaries();
  ResetStructureTags();
}
