// store_bench: the operations of the graph store that must take the same time whatever the ids look
// like and however large the graph is.
//
// Every benchmark is named operation/ids and has the number of nodes (for `attributes of one node`:
// of attributes) as its size; one item is one operation. The ids are visited in the
// order the nodes were made, as passes do, except by `find at random`. `find at random/array of
// records` reads a field of plain records of a node's size in the same random order: what the
// machine's memory alone takes.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench/benchmark_time.h"
#include "bench/constructs.h"
#include "cdfg/graph.h"

namespace {

using bench::CountItems;
using bench::IdPattern;
using bench::MeasureOnce;

std::vector<NodeId> IdsOf(IdPattern pattern, std::int64_t count) {
  std::vector<NodeId> ids(static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < ids.size(); ++i) {
    ids[i] = bench::IdAt(pattern, static_cast<std::uint32_t>(i));
  }
  return ids;
}

CdfgGraph* GraphOf(const std::vector<NodeId>& ids) {
  CdfgGraph* graph = CdfgNewGraph();
  for (const NodeId id : ids) CdfgAddNodeWithId(graph, id);
  return graph;
}

std::uint32_t SumOfKinds(const CdfgGraph* graph, const std::vector<NodeId>& ids) {
  std::uint32_t sum = 0;
  for (const NodeId id : ids) sum += CdfgGetKind(graph, id);
  return sum;
}

void Find(benchmark::State& state, IdPattern pattern) {
  const std::vector<NodeId> ids = IdsOf(pattern, state.range(0));
  CdfgGraph* graph = GraphOf(ids);
  for (auto _ : state) {
    MeasureOnce(state, [&] { benchmark::DoNotOptimize(SumOfKinds(graph, ids)); });
  }
  CdfgFreeGraph(graph);
  CountItems(state);
}

void FindAtRandom(benchmark::State& state, IdPattern pattern) {
  std::vector<NodeId> ids = IdsOf(pattern, state.range(0));
  CdfgGraph* graph = GraphOf(ids);
  std::shuffle(ids.begin(), ids.end(), std::mt19937(1));
  for (auto _ : state) {
    MeasureOnce(state, [&] { benchmark::DoNotOptimize(SumOfKinds(graph, ids)); });
  }
  CdfgFreeGraph(graph);
  CountItems(state);
}

void ArrayAtRandom(benchmark::State& state) {
  struct Record {
    std::uint32_t fields[12];
  };
  const std::vector<Record> records(static_cast<std::size_t>(state.range(0)), Record{{1}});
  std::vector<std::uint32_t> order(records.size());
  std::iota(order.begin(), order.end(), 0U);
  std::shuffle(order.begin(), order.end(), std::mt19937(1));
  for (auto _ : state) {
    MeasureOnce(state, [&] {
      std::uint32_t sum = 0;
      for (const std::uint32_t place : order) sum += records[place].fields[0];
      benchmark::DoNotOptimize(sum);
    });
  }
  CountItems(state);
}

void AppendNodes(benchmark::State& state, IdPattern pattern) {
  const std::vector<NodeId> ids = IdsOf(pattern, state.range(0));
  for (auto _ : state) {
    CdfgGraph* graph = nullptr;
    MeasureOnce(state, [&] { graph = GraphOf(ids); });
    CdfgFreeGraph(graph);
  }
  CountItems(state);
}

void SetOne(CdfgGraph* graph, const std::vector<NodeId>& ids, std::int32_t value) {
  for (const NodeId id : ids) CdfgSetAttrInt(graph, id, DfgOpe_TYPE, value);
}

void SetNew(benchmark::State& state, IdPattern pattern) {
  const std::vector<NodeId> ids = IdsOf(pattern, state.range(0));
  for (auto _ : state) {
    CdfgGraph* graph = GraphOf(ids);
    MeasureOnce(state, [&] { SetOne(graph, ids, 1); });
    CdfgFreeGraph(graph);
  }
  CountItems(state);
}

void SetAgain(benchmark::State& state, IdPattern pattern) {
  const std::vector<NodeId> ids = IdsOf(pattern, state.range(0));
  CdfgGraph* graph = GraphOf(ids);
  SetOne(graph, ids, 1);
  for (auto _ : state) MeasureOnce(state, [&] { SetOne(graph, ids, 2); });
  CdfgFreeGraph(graph);
  CountItems(state);
}

// One node, as many attributes as the size says: set for the first time, set again, read.
void WideNode(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  for (auto _ : state) {
    CdfgGraph* graph = CdfgNewGraph();
    const NodeId node = CdfgAddNode(graph, DFG_OPERATION);
    MeasureOnce(state, [&] {
      for (std::uint32_t id = 1; id <= count; ++id) CdfgSetAttrInt(graph, node, id, 1);
      for (std::uint32_t id = 1; id <= count; ++id) CdfgSetAttrInt(graph, node, id, 2);
      std::int32_t sum = 0;
      for (std::uint32_t id = 1; id <= count; ++id) sum += CdfgGetAttrInt(graph, node, id);
      benchmark::DoNotOptimize(sum);
    });
    CdfgFreeGraph(graph);
  }
  CountItems(state, static_cast<std::int64_t>(state.iterations()) * state.range(0) * 3);
}

using Operation = void (*)(benchmark::State&, IdPattern);

struct PatternRow {
  const char* name;
  IdPattern pattern;
};

constexpr PatternRow kPatterns[] = {
    {"dense", IdPattern::Dense},
    {"gaps", IdPattern::Gaps},
    {"random", IdPattern::Random},
    {"descending", IdPattern::Descending},
    {"multiples of 256", IdPattern::PowersOfTwo},
    {"each twice", IdPattern::Duplicates},
};

void RegisterFor(const PatternRow& row, const char* name, Operation operation) {
  const IdPattern pattern = row.pattern;
  bench::Register(std::string(name) + "/" + row.name,
                  [=](benchmark::State& state) { operation(state, pattern); });
}

void RegisterAll() {
  for (const PatternRow& row : kPatterns) RegisterFor(row, "find", Find);
  for (const PatternRow& row : kPatterns) RegisterFor(row, "append", AppendNodes);
  for (const PatternRow& row : kPatterns) RegisterFor(row, "set new", SetNew);
  for (const PatternRow& row : kPatterns) RegisterFor(row, "set again", SetAgain);
  bench::Register("find at random/array of records", ArrayAtRandom);
  for (const PatternRow& row : kPatterns) RegisterFor(row, "find at random", FindAtRandom);
  bench::Register("set and set again and read/attributes of one node", WideNode);
}

}  // namespace

int main(int argument_count, char** arguments) {
  RegisterAll();
  return bench::RunBenchmarks(argument_count, arguments);
}
