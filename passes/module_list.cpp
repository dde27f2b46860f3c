#include "passes/module_list.h"

#include <string>

#include "cdfg/hash.h"
#include "cdfg/text_table.h"

ModuleFunctionRecord* ModuleFunctionList = nullptr;

namespace {

// What the questions are answered from; follows the list in every change.
struct Tables {
  TextTable module_code;  // names with their files
  IdMap<ModuleFunctionRecord*> modules;
  // By module (null: any), base, name and file.
  TextMap<ModuleInstanceRecord*> instances;
};

Tables tables;

// Text as part of a key: unlike any other text, and unlike null.
void AddToKey(std::string& key, const char* text) {
  if (text == nullptr) {
    key.push_back('\1');
  } else {
    key.append(text);
  }
  key.push_back('\0');
}

void AddToKey(std::string& key, const char* name, const char* file) {
  AddToKey(key, name);
  AddToKey(key, file);
}

// Every pass asks for every function, so the key is made in a place that is there already.
const std::string& CodeKey(const char* name, const char* file) {
  static std::string key;
  key.clear();
  AddToKey(key, name, file);
  return key;
}

std::string InstanceKey(const ModuleFunctionRecord* module, NodeId base, const char* name,
                        const char* file) {
  std::string key;
  AddToKey(key, name, file);
  key.append(std::to_string(base)).push_back(' ');
  key.append(module == nullptr ? "any" : std::to_string(module->function));
  return key;
}

void EnterModuleCode(const char* name, const char* file) {
  if (name != nullptr && file != nullptr) tables.module_code.Add(CodeKey(name, file));
}

OwnedText CopyOf(const char* text) { return OwnedText(MemStrdup(text)); }

void FreeInstances(ModuleInstanceRecord* instance) {
  while (instance != nullptr) {
    ModuleInstanceRecord* next = instance->next;
    delete instance;
    instance = next;
  }
}

}  // namespace

int IsModuleFunction(const char* name, const char* file) {
  if (name == nullptr || file == nullptr) return 0;
  return tables.module_code.Contains(CodeKey(name, file)) ? 1 : 0;
}

ModuleFunctionRecord* AddModuleFunction(const CdfgGraph* graph, NodeId function,
                                        const char* prefix) {
  if (tables.modules.contains(function)) return nullptr;
  const char* name = CdfgGetAttrStr(graph, function, CfgFunc_NAME);
  const char* file = CdfgGetFileName(graph, function);
  ModuleFunctionList = new ModuleFunctionRecord{function,       CopyOf(name), CopyOf(file),
                                                CopyOf(prefix), nullptr,      ModuleFunctionList};
  tables.modules.emplace(function, ModuleFunctionList);
  EnterModuleCode(name, file);
  return ModuleFunctionList;
}

ModuleInstanceRecord* PushModuleInstance(ModuleFunctionRecord* module, NodeId function, NodeId base,
                                         const char* name, const char* file) {
  module->instances =
      new ModuleInstanceRecord{function, base, CopyOf(name), CopyOf(file), module->instances};
  // Within a module the newest record comes first. Across modules it is the oldest: modules are
  // elaborated in the order of the list, so the one nearest the head was the first to record it.
  tables.instances.insert_or_assign(InstanceKey(module, base, name, file), module->instances);
  tables.instances.emplace(InstanceKey(nullptr, base, name, file), module->instances);
  EnterModuleCode(name, file);
  return module->instances;
}

int AddModuleInstance(NodeId function, NodeId base, const char* name, const char* file) {
  if (ModuleFunctionList == nullptr) return 0;
  PushModuleInstance(ModuleFunctionList, function, base, name, file);
  return 1;
}

ModuleInstanceRecord* FindModuleInstance(const ModuleFunctionRecord* module, NodeId base,
                                         const char* name, const char* file) {
  const auto found = tables.instances.find(InstanceKey(module, base, name, file));
  return found == tables.instances.end() ? nullptr : found->second;
}

void FreeModuleFunctions() {
  while (ModuleFunctionList != nullptr) {
    ModuleFunctionRecord* next = ModuleFunctionList->next;
    FreeInstances(ModuleFunctionList->instances);
    delete ModuleFunctionList;
    ModuleFunctionList = next;
  }
  tables = {};
}
