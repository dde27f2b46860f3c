// fold_bench: folding, typing and the search for used globals visit every node a bounded number of
// times, however expressions nest: ten times the size in at most eleven times the time.
//
// One item is one operation, edge or cast; for the used globals, one function with one global.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "bench/benchmark_time.h"
#include "bench/constructs.h"
#include "cdfg/chain.h"
#include "cdfg/graph.h"
#include "constant/expr_type.h"
#include "constant/fold.h"
#include "constant/used_globals.h"

namespace {

using bench::Chain;
using bench::CountItems;
using bench::Draft;
using bench::MeasureOnce;
using bench::Term;

int EveryFunction(const char*, const char*) { return 1; }

// --- The design ----------------------------------------------------------------------------------

// int sum; work() { ... }, in one file.
struct Design {
  Draft draft;
  Chain elements;
  NodeId variable;
  bench::Function work;
};

Chain OpenFile(Draft& draft) {
  const NodeId root = bench::AddNode(draft, CFG_ROOT);
  Chain files{root, CfgRoot_ELEMENT};
  const NodeId file = bench::AddNode(draft, CFG_FILEINFO);
  bench::Append(draft, files, file);
  CdfgSetAttrNode(draft.graph, file, CfgFileinfo_ELEMENT, 0);
  CdfgSetAttrStr(draft.graph, file, CfgFileinfo_NAME, draft.file.c_str());
  return {file, CfgFileinfo_ELEMENT};
}

NodeId AddGlobal(Draft& draft, Chain& elements, const std::string& name) {
  Chain list = bench::OpenDeclarations(draft, elements);
  return bench::Declare(draft, list, name);
}

Design MakeDesign() {
  Draft draft{CdfgNewGraph(), bench::IdPattern::Dense, "fold.c"};
  Chain elements = OpenFile(draft);
  const NodeId variable = AddGlobal(draft, elements, "sum");
  const bench::Function work = bench::OpenFunction(draft, elements, "work", DECL_VALTYPE_INT);
  return {draft, elements, variable, work};
}

NodeId OpenAssignment(Design& design) {
  return bench::OpenAssignment(design.draft, design.work.body, bench::Variable(design.variable));
}

// --- Nested operations ---------------------------------------------------------------------------

enum class Nesting : std::uint8_t { Left, Right, Balanced };

// How many of `count` operations are in the left operand of the outermost one; the others but that
// one are in the right operand.
std::int64_t CountOnTheLeft(Nesting nesting, std::int64_t count) {
  switch (nesting) {
    case Nesting::Left:
      return count - 1;
    case Nesting::Right:
      return 0;
    case Nesting::Balanced:
      return (count - 1) / 2;
  }
  return 0;
}

// A place that `count` operations go to; 0: the leaf.
struct Operand {
  NodeId owner;
  std::uint32_t attribute;
  std::int64_t count;
};

NodeId AddSum(Draft& draft, NodeId owner) {
  const NodeId node = bench::AddNode(draft, DFG_OPERATION);
  CdfgSetPrev(draft.graph, node, owner);
  CdfgSetAttrInt(draft.graph, node, DfgOpe_TYPE, CALC_Add);
  CdfgSetAttrNode(draft.graph, node, DfgOpe_LEFT, 0);
  CdfgSetAttrNode(draft.graph, node, DfgOpe_RIGHT, 0);
  return node;
}

// Fills the left operand before the right one, so that nodes are made in the order of the text.
NodeId AddSums(Draft& draft, Nesting nesting, std::int64_t count, const Term& leaf, NodeId owner) {
  const NodeId first = AddSum(draft, owner);
  std::int64_t left = CountOnTheLeft(nesting, count);
  std::vector<Operand> open{{first, DfgOpe_RIGHT, count - 1 - left}, {first, DfgOpe_LEFT, left}};
  while (!open.empty()) {
    const Operand operand = open.back();
    open.pop_back();
    NodeId node = 0;
    if (operand.count == 0) {
      node = bench::AddExpression(draft, leaf, operand.owner);
    } else {
      node = AddSum(draft, operand.owner);
      left = CountOnTheLeft(nesting, operand.count);
      open.push_back({node, DfgOpe_RIGHT, operand.count - 1 - left});
      open.push_back({node, DfgOpe_LEFT, left});
    }
    CdfgSetAttrNode(draft.graph, operand.owner, operand.attribute, node);
  }
  return first;
}

// --- Folding -------------------------------------------------------------------------------------

// The value of the constant behind the node's successors, 0 if there is none.
std::int32_t ConstantBehind(const CdfgGraph* graph, NodeId node) {
  const NodeId constant = CdfgSkipReferences(graph, CdfgGetNext(graph, node));
  return CdfgGetAttrInt(graph, constant, DfgInputCnst_INTVALUE);
}

// Folds the bodies; afterwards the constant behind `edge` has to be the value.
void MeasureFold(benchmark::State& state, CdfgGraph* graph, NodeId edge, std::int64_t value) {
  MeasureOnce(state, [&] { FoldBodies(graph, EveryFunction); });
  if (ConstantBehind(graph, edge) != value) state.SkipWithError("not folded");
}

// sum = 1 + 1 + ... + 1, with n operations.
void FoldSums(benchmark::State& state, Nesting nesting) {
  for (auto _ : state) {
    Design design = MakeDesign();
    const NodeId edge = OpenAssignment(design);
    CdfgSetNext(design.draft.graph, edge,
                AddSums(design.draft, nesting, state.range(0), bench::Number(1), edge));
    MeasureFold(state, design.draft.graph, edge, state.range(0) + 1);
    CdfgFreeGraph(design.draft.graph);
  }
  CountItems(state);
}

// sum + sum + ... + sum, in which nothing folds.
void FoldNothing(benchmark::State& state, Nesting nesting) {
  for (auto _ : state) {
    Design design = MakeDesign();
    CdfgGraph* graph = design.draft.graph;
    const NodeId edge = OpenAssignment(design);
    const Term leaf = bench::Variable(design.variable);
    CdfgSetNext(graph, edge, AddSums(design.draft, nesting, state.range(0), leaf, edge));
    const std::size_t nodes = CdfgNodeCount(graph);
    MeasureOnce(state, [&] { FoldBodies(graph, EveryFunction); });
    if (CdfgNodeCount(graph) != nodes) state.SkipWithError("folded");
    CdfgFreeGraph(graph);
  }
  CountItems(state);
}

// n nodes of a kind behind one assignment edge, the last of them in front of 1 + 1.
void FoldRow(benchmark::State& state, std::uint32_t kind) {
  for (auto _ : state) {
    Design design = MakeDesign();
    CdfgGraph* graph = design.draft.graph;
    NodeId last = OpenAssignment(design);
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      const NodeId node = bench::AddNode(design.draft, kind);
      CdfgSetNext(graph, last, node);
      CdfgSetPrev(graph, node, last);
      last = node;
    }
    const Term sum = bench::Operation(CALC_Add, bench::Number(1), bench::Number(1));
    CdfgSetNext(graph, last, bench::AddExpression(design.draft, sum, last));
    MeasureFold(state, graph, last, 2);
    CdfgFreeGraph(graph);
  }
  CountItems(state);
}

// --- Typing --------------------------------------------------------------------------------------

void TypeSums(benchmark::State& state, Nesting nesting) {
  Design design = MakeDesign();
  const Term leaf = bench::Variable(design.variable);
  const NodeId edge = OpenAssignment(design);
  const NodeId first = AddSums(design.draft, nesting, state.range(0), leaf, edge);
  for (auto _ : state) {
    ExprType type;
    MeasureOnce(state, [&] { TypeOfExpression(design.draft.graph, first, &type); });
    if (type.value_type != DECL_VALTYPE_INT) state.SkipWithError("wrong type");
  }
  CdfgFreeGraph(design.draft.graph);
  CountItems(state);
}

// n references in a row in front of a variable of type float.
void TypeReferences(benchmark::State& state) {
  Design design = MakeDesign();
  CdfgGraph* graph = design.draft.graph;
  const NodeId real =
      bench::Declare(design.draft, design.work.declarations, "real", {DECL_VALTYPE_FLOAT});
  NodeId first = bench::AddExpression(design.draft, bench::Variable(real), design.work.node);
  for (std::int64_t i = 1; i < state.range(0); ++i) {
    const NodeId edge = bench::AddNode(design.draft, DFG_EDGE_PRESEDE);
    CdfgSetNext(graph, edge, first);
    CdfgSetPrev(graph, first, edge);
    first = edge;
  }
  for (auto _ : state) {
    ExprType type;
    MeasureOnce(state, [&] { TypeOfExpression(graph, first, &type); });
    if (type.value_type != DECL_VALTYPE_FLOAT) state.SkipWithError("wrong type");
  }
  CdfgFreeGraph(graph);
  CountItems(state);
}

// --- Used globals --------------------------------------------------------------------------------

// n functions that each use a global variable of their own, and n further globals.
void FindGlobals(benchmark::State& state) {
  const std::int64_t count = state.range(0);
  Design design = MakeDesign();
  Draft& draft = design.draft;
  for (std::int64_t i = 0; i < count; ++i) {
    const std::string number = std::to_string(i);
    const NodeId used = AddGlobal(draft, design.elements, "used_" + number);
    AddGlobal(draft, design.elements, "other_" + number);
    bench::Function user =
        bench::OpenFunction(draft, design.elements, "user_" + number, DECL_VALTYPE_INT);
    bench::Return(draft, user.body, bench::Variable(used));
  }
  for (auto _ : state) {
    std::vector<NodeId> found;
    MeasureOnce(state, [&] { found = FindUsedGlobals(draft.graph, EveryFunction); });
    if (static_cast<std::int64_t>(found.size()) != count) state.SkipWithError("wrong globals");
  }
  CdfgFreeGraph(draft.graph);
  CountItems(state);
}

// --- The benchmarks ------------------------------------------------------------------------------

struct NestingRow {
  const char* name;
  Nesting nesting;
};

constexpr NestingRow kNestings[] = {
    {"left-nested", Nesting::Left},
    {"right-nested", Nesting::Right},
    {"balanced", Nesting::Balanced},
};

using Operation = void (*)(benchmark::State&, Nesting);

void RegisterFor(const char* group, const char* what, Operation operation) {
  for (const NestingRow& row : kNestings) {
    const Nesting nesting = row.nesting;
    bench::Register(std::string(group) + "/" + what + ", " + row.name,
                    [=](benchmark::State& state) { operation(state, nesting); });
  }
}

void RegisterAll() {
  RegisterFor("fold", "n operations on constants", FoldSums);
  RegisterFor("fold", "n operations on variables", FoldNothing);
  bench::Register("fold/n edges in a row",
                  [](benchmark::State& state) { FoldRow(state, DFG_EDGE_BLOCKING); });
  bench::Register("fold/n casts in a row",
                  [](benchmark::State& state) { FoldRow(state, DFG_SPEC); });
  RegisterFor("type", "n operations", TypeSums);
  bench::Register("type/n references in a row", TypeReferences);
  bench::Register("used globals/n functions, 2n globals", FindGlobals);
}

}  // namespace

int main(int argument_count, char** arguments) {
  RegisterAll();
  return bench::RunBenchmarks(argument_count, arguments);
}
