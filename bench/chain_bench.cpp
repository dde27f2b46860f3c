// chain_bench: work that must grow no faster than what it is done on: ten times the size in at most
// eleven times the time.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "bench/benchmark_time.h"
#include "bench/constructs.h"
#include "cdfg/copy.h"
#include "cdfg/edit.h"
#include "cdfg/graph.h"
#include "cdfg/name_set.h"

namespace {

using bench::Chain;
using bench::CountItems;
using bench::Draft;
using bench::MeasureOnce;

struct Body {
  Draft draft;
  Chain chain;
  NodeId variable;
};

Body OpenBody() {
  Draft draft{CdfgNewGraph(), bench::IdPattern::Dense, "chain.c"};
  const NodeId function = bench::AddNode(draft, CFG_FUNCTION);
  Chain declarations{function, CfgFunc_DECLARE};
  const NodeId variable = bench::Declare(draft, declarations, "sum");
  return {draft, {function, CfgFunc_STARTCFG}, variable};
}

NodeId FirstOf(const Body& body) {
  return CdfgGetAttr(body.draft.graph, body.chain.owner, CfgFunc_STARTCFG);
}

// Copies the body and releases the graph; the time is that of the copy.
void MeasureCopy(benchmark::State& state, const Body& body) {
  MeasureOnce(state, [&] { CdfgCopyTree(body.draft.graph, FirstOf(body)); });
  CdfgFreeGraph(body.draft.graph);
}

// n statements sum = sum + 1.
void CopyStatements(benchmark::State& state) {
  for (auto _ : state) {
    Body body = OpenBody();
    const bench::Term sum = bench::Variable(body.variable);
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      bench::Assign(body.draft, body.chain, sum, bench::Operation(CALC_Add, sum, bench::Number(1)));
    }
    MeasureCopy(state, body);
  }
  CountItems(state);
}

// n labels and behind them n jumps, each n places away from its label: copying them builds the
// map of all jumps and looks every target up.
void CopyJumps(benchmark::State& state) {
  for (auto _ : state) {
    Body body = OpenBody();
    std::vector<NodeId> labels;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      labels.push_back(bench::Label(body.draft, body.chain, "again_" + std::to_string(i)));
    }
    for (const NodeId label : labels) bench::Goto(body.draft, body.chain, label);
    MeasureCopy(state, body);
  }
  CountItems(state);
}

// n statements taken in turn, each appended behind the one before.
void AppendStatements(benchmark::State& state) {
  for (auto _ : state) {
    CdfgGraph* graph = CdfgNewGraph();
    MeasureOnce(state, [&] {
      NodeId last = CdfgCreateNode(graph, CFG_STATE_DATAPATH, 0);
      for (std::int64_t i = 1; i < state.range(0); ++i) {
        const NodeId added = CdfgCreateNode(graph, CFG_STATE_DATAPATH, last);
        CdfgAppend(graph, last, added);
        last = added;
      }
    });
    CdfgFreeGraph(graph);
  }
  CountItems(state);
}

// n declarations of temporaries, each at the head of the function's list.
void DeclareTemporaries(benchmark::State& state) {
  for (auto _ : state) {
    Body body = OpenBody();
    CdfgSetDeclScope(body.chain.owner);
    MeasureOnce(state, [&] {
      for (std::int64_t i = 0; i < state.range(0); ++i) {
        CdfgDeclareVariable(body.draft.graph, body.variable, {}, "__fpfix_tmp_000000");
      }
    });
    CdfgSetDeclScope(0);
    CdfgFreeGraph(body.draft.graph);
  }
  CountItems(state);
}

std::vector<std::string> NamesLike(const char* format, std::int64_t count) {
  std::vector<std::string> names;
  char text[64];
  for (std::int64_t i = 0; i < count; ++i) {
    std::snprintf(text, sizeof text, format, static_cast<int>(i));
    names.emplace_back(text);
  }
  return names;
}

void AddAll(const std::vector<std::string>& names) {
  for (const std::string& name : names) NameSetAdd(name.c_str());
}

// n names of a usual design.
void AddNames(benchmark::State& state) {
  const std::vector<std::string> names = NamesLike("variable_%d", state.range(0));
  for (auto _ : state) {
    NameSetInit();
    MeasureOnce(state, [&] { AddAll(names); });
    NameSetFree();
  }
  CountItems(state);
}

// Names as long as those of temporaries, whose bytes add up to many different sums.
std::vector<std::string> SpreadNames(std::int64_t count) {
  std::vector<std::string> names;
  char text[64];
  for (std::int64_t i = 0; i < count; ++i) {
    const NodeId mixed = bench::IdAt(bench::IdPattern::Random, static_cast<std::uint32_t>(i));
    std::snprintf(text, sizeof text, "temporary_%.8x", mixed);
    names.emplace_back(text);
  }
  return names;
}

void AskForNames(benchmark::State& state, const std::vector<std::string>& names) {
  NameSetInit();
  AddAll(names);
  for (auto _ : state) {
    std::size_t count = 0;
    MeasureOnce(state, [&] {
      for (const std::string& name : names) count += NameSetContains(name.c_str()) == 1 ? 1 : 0;
    });
    if (count != names.size()) state.SkipWithError("names are missing");
  }
  NameSetFree();
  CountItems(state);
}

// Temporaries are numbered, so the bytes of their names add up to few different sums.
void AskForTemporaries(benchmark::State& state) {
  AskForNames(state, NamesLike("__fpfix_tmp_%.6d", state.range(0)));
}

void AskForSpreadNames(benchmark::State& state) { AskForNames(state, SpreadNames(state.range(0))); }

// n fresh names, every other one of which is taken already.
void MakeFreshNames(benchmark::State& state) {
  for (auto _ : state) {
    NameSetInit();
    for (std::int64_t i = 0; i < state.range(0); ++i) {
      char text[64];
      std::snprintf(text, sizeof text, "__fpfix_tmp_%.6d", static_cast<int>(2 * i));
      NameSetAdd(text);
    }
    MeasureOnce(state, [&] {
      int counter = 0;
      for (std::int64_t i = 0; i < state.range(0); ++i) {
        benchmark::DoNotOptimize(NameSetFresh("__fpfix_tmp_", 6, &counter));
      }
    });
    NameSetFree();
  }
  CountItems(state);
}

void RegisterAll() {
  bench::Register("copy/n statements", CopyStatements);
  bench::Register("copy/n labels and n jumps", CopyJumps);
  bench::Register("chain/n statements appended", AppendStatements);
  bench::Register("chain/n temporaries declared", DeclareTemporaries);
  bench::Register("names/n added", AddNames);
  bench::Register("names/n of few byte sums asked for", AskForTemporaries);
  bench::Register("names/n of many byte sums asked for", AskForSpreadNames);
  bench::Register("names/n fresh ones made", MakeFreshNames);
}

}  // namespace

int main(int argument_count, char** arguments) {
  RegisterAll();
  return bench::RunBenchmarks(argument_count, arguments);
}
