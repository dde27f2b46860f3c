#include "passes/module_list.h"

#include <cstring>
#include <deque>
#include <memory>
#include <string>

#include "cdfg/hash.h"
#include "cdfg/hash_index.h"
#include "cdfg/text_table.h"

ModuleFunctionRecord* ModuleFunctionList = nullptr;

namespace {

// An instance as the questions know it.
struct ListedInstance {
  const ModuleFunctionRecord* module;
  ModuleInstanceRecord record;
};

// The records, and what the questions are answered from; follows the list in every change.
struct Tables {
  TextArena texts;
  const char* last_file = nullptr;  // most records have their neighbour's
  std::deque<ModuleFunctionRecord> functions;
  std::deque<ListedInstance> instances;

  TextTable module_code;  // names with their files
  IdMap<ModuleFunctionRecord*> modules;
  // Instances by base, name and file: of one module the newest, of all modules the oldest. Most are
  // never asked for, so they are entered when the next question comes.
  HashIndex of_module;
  HashIndex of_any;
  std::size_t entered = 0;
};

// Made when they are first asked for: a deque takes memory before it holds anything.
std::unique_ptr<Tables> made_tables;

Tables& AllTables() {
  if (made_tables == nullptr) made_tables = std::make_unique<Tables>();
  return *made_tables;
}

// --- Texts ---------------------------------------------------------------------------------------

const char* Keep(const char* text) {
  return text == nullptr ? nullptr : AllTables().texts.Keep({text, std::strlen(text) + 1});
}

const char* KeepFile(const char* file) {
  if (file == nullptr) return nullptr;
  Tables& tables = AllTables();
  if (tables.last_file == nullptr || std::strcmp(tables.last_file, file) != 0) {
    tables.last_file = Keep(file);
  }
  return tables.last_file;
}

// Every pass asks for every function, so the key is made in a place that is there already. The name
// stands last: numbered names are neighbours then (cdfg/hash.h).
const std::string& CodeKey(const char* name, const char* file) {
  static std::string key;
  key.assign(file).push_back('\0');
  return key.append(name);
}

void EnterModuleCode(const char* name, const char* file) {
  if (name != nullptr && file != nullptr) AllTables().module_code.Add(CodeKey(name, file));
}

bool IsSameText(const char* text, const char* other) {
  if (text == other) return true;
  return text != nullptr && other != nullptr && std::strcmp(text, other) == 0;
}

// --- Questions for instances ---------------------------------------------------------------------

// What an instance is asked for by.
struct InstanceKey {
  const ModuleFunctionRecord* module;  // null: any
  NodeId base;
  const char* name;
  const char* file;
};

std::size_t HashOfText(const char* text) { return text == nullptr ? 0 : TextHash{}(text); }

std::size_t HashOf(const InstanceKey& key) {
  std::uint64_t hash = MixBits(IdHash{}(key.base) ^ HashOfText(key.name));
  hash = MixBits(hash ^ HashOfText(key.file));
  return key.module == nullptr ? hash : MixBits(hash ^ IdHash{}(key.module->function));
}

// Whether the instance with this number answers the question.
auto Answers(const Tables& tables, const InstanceKey& key) {
  return [&tables, &key](std::uint32_t number) {
    const ListedInstance& listed = tables.instances[number];
    return (key.module == nullptr || listed.module == key.module) &&
           listed.record.base == key.base && IsSameText(listed.record.name, key.name) &&
           IsSameText(listed.record.file, key.file);
  };
}

void EnterInstances(Tables& tables) {
  for (; tables.entered < tables.instances.size(); ++tables.entered) {
    const auto number = static_cast<std::uint32_t>(tables.entered);
    const auto& [module, record] = tables.instances[number];
    // Within a module the newest record comes first. Across modules it is the oldest: modules are
    // elaborated in the order of the list, so the one nearest the head was the first to record it.
    InstanceKey key{module, record.base, record.name, record.file};
    tables.of_module.FindOrAdd(HashOf(key), number, Answers(tables, key)) = number;
    key.module = nullptr;
    tables.of_any.FindOrAdd(HashOf(key), number, Answers(tables, key));
  }
}

}  // namespace

int IsModuleFunction(const char* name, const char* file) {
  if (name == nullptr || file == nullptr) return 0;
  return AllTables().module_code.Contains(CodeKey(name, file)) ? 1 : 0;
}

ModuleFunctionRecord* AddModuleFunction(const CdfgGraph* graph, NodeId function,
                                        const char* prefix) {
  Tables& tables = AllTables();
  if (tables.modules.contains(function)) return nullptr;
  const char* name = CdfgGetAttrStr(graph, function, CfgFunc_NAME);
  const char* file = CdfgGetFileName(graph, function);
  tables.functions.push_back(
      {function, Keep(name), KeepFile(file), Keep(prefix), nullptr, ModuleFunctionList});
  ModuleFunctionList = &tables.functions.back();
  tables.modules.emplace(function, ModuleFunctionList);
  EnterModuleCode(name, file);
  return ModuleFunctionList;
}

ModuleInstanceRecord* PushModuleInstance(ModuleFunctionRecord* module, NodeId function, NodeId base,
                                         const char* name, const char* file) {
  Tables& tables = AllTables();
  tables.instances.push_back(
      {module, {function, base, Keep(name), KeepFile(file), module->instances}});
  module->instances = &tables.instances.back().record;
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
  Tables& tables = AllTables();
  EnterInstances(tables);
  const InstanceKey key{module, base, name, file};
  const HashIndex& index = module == nullptr ? tables.of_any : tables.of_module;
  const std::uint32_t number = index.Find(HashOf(key), Answers(tables, key));
  return number == HashIndex::kNone ? nullptr : &tables.instances[number].record;
}

void FreeModuleFunctions() {
  ModuleFunctionList = nullptr;
  made_tables.reset();
}
