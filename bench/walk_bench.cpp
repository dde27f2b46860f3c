// walk_bench: what a pass pays for getting around in a design.
//
// One item is one node visited, except where a benchmark says otherwise. `statements` is the walk
// over the statements of every function; `expressions` goes on into every operation list and every
// operand, index and argument, each by another means: one walker for all, a walker for each
// expression, calls on the heap (Deep), and plain recursion for comparison.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>

#include "bench/benchmark_time.h"
#include "bench/design.h"
#include "cdfg/chain.h"
#include "cdfg/deep.h"
#include "cdfg/graph.h"
#include "cdfg/walk.h"

namespace {

using bench::MeasureOnce;

// The design of a size, made once.
CdfgGraph* DesignOf(std::int64_t nodes, bench::Shape shape) {
  static std::map<std::pair<std::int64_t, bench::Shape>, CdfgGraph*> designs;
  CdfgGraph*& design = designs[{nodes, shape}];
  if (design == nullptr) {
    bench::Wish wish;
    wish.shape = shape;
    wish.nodes = static_cast<std::size_t>(nodes);
    design = bench::MakeDesign(wish);
  }
  return design;
}

// --- The walks -----------------------------------------------------------------------------------

void EnterOperands(const CdfgGraph* graph, ChainWalk& walk, NodeId node) {
  switch (CdfgGetKind(graph, node)) {
    case DFG_OPERATION:
      walk.EnterOperands(node);
      break;
    case DFG_INPUT_VAR:
    case DFG_OUTPUT_VAR:
      for (const NodeId index : NextChain(graph, CdfgGetAttr(graph, node, DfgPort_DIMNODE))) {
        walk.Enter(CdfgGetAttr(graph, index, DfgDim_NODE));
      }
      break;
    case DFG_FUNC_CALL:
      for (const NodeId info : NextChain(graph, CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST))) {
        walk.Enter(CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL));
      }
      break;
    default:
      break;
  }
}

std::int64_t CountFrom(const CdfgGraph* graph, ChainWalk& walk) {
  std::int64_t count = 0;
  while (const NodeId node = walk.Next()) {
    ++count;
    EnterOperands(graph, walk, node);
  }
  return count;
}

struct OneWalker {
  explicit OneWalker(const CdfgGraph* design) : graph(design), walk(design) {}
  std::int64_t Count(NodeId first) {
    walk.Start(first);
    return CountFrom(graph, walk);
  }
  const CdfgGraph* graph;
  ChainWalk walk;
};

struct WalkerEach {
  explicit WalkerEach(const CdfgGraph* design) : graph(design) {}
  std::int64_t Count(NodeId first) {
    ChainWalk walk(graph, first);
    return CountFrom(graph, walk);
  }
  const CdfgGraph* graph;
};

Deep<std::int64_t> CountDeep(const CdfgGraph* graph, NodeId first, DepthGuard& guard) {
  std::int64_t count = 0;
  for (const NodeId node : NextChain(graph, first)) {
    ++count;
    switch (CdfgGetKind(graph, node)) {
      case DFG_OPERATION: {
        const DepthScope inside(guard, node);
        count += co_await CountDeep(graph, CdfgGetAttr(graph, node, DfgOpe_LEFT), guard);
        count += co_await CountDeep(graph, CdfgGetAttr(graph, node, DfgOpe_RIGHT), guard);
        count += co_await CountDeep(graph, CdfgGetAttr(graph, node, DfgOpe_COND), guard);
        break;
      }
      case DFG_INPUT_VAR:
      case DFG_OUTPUT_VAR:
        for (const NodeId index : NextChain(graph, CdfgGetAttr(graph, node, DfgPort_DIMNODE))) {
          count += co_await CountDeep(graph, CdfgGetAttr(graph, index, DfgDim_NODE), guard);
        }
        break;
      case DFG_FUNC_CALL:
        for (const NodeId info : NextChain(graph, CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST))) {
          count += co_await CountDeep(graph, CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL), guard);
        }
        break;
      default:
        break;
    }
  }
  co_return count;
}

struct DeepCalls {
  explicit DeepCalls(const CdfgGraph* design) : graph(design) {}
  std::int64_t Count(NodeId first) { return RunDeep(CountDeep(graph, first, guard)); }
  const CdfgGraph* graph;
  DepthGuard guard;
};

std::int64_t CountPlainly(const CdfgGraph* graph, NodeId first) {
  std::int64_t count = 0;
  for (NodeId node = first; node != 0; node = CdfgGetNext(graph, node)) {
    ++count;
    switch (CdfgGetKind(graph, node)) {
      case DFG_OPERATION:
        count += CountPlainly(graph, CdfgGetAttr(graph, node, DfgOpe_LEFT));
        count += CountPlainly(graph, CdfgGetAttr(graph, node, DfgOpe_RIGHT));
        count += CountPlainly(graph, CdfgGetAttr(graph, node, DfgOpe_COND));
        break;
      case DFG_INPUT_VAR:
      case DFG_OUTPUT_VAR:
        for (NodeId index = CdfgGetAttr(graph, node, DfgPort_DIMNODE); index != 0;
             index = CdfgGetNext(graph, index)) {
          count += CountPlainly(graph, CdfgGetAttr(graph, index, DfgDim_NODE));
        }
        break;
      case DFG_FUNC_CALL:
        for (NodeId info = CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST); info != 0;
             info = CdfgGetNext(graph, info)) {
          count += CountPlainly(graph, CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL));
        }
        break;
      default:
        break;
    }
  }
  return count;
}

struct PlainCalls {
  explicit PlainCalls(const CdfgGraph* design) : graph(design) {}
  std::int64_t Count(NodeId first) { return CountPlainly(graph, first); }
  const CdfgGraph* graph;
};

// Calls `visit` with every statement of every function, and answers how many there were.
template <class Visit>
std::int64_t WalkStatements(const CdfgGraph* graph, Visit visit) {
  std::int64_t count = 0;
  for (const NodeId file : CdfgGetFiles(graph)) {
    StatementWalk walk(graph, CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT),
                       StatementScope::Elements);
    while (const NodeId statement = walk.Next()) {
      ++count;
      visit(statement);
    }
  }
  return count;
}

template <class Expressions>
std::int64_t WalkAll(const CdfgGraph* graph) {
  Expressions expressions(graph);
  std::int64_t count = 0;
  count += WalkStatements(graph, [&](NodeId statement) {
    for (const NodeId operation : NextChain(graph, CdfgGetOperationList(graph, statement))) {
      count += 1 + expressions.Count(CdfgGetAttr(graph, operation, DfgOpeman_OPE));
    }
  });
  return count;
}

// --- The benchmarks ------------------------------------------------------------------------------

void Statements(benchmark::State& state) {
  const CdfgGraph* graph = DesignOf(state.range(0), bench::Shape::Functions);
  std::int64_t visited = 0;
  for (auto _ : state) {
    MeasureOnce(state, [&] { visited += WalkStatements(graph, [](NodeId) {}); });
  }
  bench::CountItems(state, visited);
}

template <class Expressions>
void WholeDesign(benchmark::State& state) {
  const CdfgGraph* graph = DesignOf(state.range(0), bench::Shape::Functions);
  std::int64_t visited = 0;
  for (auto _ : state) MeasureOnce(state, [&] { visited += WalkAll<Expressions>(graph); });
  bench::CountItems(state, visited);
}

// One expression whose operations nest as deep as the design is large.
template <class Expressions>
void NestedExpression(benchmark::State& state) {
  const CdfgGraph* graph = DesignOf(state.range(0), bench::Shape::Expression);
  std::int64_t visited = 0;
  for (auto _ : state) MeasureOnce(state, [&] { visited += WalkAll<Expressions>(graph); });
  bench::CountItems(state, visited);
}

// One chain through all nodes: the least that a visit can cost.
void AllNodesInOrder(benchmark::State& state) {
  const CdfgGraph* graph = DesignOf(state.range(0), bench::Shape::Functions);
  const auto count = static_cast<NodeId>(CdfgNodeCount(graph));
  for (auto _ : state) {
    MeasureOnce(state, [&] {
      std::uint32_t sum = 0;
      for (NodeId id = 1; id <= count; ++id) sum += CdfgGetKind(graph, id);
      benchmark::DoNotOptimize(sum);
    });
  }
  bench::CountItems(state, static_cast<std::int64_t>(state.iterations()) * count);
}

void RegisterAll() {
  bench::Register("walk/ids in order", AllNodesInOrder);
  bench::Register("walk/statements", Statements);
  bench::Register("walk/expressions, one walker", WholeDesign<OneWalker>);
  bench::Register("walk/expressions, walker each", WholeDesign<WalkerEach>);
  bench::Register("walk/expressions, deep calls", WholeDesign<DeepCalls>);
  bench::Register("walk/expressions, recursion", WholeDesign<PlainCalls>);
  bench::Register("walk/one nested, one walker", NestedExpression<OneWalker>);
  bench::Register("walk/one nested, deep calls", NestedExpression<DeepCalls>);
}

}  // namespace

int main(int argument_count, char** arguments) {
  RegisterAll();
  return bench::RunBenchmarks(argument_count, arguments);
}
