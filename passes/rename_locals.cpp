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
// Owns, for the length of one function, the user data of the declarations renamed: the new name.
#include "passes/rename_locals.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/hash_index.h"
#include "cdfg/kinds.h"
#include "cdfg/records.h"
#include "cdfg/text_table.h"
#include "cdfg/walk.h"
#include "passes/module_list.h"

namespace {

// The names of one function. Clears the user data of its declarations at its end.
class Scope {
 public:
  explicit Scope(CdfgGraph* graph) : graph_(graph) {}
  ~Scope() {
    for (std::size_t i = 0; i < renamed_.Size(); ++i) {
      CdfgSetUserData(graph_, renamed_[i], nullptr);
    }
  }
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;

  // Registers the name of a declaration, which may have none; false when the name is taken.
  bool Register(NodeId declaration) {
    const char* name = CdfgGetAttrStr(graph_, declaration, CfgDecl_NAME);
    return name == nullptr || names_.Add(name);
  }

  // Gives the declaration the first of name000, name001, ... that nobody has, and registers it.
  void Rename(NodeId declaration) {
    MakeFreeName(CdfgGetAttrStr(graph_, declaration, CfgDecl_NAME));
    CdfgSetAttrStr(graph_, declaration, CfgDecl_NAME, free_name_.c_str());
    // The store owns the string; user data holds no constants.
    char* name = const_cast<char*>(CdfgGetAttrStr(graph_, declaration, CfgDecl_NAME));
    CdfgSetUserData(graph_, declaration, name);
    renamed_.Add(declaration);
  }

 private:
  // Names are never given up, so each search goes on where the last one for the same name ended.
  struct Search {
    std::string_view name;
    int next_number;
  };

  Search& SearchFor(std::string_view name) {
    const auto next = static_cast<std::uint32_t>(searches_.Size());
    const std::uint32_t number = searches_by_name_.FindOrAdd(
        TextHash{}(name), next, [&](std::uint32_t other) { return searches_[other].name == name; });
    if (number == next) searches_.Add({{texts_.Keep(name), name.size()}, 0});
    return searches_[number];
  }

  void Number(std::string& numbered, std::string_view name, int number) {
    char digits[16];
    std::snprintf(digits, sizeof digits, "%03d", number);
    numbered.assign(name).append(digits);
  }

  // Ten names that follow one another lie side by side: the next ten are fetched while these are
  // used up.
  void ExpectNextTen(std::string_view name, int number) {
    constexpr int kTen = 10;
    if (number % kTen != 0 || number > INT_MAX - kTen) return;
    Number(expected_name_, name, number + kTen);
    names_.Expect(expected_name_);
  }

  void MakeFreeName(std::string_view name) {
    Search& search = SearchFor(name);
    do {
      const int number = search.next_number++;
      ExpectNextTen(name, number);
      Number(free_name_, name, number);
    } while (!names_.Add(free_name_));
  }

  CdfgGraph* graph_;
  TextTable names_;
  Records<NodeId> renamed_;
  TextArena texts_;
  Records<Search> searches_;
  HashIndex searches_by_name_;
  std::string free_name_;
  std::string expected_name_;
};

// --- Registering and renaming --------------------------------------------------------------------

void RegisterDeclarations(CdfgGraph* graph, Scope& scope, NodeId list) {
  for (const NodeId node : NextChain(graph, list)) {
    if (CdfgGetKind(graph, node) == CFG_DECLARE) scope.Register(node);
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

void RenameNested(CdfgGraph* graph, Scope& scope, NodeId body) {
  StatementWalk walk(graph, body);
  while (const NodeId statement = walk.Next()) {
    if (walk.Depth() == 0 || CdfgGetKind(graph, statement) != CFG_DECLARE_DEF) continue;
    for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, statement, CfgDeclDef_DECL))) {
      if (CdfgGetKind(graph, node) == CFG_DECLARE && !scope.Register(node)) scope.Rename(node);
    }
  }
}

// --- References ----------------------------------------------------------------------------------

// What kind of chain the walk of references is on.
enum Tag : int { kExpression, kDeclarations, kInitialiser };

// The indexes of a port or of a declaration.
void EnterIndexes(const CdfgGraph* graph, ChainWalk& walk, NodeId first) {
  CdfgEnterListed(graph, walk, first, DfgDim_NODE, kExpression);
}

// Members keep their names; only what the reference begins with is a variable.
void RenamePort(CdfgGraph* graph, ChainWalk& walk, NodeId port) {
  for (const NodeId member : MemberChain(graph, port)) {
    EnterIndexes(graph, walk, CdfgGetAttr(graph, member, DfgPort_DIMNODE));
  }
  const NodeId declaration = CdfgGetAttr(graph, port, DfgPort_DECL);
  const auto* name = static_cast<const char*>(CdfgGetUserData(graph, declaration));
  if (name != nullptr) CdfgSetAttrStr(graph, port, DfgPort_NAME, name);
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
