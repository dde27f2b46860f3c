// front_bench: the passes in front of expression division, each on many of what it works on: ten
// times the size in at most eleven times the time.
//
// One item is one of the n things in the name. Each iteration makes a design, runs the one pass and
// looks whether it has done its work.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/benchmark_time.h"
#include "bench/constructs.h"
#include "cdfg/graph.h"
#include "cdfg/name_set.h"
#include "driver/pipeline.h"
#include "passes/function_roll.h"
#include "passes/inout_directives.h"
#include "passes/modify_structure.h"
#include "passes/module_list.h"
#include "passes/rename_locals.h"
#include "passes/statement_to_block.h"

namespace {

using bench::Chain;
using bench::Draft;
using bench::Function;
using bench::Open;

// --- The design ----------------------------------------------------------------------------------

// One file, in which nothing stands yet.
struct Design {
  Draft draft;
  Chain elements;
};

Design MakeDesign() {
  Draft draft{CdfgNewGraph(), bench::IdPattern::Dense, "front.c"};
  const NodeId root = bench::AddNode(draft, CFG_ROOT);
  Chain files{root, CfgRoot_ELEMENT};
  const NodeId file = bench::AddNode(draft, CFG_FILEINFO);
  bench::Append(draft, files, file);
  CdfgSetAttrNode(draft.graph, file, CfgFileinfo_ELEMENT, 0);
  CdfgSetAttrStr(draft.graph, file, CfgFileinfo_NAME, draft.file.c_str());
  return {draft, {file, CfgFileinfo_ELEMENT}};
}

// A function that is a module.
Function OpenModule(Design& design, const char* name) {
  Function module = bench::OpenFunction(design.draft, design.elements, name, DECL_VALTYPE_INT);
  AddModuleFunction(design.draft.graph, module.node, nullptr);
  return module;
}

// Makes the design of a size, runs `pass` on it and asks `has_worked` about the graph, once for
// each iteration; the time is that of the pass.
template <class Make, class HasWorked>
void MeasurePass(benchmark::State& state, Make make, int (*pass)(CdfgGraph*),
                 HasWorked has_worked) {
  for (auto _ : state) {
    NameSetInit();
    Design design = MakeDesign();
    make(design, state.range(0));
    CdfgGraph* graph = design.draft.graph;
    const std::size_t nodes = CdfgNodeCount(graph);
    bench::MeasureOnce(state, [&] { pass(graph); });
    const auto made = static_cast<std::int64_t>(CdfgNodeCount(graph) - nodes);
    if (!has_worked(graph, made, state.range(0))) state.SkipWithError("the work was not done");
    CdfgFreeGraph(graph);
    FreePassState();
  }
  bench::CountItems(state);
}

// --- Loops ---------------------------------------------------------------------------------------

void AddSum(Draft& draft, Chain& body, NodeId sum) {
  bench::Assign(draft, body, bench::Variable(sum),
                bench::Operation(CALC_Add, bench::Variable(sum), bench::Number(1)));
}

// n times while (sum) sum = sum + 1;
void MakeLoops(Design& design, std::int64_t count) {
  Draft& draft = design.draft;
  Function work = OpenModule(design, "work");
  const NodeId sum = bench::Declare(draft, work.declarations, "sum");
  for (std::int64_t i = 0; i < count; ++i) {
    Open loop = bench::OpenWhile(draft, work.body, bench::Variable(sum));
    Chain inside = bench::OpenLoopBody(draft, loop);
    AddSum(draft, inside, sum);
    bench::Close(draft, work.body, loop);
  }
}

// while (sum) while (sum) ... ; nested n deep.
void MakeLoopNest(Design& design, std::int64_t count) {
  Draft& draft = design.draft;
  Function work = OpenModule(design, "work");
  const NodeId sum = bench::Declare(draft, work.declarations, "sum");
  struct Level {
    Open loop;
    Chain around;
  };
  std::vector<Level> levels;
  Chain inside = work.body;
  for (std::int64_t i = 0; i < count; ++i) {
    Open loop = bench::OpenWhile(draft, inside, bench::Variable(sum));
    levels.push_back({loop, inside});
    inside = bench::OpenLoopBody(draft, levels.back().loop);
  }
  AddSum(draft, inside, sum);
  for (; !levels.empty(); levels.pop_back()) {
    bench::Close(draft, levels.back().around, levels.back().loop);
  }
}

// A begin and an end for every loop.
bool AllLoopsHaveBlocks(const CdfgGraph*, std::int64_t made, std::int64_t count) {
  return made == 2 * count;
}

void Loops(benchmark::State& state) {
  MeasurePass(state, MakeLoops, StatementsToBlocks, AllLoopsHaveBlocks);
}

void LoopNest(benchmark::State& state) {
  MeasurePass(state, MakeLoopNest, StatementsToBlocks, AllLoopsHaveBlocks);
}

// --- Structures ----------------------------------------------------------------------------------

// The members of the structure in a definition that `definition` is.
Chain AddStructure(Draft& draft, NodeId definition, const char* tag) {
  const NodeId structure = bench::AddNode(draft, CFG_STRUCT);
  CdfgSetPrev(draft.graph, structure, definition);
  CdfgSetAttrNode(draft.graph, definition, CfgStructDef_STRUCT, structure);
  if (tag != nullptr) CdfgSetAttrStr(draft.graph, structure, CfgStruct_TAGNAME, tag);
  return {structure, CfgStruct_MEMBER};
}

Chain DefineStructure(Design& design, const std::string& tag) {
  const NodeId definition = bench::AddNode(design.draft, CFG_STRUCT_DEF);
  bench::Append(design.draft, design.elements, definition);
  return AddStructure(design.draft, definition, tag.c_str());
}

// A member that is a structure without tag, defined in place: the members of that.
Chain DefineInPlace(Draft& draft, Chain& members) {
  const NodeId member = bench::Declare(draft, members, "part", {DECL_VALTYPE_STRUCT});
  const NodeId definition = bench::AddNode(draft, CFG_STRUCT_DEF);
  CdfgSetPrev(draft.graph, definition, member);
  CdfgSetAttrNode(draft.graph, member, CfgDecl_STRUCTORGNODE, definition);
  return AddStructure(draft, definition, nullptr);
}

void AddNested(Draft& draft, Chain& members) {
  Chain inside = DefineInPlace(draft, members);
  bench::Declare(draft, inside, "value");
}

// n definitions struct s { struct { int value; } part; };
void MakeOneTag(Design& design, std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i) {
    Chain members = DefineStructure(design, "s");
    AddNested(design.draft, members);
  }
}

// The same with n tags.
void MakeTags(Design& design, std::int64_t count) {
  for (std::int64_t i = 0; i < count; ++i) {
    Chain members = DefineStructure(design, "s_" + std::to_string(i));
    AddNested(design.draft, members);
  }
}

// One structure with n structures without tag side by side.
void MakeWideStructure(Design& design, std::int64_t count) {
  Chain members = DefineStructure(design, "s");
  for (std::int64_t i = 0; i < count; ++i) AddNested(design.draft, members);
}

// One structure in which n structures without tag are nested.
void MakeDeepStructure(Design& design, std::int64_t count) {
  Chain members = DefineStructure(design, "s");
  for (std::int64_t i = 0; i < count; ++i) members = DefineInPlace(design.draft, members);
  bench::Declare(design.draft, members, "value");
}

std::int64_t CountElements(const CdfgGraph* graph) {
  const NodeId file = CdfgGetAttr(graph, CdfgGetRoot(graph), CfgRoot_ELEMENT);
  std::int64_t count = 0;
  for (NodeId node = CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT); node != 0;
       node = CdfgGetNext(graph, node)) {
    ++count;
  }
  return count;
}

void StructuresOfOneTag(benchmark::State& state) {
  MeasurePass(state, MakeOneTag, ModifyStructures,
              [](const CdfgGraph* graph, std::int64_t, std::int64_t count) {
                return CountElements(graph) == 2 * count && NameSetContains("__ss_tag_1") == 1 &&
                       NameSetContains("__ss_tag_2") == 0;
              });
}

void StructuresOfManyTags(benchmark::State& state) {
  MeasurePass(state, MakeTags, ModifyStructures,
              [](const CdfgGraph* graph, std::int64_t, std::int64_t count) {
                return CountElements(graph) == 2 * count;
              });
}

bool AllAreHoisted(const CdfgGraph* graph, std::int64_t, std::int64_t count) {
  return CountElements(graph) == count + 1;
}

void WideStructure(benchmark::State& state) {
  MeasurePass(state, MakeWideStructure, ModifyStructures, AllAreHoisted);
}

void DeepStructure(benchmark::State& state) {
  MeasurePass(state, MakeDeepStructure, ModifyStructures, AllAreHoisted);
}

// --- Roll calls ----------------------------------------------------------------------------------

// part(value) { return value; }   work() { n times sum = part(sum), marked roll }
void MakeRollCalls(Design& design, std::int64_t count) {
  Draft& draft = design.draft;
  Function part = bench::OpenFunction(draft, design.elements, "part", DECL_VALTYPE_INT);
  const NodeId value = bench::Declare(draft, part.arguments, "value");
  bench::Return(draft, part.body, bench::Variable(value));
  Function work = OpenModule(design, "work");
  const bench::Term sum = bench::Variable(bench::Declare(draft, work.declarations, "sum"));
  for (std::int64_t i = 0; i < count; ++i) {
    bench::Assign(draft, work.body, sum, bench::Call(part.node, {sum}, "roll"));
  }
}

// The first call keeps the function itself.
void RollCalls(benchmark::State& state) {
  MeasurePass(state, MakeRollCalls, RollFunctions,
              [](const CdfgGraph* graph, std::int64_t, std::int64_t count) {
                return CountElements(graph) == 2 + (count - 1);
              });
}

// --- Names of block locals -----------------------------------------------------------------------

// n times while (sum) { int step; step = sum; }
void MakeBlockLocals(Design& design, std::int64_t count) {
  Draft& draft = design.draft;
  Function work = OpenModule(design, "work");
  const NodeId sum = bench::Declare(draft, work.declarations, "sum");
  for (std::int64_t i = 0; i < count; ++i) {
    Open loop = bench::OpenWhile(draft, work.body, bench::Variable(sum));
    Chain inside = bench::OpenLoopBody(draft, loop);
    const Open block = bench::OpenBlock(draft, inside);
    Chain list = bench::OpenDeclarations(draft, inside);
    const NodeId step = bench::Declare(draft, list, "step");
    bench::Assign(draft, inside, bench::Variable(step), bench::Variable(sum));
    bench::Close(draft, inside, block);
    bench::Close(draft, work.body, loop);
  }
}

// The name of the port that stands last in creation order and is an assignment's target.
std::string LastTarget(const CdfgGraph* graph) {
  std::size_t place = CdfgNodeCount(graph);
  while (place > 0) {
    const NodeId node = CdfgNodeIdAt(graph, --place);
    if (CdfgGetKind(graph, node) == DFG_OUTPUT_VAR)
      return CdfgGetAttrStr(graph, node, DfgPort_NAME);
  }
  return "";
}

// The first block keeps the name, so the last one of n has the number n - 2.
void BlockLocals(benchmark::State& state) {
  MeasurePass(state, MakeBlockLocals, RenameBlockLocals,
              [](const CdfgGraph* graph, std::int64_t, std::int64_t count) {
                char name[32];
                std::snprintf(name, sizeof name, "step%03d", static_cast<int>(count - 2));
                return LastTarget(graph) == name;
              });
}

// --- Directives ----------------------------------------------------------------------------------

// work(struct s) with n members, and n directives that name one each, the last one first.
void MakeDirectives(Design& design, std::int64_t count) {
  Draft& draft = design.draft;
  Chain members = DefineStructure(design, "s");
  for (std::int64_t i = 0; i < count; ++i) {
    bench::Declare(draft, members, "m" + std::to_string(i));
  }
  Function work = OpenModule(design, "work");
  const NodeId variable = bench::Declare(draft, work.arguments, "v", {DECL_VALTYPE_STRUCT});
  CdfgSetAttrNode(draft.graph, variable, CfgDecl_STRUCTNODE, members.owner);
  Chain directives{variable, CfgDecl_DIRECTIVE};
  for (std::int64_t i = count; i > 0; --i) {
    const std::string text = "input : varname = v.m" + std::to_string(i - 1);
    bench::Append(draft, directives, bench::AddDirective(draft, text, variable));
  }
}

void Directives(benchmark::State& state) {
  MeasurePass(
      state, MakeDirectives, DivideInoutDirectives,
      [](const CdfgGraph*, std::int64_t made, std::int64_t count) { return made == count; });
}

// --- The benchmarks ------------------------------------------------------------------------------

void RegisterAll() {
  bench::Register("blocks/n loops side by side", Loops);
  bench::Register("blocks/n loops nested", LoopNest);
  bench::Register("structures/n definitions of one tag", StructuresOfOneTag);
  bench::Register("structures/n definitions, n tags", StructuresOfManyTags);
  bench::Register("structures/one with n structures as members", WideStructure);
  bench::Register("structures/one with n structures nested", DeepStructure);
  bench::Register("roll/n calls of one function", RollCalls);
  bench::Register("locals/n of one name in n blocks", BlockLocals);
  bench::Register("directives/n of one variable with n members", Directives);
}

}  // namespace

int main(int argument_count, char** arguments) {
  RegisterAll();
  return bench::RunBenchmarks(argument_count, arguments);
}
