// Rolls random designs twice: by the pass, and by a model that knows functions and calls only and
// does one thing after another as told. Both must end with the same functions, names and calls, or
// both go on for ever: the model gives up after more copies than such small designs can need.
#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "cdfg/chain.h"
#include "driver/pipeline.h"
#include "passes/function_roll.h"
#include "passes/module_functions.h"
#include "passes/module_list.h"
#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

constexpr const char* kFile = "top.c";
constexpr std::size_t kMostCopies = 3000;

// --- The model -----------------------------------------------------------------------------------

struct Call {
  std::size_t callee;
  bool is_marked;
  std::string name;
};

struct Function {
  std::string name;
  std::vector<Call> calls;
  bool is_module_code;
};

struct Model {
  std::vector<Function> functions;
  std::vector<std::size_t> order;  // as they stand in the file
  std::unordered_map<std::size_t, int> uses = {};
  std::vector<std::size_t> copies = {};
};

void CountCalls(Model& model, std::size_t function) {
  for (const Call& call : model.functions[function].calls) {
    if (!call.is_marked && call.callee != function) ++model.uses[call.callee];
  }
}

void GiveCopy(Model& model, std::size_t function, std::size_t place, int number) {
  const std::size_t callee = model.functions[function].calls[place].callee;
  const std::size_t copy = model.functions.size();
  char suffix[32];
  std::snprintf(suffix, sizeof suffix, "_roll_%04d", number);
  model.functions.push_back(model.functions[callee]);
  model.functions[copy].name += suffix;
  Call& call = model.functions[function].calls[place];
  call.callee = copy;
  call.name = model.functions[copy].name;
  model.order.insert(std::find(model.order.begin(), model.order.end(), function), copy);
  model.copies.push_back(copy);
}

void RollCalls(Model& model, std::size_t function) {
  for (std::size_t place = 0; place < model.functions[function].calls.size(); ++place) {
    const Call call = model.functions[function].calls[place];
    if (!call.is_marked || call.callee == function) continue;
    const int uses = ++model.uses[call.callee];
    if (uses >= 2) GiveCopy(model, function, place, uses - 1);
  }
}

// Answers whether it came to an end.
bool Roll(Model& model) {
  const std::vector<std::size_t> order = model.order;
  for (const std::size_t function : order) {
    if (model.functions[function].is_module_code) CountCalls(model, function);
  }
  for (const std::size_t function : order) {
    if (model.functions[function].is_module_code) RollCalls(model, function);
  }
  for (std::size_t i = 0; i < model.copies.size(); ++i) {
    if (model.copies.size() > kMostCopies) return false;
    RollCalls(model, model.copies[i]);
  }
  return true;
}

std::string Shown(const Model& model) {
  std::string text;
  for (const std::size_t place : model.order) {
    const Function& function = model.functions[place];
    text += function.name + ":";
    for (const Call& call : function.calls) {
      text += " " + call.name + ">" + model.functions[call.callee].name;
    }
    text += "\n";
  }
  return text;
}

// --- Random designs ------------------------------------------------------------------------------

std::size_t Below(std::mt19937& random, std::size_t limit) { return random() % limit; }

// Function 0 is called as a module, so all that it leads to is module code.
void MarkModuleCode(Model& model) {
  std::vector<std::size_t> left = {0};
  model.functions[0].is_module_code = true;
  while (!left.empty()) {
    const std::size_t function = left.back();
    left.pop_back();
    for (const Call& call : model.functions[function].calls) {
      Function& callee = model.functions[call.callee];
      if (!callee.is_module_code) left.push_back(call.callee);
      callee.is_module_code = true;
    }
  }
}

Model RandomModel(std::mt19937& random) {
  Model model;
  const std::size_t count = 1 + Below(random, 5);
  for (std::size_t i = 0; i < count; ++i) {
    Function function{"f" + std::to_string(i), {}, false};
    for (std::size_t calls = Below(random, 4); calls > 0; --calls) {
      const std::size_t callee = Below(random, count);
      function.calls.push_back({callee, Below(random, 4) != 0, "f" + std::to_string(callee)});
    }
    model.functions.push_back(function);
    model.order.push_back(i);
  }
  std::shuffle(model.order.begin(), model.order.end(), random);
  MarkModuleCode(model);
  return model;
}

// --- The same as a graph -------------------------------------------------------------------------

struct Design {
  support::OwnedGraph owned_graph{CdfgNewGraph()};
  CdfgGraph* graph = owned_graph.get();
  std::vector<NodeId> functions = {};
  NodeId main_function = 0;  // stands in front of them
};

NodeId AddInside(CdfgGraph* graph, NodeId owner, std::uint32_t attribute, std::uint32_t kind) {
  const NodeId node = CdfgAddNode(graph, kind);
  CdfgSetAttrNode(graph, owner, attribute, node);
  CdfgSetPrev(graph, node, owner);
  return node;
}

NodeId AddBehind(CdfgGraph* graph, NodeId node, std::uint32_t kind) {
  const NodeId added = CdfgAddNode(graph, kind);
  CdfgSetNext(graph, node, added);
  CdfgSetPrev(graph, added, node);
  return added;
}

void AddCall(const Design& design, NodeId datapath, const Call& call, const char* directive) {
  CdfgGraph* graph = design.graph;
  const NodeId operation = AddInside(graph, datapath, CfgDatapath_OPELIST, DFG_MANAGE_OPERATION);
  const NodeId node = AddInside(graph, operation, DfgOpeman_OPE, DFG_FUNC_CALL);
  CdfgSetFileName(graph, node, kFile);
  CdfgSetAttrStr(graph, node, DfgFuncCall_NAME, call.name.c_str());
  CdfgSetJump(graph, node, design.functions[call.callee]);
  if (!call.is_marked) return;
  const NodeId mark = AddInside(graph, node, DfgFuncCall_DIRECTIVE, INFO_DIRECTIVE);
  CdfgSetAttrInt(graph, mark, DfgDirective_TYPE, 55);
  CdfgSetAttrStr(graph, mark, DfgDirective_STR, directive);
}

void AddBody(const Design& design, NodeId function, const std::vector<Call>& calls,
             const char* directive) {
  NodeId last = 0;
  for (const Call& call : calls) {
    last = last == 0 ? AddInside(design.graph, function, CfgFunc_STARTCFG, CFG_STATE_DATAPATH)
                     : AddBehind(design.graph, last, CFG_STATE_DATAPATH);
    AddCall(design, last, call, directive);
  }
}

void AddFunctions(Design& design, const Model& model) {
  design.functions.resize(model.functions.size());
  NodeId last = design.main_function;
  for (const std::size_t place : model.order) {
    last = AddBehind(design.graph, last, CFG_FUNCTION);
    CdfgSetFileName(design.graph, last, kFile);
    CdfgSetAttrStr(design.graph, last, CfgFunc_NAME, model.functions[place].name.c_str());
    design.functions[place] = last;
  }
}

Design DesignOf(const Model& model) {
  Design design;
  const NodeId root = CdfgAddNode(design.graph, CFG_ROOT);
  const NodeId file = AddInside(design.graph, root, CfgRoot_ELEMENT, CFG_FILEINFO);
  CdfgSetAttrStr(design.graph, file, CfgFileinfo_NAME, kFile);
  design.main_function = AddInside(design.graph, file, CfgFileinfo_ELEMENT, CFG_FUNCTION);
  AddFunctions(design, model);
  AddBody(design, design.main_function, {{0, true, "f0"}}, "module");
  for (std::size_t i = 0; i < model.functions.size(); ++i) {
    AddBody(design, design.functions[i], model.functions[i].calls, "roll");
  }
  return design;
}

std::string NameOf(const CdfgGraph* graph, NodeId function) {
  const char* name = CdfgGetAttrStr(graph, function, CfgFunc_NAME);
  return name == nullptr ? "(none)" : name;
}

std::string Shown(const Design& design) {
  const CdfgGraph* graph = design.graph;
  std::string text;
  for (const NodeId function : NextChain(graph, CdfgGetNext(graph, design.main_function))) {
    text += NameOf(graph, function) + ":";
    for (const NodeId datapath : NextChain(graph, CdfgGetAttr(graph, function, CfgFunc_STARTCFG))) {
      const NodeId operation = CdfgGetAttr(graph, datapath, CfgDatapath_OPELIST);
      const NodeId call = CdfgGetAttr(graph, operation, DfgOpeman_OPE);
      const char* name = CdfgGetAttrStr(graph, call, DfgFuncCall_NAME);
      text.append(" ").append(name == nullptr ? "(none)" : name);
      text += ">" + NameOf(graph, CdfgGetJump(graph, call));
    }
    text += "\n";
  }
  return text;
}

// --- The comparison ------------------------------------------------------------------------------

// Answers whether the rolling came to an end.
bool ExpectRolledAsModelled(Model model) {
  SCOPED_TRACE("\n" + Shown(model));
  const Design design = DesignOf(model);
  CollectModuleFunctions(design.graph);
  const support::Outcome outcome = support::RunCatchingStop([&] { RollFunctions(design.graph); });
  FreePassState();
  const bool has_end = Roll(model);
  EXPECT_EQ(has_end, !outcome.status.has_value());
  if (has_end && !outcome.status) {
    EXPECT_EQ(Shown(design), Shown(model));
  }
  return has_end;
}

TEST(RollModel, RandomDesignsAreRolledAsModelled) {
  int with_end = 0;
  int without_end = 0;
  for (unsigned seed = 0; seed < 500; ++seed) {
    std::mt19937 random(seed);
    ++(ExpectRolledAsModelled(RandomModel(random)) ? with_end : without_end);
  }
  EXPECT_GT(with_end, 100);
  EXPECT_GT(without_end, 20);
}

}  // namespace
