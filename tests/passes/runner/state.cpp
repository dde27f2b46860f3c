#include "tests/passes/runner/state.h"

#include "cdfg/copy.h"
#include "cdfg/edit.h"
#include "cdfg/name_set.h"
#include "driver/pipeline.h"
#include "passes/module_list.h"

namespace {

constexpr std::size_t kWidth = 100;

std::string Quoted(const char* text) {
  if (text == nullptr) return "null";
  std::string quoted = "\"";
  for (; *text != '\0'; ++text) {
    if (*text == '"' || *text == '\\') quoted += '\\';
    quoted += *text;
  }
  return quoted + "\"";
}

std::string Reference(NodeId node, const CaseNames& names) { return "@" + NameOfNode(node, names); }

// --- Module functions ----------------------------------------------------------------------------

std::string InstanceLine(const ModuleInstanceRecord& instance, const CaseNames& names) {
  std::string line = "  " + Reference(instance.function, names);
  if (instance.function != instance.base) line += " of " + Reference(instance.base, names);
  return line + " " + Quoted(instance.name) + " " + Quoted(instance.file) + "\n";
}

std::string ModuleLines(const ModuleFunctionRecord& module, const CaseNames& names) {
  std::string lines = "module " + Reference(module.function, names) + " " + Quoted(module.name) +
                      " " + Quoted(module.file);
  if (module.prefix != nullptr) lines += " prefix " + Quoted(module.prefix);
  lines += "\n";
  const ModuleInstanceRecord* instance = module.instances;
  for (; instance != nullptr; instance = instance->next) lines += InstanceLine(*instance, names);
  return lines;
}

std::string CodeLine(const CdfgGraph* graph, const CaseNames& names) {
  std::string line = "code";
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) line += " " + Reference(function, names);
  return line + "\n";
}

std::string DescribeModules(const CdfgGraph* graph, const CaseNames& names) {
  if (ModuleFunctionList == nullptr) return {};
  std::string lines;
  const ModuleFunctionRecord* module = ModuleFunctionList;
  for (; module != nullptr; module = module->next) lines += ModuleLines(*module, names);
  return lines + CodeLine(graph, names);
}

// --- Names ---------------------------------------------------------------------------------------

// Whether there is a set at all; without one nothing can be added.
bool HasNameSet() { return NameSetAdd("") == 0; }

std::string DescribeNames(const std::set<std::string>& strings) {
  std::string lines = "names";
  std::size_t line_begin = 0;
  for (const std::string& name : strings) {
    if (NameSetContains(name.c_str()) == 0) continue;
    const std::string shown = IsLabel(name) ? name : Quoted(name.c_str());
    if (lines.size() - line_begin + 1 + shown.size() > kWidth) {
      lines += "\n ";
      line_begin = lines.size() - 1;
    }
    lines += " " + shown;
  }
  return HasNameSet() ? lines + "\n" : std::string();
}

}  // namespace

void ResetProgramState(CdfgGraph* graph) {
  FreePassState();
  CdfgSetDeclScope(0);
  CdfgRemapSwitch = 0;
  CdfgMemberShareSwitch = 0;
  CdfgClearUserTable(graph);
}

void CollectStrings(const CdfgGraph* graph, std::set<std::string>* strings) {
  for (std::size_t place = 0; place < CdfgNodeCount(graph); ++place) {
    const NodeId node = CdfgNodeIdAt(graph, place);
    const std::int32_t count = CdfgGetAttrCount(graph, node);
    for (std::int32_t i = 1; i <= count; ++i) {
      if (CdfgGetAttrTypeAt(graph, node, i) != ATTR_STRING) continue;
      const char* text = CdfgGetAttrStr(graph, node, CdfgGetAttrIdAt(graph, node, i));
      if (text != nullptr) strings->insert(text);
    }
  }
}

std::string DescribeState(const CdfgGraph* graph, const CaseNames& names,
                          const std::set<std::string>& strings) {
  return DescribeModules(graph, names) + DescribeNames(strings);
}
