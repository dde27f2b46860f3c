#include "tests/passes/runner/shape.h"

#include <string_view>
#include <unordered_map>

namespace {

constexpr std::size_t kMostProblems = 10;

std::string Described(const CdfgGraph* graph, NodeId node) {
  return "node " + std::to_string(node) + " (" + KindName(graph, node) + ")";
}

// --- Links resolve -------------------------------------------------------------------------------

void CheckReference(const CdfgGraph* graph, NodeId node, const std::string& field, NodeId target,
                    std::vector<std::string>* problems) {
  if (target == 0 || CdfgHasNode(graph, target) == 1) return;
  problems->push_back(Described(graph, node) + ": " + field + " names node " +
                      std::to_string(target) + ", which does not exist");
}

void CheckAttributes(const CdfgGraph* graph, NodeId node, std::vector<std::string>* problems) {
  const std::int32_t count = CdfgGetAttrCount(graph, node);
  for (std::int32_t place = 1; place <= count; ++place) {
    if (CdfgGetAttrTypeAt(graph, node, place) != ATTR_NODE) continue;
    const std::uint32_t attribute = CdfgGetAttrIdAt(graph, node, place);
    const std::string field = "attribute " + std::to_string(attribute);
    CheckReference(graph, node, field, CdfgGetAttr(graph, node, attribute), problems);
  }
}

void CheckLinksResolve(const CdfgGraph* graph, std::vector<std::string>* problems) {
  for (std::size_t place = 0; place < CdfgNodeCount(graph); ++place) {
    const NodeId node = CdfgNodeIdAt(graph, place);
    if (node == 0) continue;
    CheckReference(graph, node, "prev", CdfgGetPrev(graph, node), problems);
    CheckReference(graph, node, "next", CdfgGetNext(graph, node), problems);
    CheckReference(graph, node, "jump", CdfgGetJump(graph, node), problems);
    CheckAttributes(graph, node, problems);
  }
}

// --- Chains end ----------------------------------------------------------------------------------

// Follows next from every node, each node once over all walks.
void CheckChainsEnd(const CdfgGraph* graph, std::vector<std::string>* problems) {
  std::unordered_map<NodeId, std::size_t> walk_of;
  for (std::size_t walk = 0; walk < CdfgNodeCount(graph); ++walk) {
    NodeId node = CdfgNodeIdAt(graph, walk);
    while (node != 0 && walk_of.emplace(node, walk).second) node = CdfgGetNext(graph, node);
    if (node == 0 || walk_of[node] != walk || CdfgGetNext(graph, node) == 0) continue;
    problems->push_back(Described(graph, node) + ": its next chain leads back to itself");
  }
}

// --- The table -----------------------------------------------------------------------------------

constexpr ShapeCheck kChecks[] = {
    {"links resolve", nullptr, nullptr, CheckLinksResolve},
    {"chains end", nullptr, nullptr, CheckChainsEnd},
    {"statements are flat", "division-expression", nullptr, CheckStatementsAreFlat},
    {"targets are flat", "division-expression", "remake-dfg", CheckTargetsAreFlat},
    {"datapaths are remade", "remake-dfg", nullptr, CheckDatapathsAreRemade},
    {"one statement per datapath", "split-datapaths", nullptr, CheckDatapathsAreSingle},
};

bool HasRun(const char* name, std::span<const PipelineStep* const> steps) {
  for (const PipelineStep* step : steps) {
    if (std::string_view(step->name) == name) return true;
  }
  return false;
}

bool Holds(const ShapeCheck& check, std::span<const PipelineStep* const> steps, ShapeRules rules) {
  if (check.from_step == nullptr) return true;
  if (rules == ShapeRules::Loose || !HasRun(check.from_step, steps)) return false;
  return check.until_step == nullptr || !HasRun(check.until_step, steps);
}

}  // namespace

std::span<const ShapeCheck> ShapeChecks() { return kChecks; }

std::vector<std::string> FindShapeProblems(const CdfgGraph* graph,
                                           std::span<const PipelineStep* const> steps,
                                           ShapeRules rules) {
  const std::string when = steps.empty() ? "as read" : std::string("after ") + steps.back()->name;
  std::vector<std::string> lines;
  for (const ShapeCheck& check : ShapeChecks()) {
    if (!Holds(check, steps, rules)) continue;
    std::vector<std::string> problems;
    check.check(graph, &problems);
    if (problems.size() > kMostProblems) problems.resize(kMostProblems);
    for (const std::string& problem : problems) {
      lines.push_back(when + ", " + check.name + ": " + problem);
    }
  }
  return lines;
}
