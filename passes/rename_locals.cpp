// Gives all variables of a module function names of their own, so that blocks can be flattened into
// one hardware scope.
//
//   f(i) { for (..) { int i; i = 1; }  for (..) { int i; i = 2; } }
//   ->   { for (..) { int i000; i000 = 1; }  for (..) { int i001; i001 = 2; } }
//
// Per function:
//   1. register the arguments, the declarations and the top-level groups with their names;
//   2. walk the nested blocks: rename each declaration whose name is registered, register it;
//   3. walk all references: one to a renamed declaration takes its name.
//
// Owns, for the length of one function, the user data of the declarations registered: a pointer to
// the record of the declaration.
#include "passes/rename_locals.h"

#include <cstdio>
#include <deque>
#include <string>

#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/kinds.h"
#include "cdfg/walk.h"
#include "passes/module_list.h"

namespace {

// A declaration met in the function.
struct ScopeEntry {
  NodeId declaration;
  const char* name;  // as it stands now; the store owns it
  bool renamed;
};

// The declarations of one function. Clears their user data at its end.
class Scope {
 public:
  explicit Scope(CdfgGraph* graph) : graph_(graph) {}
  ~Scope() {
    for (const ScopeEntry& entry : entries_) CdfgSetUserData(graph_, entry.declaration, nullptr);
  }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  void Register(NodeId declaration, bool renamed) {
    const char* name = CdfgGetAttrStr(graph_, declaration, CfgDecl_NAME);
    entries_.push_back({declaration, name, renamed});
    CdfgSetUserData(graph_, declaration, &entries_.back());
    if (name != nullptr) names_.insert(name);
  }

  bool HasName(const std::string& name) const { return names_.contains(name); }

  // The first of name000, name001, ... that nobody has. Names are never given up, so each search
  // goes on where the last one for the same name ended.
  std::string FreeName(const char* name) {
    int& number = next_numbers_[name];
    std::string candidate;
    do {
      char digits[16];
      std::snprintf(digits, sizeof digits, "%03d", number++);
      candidate.assign(name).append(digits);
    } while (HasName(candidate));
    return candidate;
  }

 private:
  CdfgGraph* graph_;
  std::deque<ScopeEntry> entries_;
  TextSet names_;
  TextMap<int> next_numbers_;
};

// --- Registering and renaming --------------------------------------------------------------------

void RegisterDeclarations(CdfgGraph* graph, Scope& scope, NodeId list) {
  for (const NodeId node : NextChain(graph, list)) {
    if (CdfgGetKind(graph, node) == CFG_DECLARE) scope.Register(node, false);
  }
}

// A declaration that stands among the statements registers those behind it as well, so from the
// first one on all are.
void RegisterTopLevel(CdfgGraph* graph, Scope& scope, NodeId body) {
  bool has_bare_declarations = false;
  for (const NodeId node : NextChain(graph, body)) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == CFG_DECLARE_DEF) {
      RegisterDeclarations(graph, scope, CdfgGetAttr(graph, node, CfgDeclDef_DECL));
    } else if (kind == CFG_DECLARE && !has_bare_declarations) {
      has_bare_declarations = true;
      RegisterDeclarations(graph, scope, node);
    }
  }
}

void RenameDeclaration(CdfgGraph* graph, Scope& scope, NodeId declaration) {
  const char* name = CdfgGetAttrStr(graph, declaration, CfgDecl_NAME);
  const bool is_taken = name != nullptr && scope.HasName(name);
  if (is_taken) CdfgSetAttrStr(graph, declaration, CfgDecl_NAME, scope.FreeName(name).c_str());
  scope.Register(declaration, is_taken);
}

void RenameNested(CdfgGraph* graph, Scope& scope, NodeId body) {
  StatementWalk walk(graph, body);
  while (const NodeId statement = walk.Next()) {
    if (walk.Depth() == 0 || CdfgGetKind(graph, statement) != CFG_DECLARE_DEF) continue;
    for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, statement, CfgDeclDef_DECL))) {
      if (CdfgGetKind(graph, node) == CFG_DECLARE) RenameDeclaration(graph, scope, node);
    }
  }
}

// --- References ----------------------------------------------------------------------------------

// What kind of chain the walk of references is on.
enum Tag : int { kExpression, kDeclarations, kInitialiser };

// The indexes of a port or of a declaration.
void EnterIndexes(const CdfgGraph* graph, ChainWalk& walk, NodeId first) {
  for (const NodeId index : NextChain(graph, first)) {
    walk.Enter(CdfgGetAttr(graph, index, DfgDim_NODE), kExpression);
  }
}

// Members keep their names; only what the reference begins with is a variable.
void RenamePort(CdfgGraph* graph, ChainWalk& walk, NodeId port) {
  for (const NodeId member : MemberChain(graph, port)) {
    EnterIndexes(graph, walk, CdfgGetAttr(graph, member, DfgPort_DIMNODE));
  }
  const NodeId declaration = CdfgGetAttr(graph, port, DfgPort_DECL);
  const auto* entry = static_cast<const ScopeEntry*>(CdfgGetUserData(graph, declaration));
  if (entry != nullptr && entry->renamed) CdfgSetAttrStr(graph, port, DfgPort_NAME, entry->name);
}

bool IsPlainPort(std::uint32_t kind) {
  return kind == DFG_INPUT_PORT || kind == DFG_INPUT_VAR || kind == DFG_OUTPUT_PORT ||
         kind == DFG_OUTPUT_VAR;
}

// What stands in front of an assignment edge: the target, or the operation that computes it.
void VisitTargets(CdfgGraph* graph, ChainWalk& walk, NodeId edge) {
  for (const NodeId node : NextChain(graph, CdfgPrevUntilOperation(graph, edge))) {
    if (node == edge) break;
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == DFG_OPERATION) {
      walk.EnterOperands(node, kExpression);
    } else if (IsPlainPort(kind)) {
      RenamePort(graph, walk, node);
    }
  }
}

void VisitExpression(CdfgGraph* graph, ChainWalk& walk, NodeId node) {
  const std::uint32_t kind = CdfgGetKind(graph, node);
  if (kind == DFG_OPERATION) {
    walk.EnterOperands(node, kExpression);
  } else if (CdfgIsAssignment(kind)) {
    VisitTargets(graph, walk, node);
  } else if (CdfgIsPortOrConcat(kind)) {
    RenamePort(graph, walk, node);
  } else if (kind == DFG_FUNC_CALL) {
    for (const NodeId info : NextChain(graph, CdfgGetAttr(graph, node, DfgFuncCall_ARGLIST))) {
      walk.Enter(CdfgGetAttr(graph, info, DfgPortInfo_SIGNAL), kExpression);
    }
  }
}

// An initialiser that is no operation and no reference is taken for a member list, so a variable or
// a call that stands there bare is not seen: kept.
void VisitDeclaration(const CdfgGraph* graph, ChainWalk& walk, NodeId declaration) {
  if (CdfgGetKind(graph, declaration) != CFG_DECLARE) return;
  EnterIndexes(graph, walk, CdfgGetAttr(graph, declaration, CfgDecl_DIMNODE));
  const NodeId structure = CdfgGetAttr(graph, declaration, CfgDecl_STRUCTNODE);
  walk.Enter(CdfgGetAttr(graph, structure, CfgStruct_MEMBER), kDeclarations);
  const NodeId initialiser = CdfgGetAttr(graph, declaration, CfgDecl_INIT);
  const std::uint32_t kind = CdfgGetKind(graph, initialiser);
  const bool is_expression = kind == DFG_OPERATION || kind == DFG_EDGE_PRESEDE;
  walk.Enter(initialiser, is_expression ? kExpression : kInitialiser);
}

void VisitInitialiser(const CdfgGraph* graph, ChainWalk& walk, NodeId node) {
  const std::uint32_t kind = CdfgGetKind(graph, node);
  if (kind == CFG_MEMBER_LIST) {
    walk.Enter(CdfgGetAttr(graph, node, CfgMemberList_MEMBER), kInitialiser);
  } else if (kind == CFG_MEMBER) {
    walk.Enter(CdfgGetAttr(graph, node, CfgMember_SIGNAL), kExpression);
  }
}

void RenameReferencesFrom(CdfgGraph* graph, ChainWalk& walk, NodeId first, Tag tag) {
  walk.Start(first, tag);
  while (const NodeId node = walk.Next()) {
    switch (walk.Tag()) {
      case kDeclarations:
        VisitDeclaration(graph, walk, node);
        break;
      case kInitialiser:
        VisitInitialiser(graph, walk, node);
        break;
      default:
        VisitExpression(graph, walk, node);
        break;
    }
  }
}

void RenameReferences(CdfgGraph* graph, NodeId body) {
  ChainWalk walk(graph);
  StatementWalk statements(graph, body);
  while (const NodeId statement = statements.Next()) {
    if (CdfgGetKind(graph, statement) == CFG_DECLARE_DEF) {
      RenameReferencesFrom(graph, walk, CdfgGetAttr(graph, statement, CfgDeclDef_DECL),
                           kDeclarations);
    }
    for (const NodeId operation : NextChain(graph, CdfgGetOperationList(graph, statement))) {
      if (CdfgGetKind(graph, operation) != DFG_MANAGE_OPERATION) continue;
      RenameReferencesFrom(graph, walk, CdfgGetAttr(graph, operation, DfgOpeman_OPE), kExpression);
    }
  }
}

void RenameFunction(CdfgGraph* graph, NodeId function) {
  Scope scope(graph);
  const NodeId body = CdfgGetAttr(graph, function, CfgFunc_STARTCFG);
  RegisterDeclarations(graph, scope, CdfgGetAttr(graph, function, CfgFunc_ARGLIST));
  RegisterDeclarations(graph, scope, CdfgGetAttr(graph, function, CfgFunc_DECLARE));
  RegisterTopLevel(graph, scope, body);
  RenameNested(graph, scope, body);
  RenameReferences(graph, body);
}

}  // namespace

int RenameBlockLocals(CdfgGraph* graph) {
  FunctionCursor functions = ModuleCode(graph);
  while (const NodeId function = functions.Next()) RenameFunction(graph, function);
  return 0;
}
