// The module function list: which functions become hardware modules, and what each module uses.
//
// Program-wide: filled by the module function list pass, given rolled copies by the function roll
// pass, asked by every later pass whether a function is module code, released at the end of the
// run. Lists grow at the head, so they read newest first; beside them stand hash tables, so that no
// question searches a list.
#pragma once

#include "cdfg/graph.h"
#include "cdfg/walk.h"

// The list owns the texts of its records.

// A function that a module uses.
struct ModuleInstanceRecord {
  NodeId function;   // what the module's calls reach: a copy, or the base itself
  NodeId base;       // the called function as it stood in the input
  const char* name;  // the name that the module calls it by; may be null
  const char* file;  // the base's source file; may be null
  ModuleInstanceRecord* next;
};

// A function that becomes a module.
struct ModuleFunctionRecord {
  NodeId function;
  const char* name;    // may be null
  const char* file;    // the function node's source file; may be null
  const char* prefix;  // null: the module shares its callees
  ModuleInstanceRecord* instances;
  ModuleFunctionRecord* next;
};

// The newest record; null at start.
extern ModuleFunctionRecord* ModuleFunctionList;

// 1 when a module or an instance of any module has exactly this name and this file, else 0; 0 when
// either is null.
int IsModuleFunction(const char* name, const char* file);

// Records `function` as a module with copies of its name and file and of `prefix` (null: none), and
// answers the record. Null, and nothing recorded, when it is one already.
ModuleFunctionRecord* AddModuleFunction(const CdfgGraph* graph, NodeId function,
                                        const char* prefix);

// Records an instance of `module`, with copies of name and file (null stays null).
ModuleInstanceRecord* PushModuleInstance(ModuleFunctionRecord* module, NodeId function, NodeId base,
                                         const char* name, const char* file);

// Records an instance of the newest module: 1, or 0 when there is no module.
int AddModuleInstance(NodeId function, NodeId base, const char* name, const char* file);

// The instance of `module` (of any module, the newest first, when it is null) with this base, name
// and file, null if there is none. Here two nulls are equal.
ModuleInstanceRecord* FindModuleInstance(const ModuleFunctionRecord* module, NodeId base,
                                         const char* name, const char* file);

// Releases the list.
void FreeModuleFunctions();

// The functions of the design that are module code, in file order.
inline FunctionCursor ModuleCode(const CdfgGraph* graph) {
  return FunctionCursor(graph, IsModuleFunction);
}
