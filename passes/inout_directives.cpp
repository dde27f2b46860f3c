// Spreads the directives of structure variables onto their members, since the hardware sees the
// members one by one.
//
//   struct { int a; struct { float b; } t; } s;
//   directive of s                        what the members get
//   input : varname = s.t.b               b: the same text
//   float                                 every float or double member at any depth: float
//
// Two scans run over a list of declarations. The first wants more than two words, spreads the
// directives that name a member and takes a leading word float as well; the second spreads by the
// letters float alone. A float directive of more than two words is seen by both, so its members
// get two: kept.
//
// Needs each structure variable to have its own structure node.
#include "passes/inout_directives.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/directive.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/hash_index.h"
#include "cdfg/records.h"
#include "cdfg/tokens.h"
#include "cdfg/walk.h"
#include "passes/module_list.h"

namespace {

constexpr std::size_t kMostTokens = 30;
constexpr std::string_view kDelimiters = " \t:=\n\r";

struct Run {
  CdfgGraph* graph;
  // The last directive of each member that was given more than one: variables that share a
  // structure node all add to the same members, and no list is walked to its end again.
  IdMap<NodeId> last_directives = {};
};

// A directive that names a member by its path, which stands somewhere in its text. Its type and
// text are read when it is spread: in a damaged graph a new directive may have taken its id.
struct NamingDirective {
  NodeId directive;
  const char* path;  // in its text, which the store owns
  std::uint32_t path_length;

  std::string_view Path() const { return {path, path_length}; }
};

// What one structure variable hands to its members.
struct Spreading {
  bool is_float = false;
  // The first directive for each path. Paths that only begin alike with a wanted one are many, so
  // a path is looked up by a hash that grows with it, and compared only when that is found.
  Records<NamingDirective> directives = {};
  HashIndex by_path = {};
};

// A member path as it grows and shrinks along the walk: its length and its hash.
struct Path {
  std::size_t length;
  std::uint64_t hash;
};

// The hash of a path is made of those of the texts between its points, so that the members of one
// structure are neighbours (cdfg/hash.h) when their names are.
std::uint64_t ExtendHash(std::uint64_t hash, std::string_view names) {
  for (;;) {
    const std::size_t point = names.find('.');
    hash = TextHash{}(names.substr(0, point)) ^ (MixBits(hash) << 4);
    if (point == std::string_view::npos) return hash;
    names.remove_prefix(point + 1);
  }
}

constexpr std::uint64_t kEmptyHash = 0;

bool IsStructure(const CdfgGraph* graph, NodeId declaration) {
  return CdfgGetAttrInt(graph, declaration, CfgDecl_VALTYPE) == DECL_VALTYPE_STRUCT;
}

NodeId MembersOf(const CdfgGraph* graph, NodeId declaration) {
  const NodeId structure = CdfgGetAttr(graph, declaration, CfgDecl_STRUCTNODE);
  return CdfgGetAttr(graph, structure, CfgStruct_MEMBER);
}

std::string_view NameOr(const CdfgGraph* graph, NodeId declaration, std::string_view otherwise) {
  const char* name = CdfgGetAttrStr(graph, declaration, CfgDecl_NAME);
  return name == nullptr ? otherwise : name;
}

// --- Reading directives --------------------------------------------------------------------------

struct Words {
  std::array<std::string_view, kMostTokens> words;
  std::size_t count = 0;
};

Words Split(std::string_view text) {
  Words split;
  Tokens tokens(text);
  while (split.count < kMostTokens) {
    const std::string_view word = tokens.Next(kDelimiters);
    if (word.empty()) break;
    split.words[split.count++] = word;
  }
  return split;
}

// The word behind the first varname, empty if there is none.
std::string_view NamedPath(const Words& split) {
  for (std::size_t i = 1; i + 1 < split.count; ++i) {
    if (split.words[i] == "varname") return split.words[i + 1];
  }
  return {};
}

bool IsDirection(std::string_view word) {
  return word == "input" || word == "output" || word == "inout";
}

void AddNaming(Spreading& spreading, const NamingDirective& naming) {
  const auto next = static_cast<std::uint32_t>(spreading.directives.Size());
  const std::uint32_t number = spreading.by_path.FindOrAdd(
      ExtendHash(kEmptyHash, naming.Path()), next,
      [&](auto other) { return spreading.directives[other].Path() == naming.Path(); });
  if (number == next) spreading.directives.Add(naming);
}

void ReadDirective(Spreading& spreading, NodeId directive, const char* text) {
  const Words split = Split(text);
  if (split.count <= 2) return;
  if (IsDirection(split.words[0])) {
    const std::string_view path = NamedPath(split);
    if (path.empty()) return;
    AddNaming(spreading, {directive, path.data(), static_cast<std::uint32_t>(path.size())});
  } else if (split.words[0] == "float") {
    spreading.is_float = true;
  }
}

// --- Spreading -----------------------------------------------------------------------------------

void AddDirective(Run& run, NodeId member, std::int32_t type, const char* text) {
  CdfgGraph* graph = run.graph;
  const NodeId directive = CdfgCreateNode(graph, INFO_DIRECTIVE, 0);
  CdfgSetAttrInt(graph, directive, DfgDirective_TYPE, type);
  CdfgSetAttrStr(graph, directive, DfgDirective_STR, text);
  const NodeId first = CdfgGetAttr(graph, member, CfgDecl_DIRECTIVE);
  if (first == 0) {
    CdfgSetAttrNode(graph, member, CfgDecl_DIRECTIVE, directive);
  } else {
    NodeId& last = run.last_directives.try_emplace(member, first).first->second;
    CdfgAppend(graph, last, directive);
    last = directive;
  }
}

// Whether the path is that of a member called `name` in the structure at `outer`.
bool IsPathOf(std::string_view path, std::string_view outer, std::string_view name) {
  return path.size() == outer.size() + 1 + name.size() && path.starts_with(outer) &&
         path[outer.size()] == '.' && path.ends_with(name);
}

void SpreadOnto(Run& run, const Spreading& spreading, NodeId member, std::uint64_t hash,
                std::string_view outer, std::string_view name) {
  const CdfgGraph* graph = run.graph;
  const std::uint32_t number = spreading.by_path.Find(hash, [&](std::uint32_t other) {
    return IsPathOf(spreading.directives[other].Path(), outer, name);
  });
  if (number != HashIndex::kNone) {
    const NamingDirective& naming = spreading.directives[number];
    AddDirective(run, member, CdfgGetAttrInt(graph, naming.directive, DfgDirective_TYPE),
                 CdfgGetAttrStr(graph, naming.directive, DfgDirective_STR));
  }
  const std::int32_t value_type = CdfgGetAttrInt(graph, member, CfgDecl_VALTYPE);
  if (spreading.is_float &&
      (value_type == DECL_VALTYPE_FLOAT || value_type == DECL_VALTYPE_DOUBLE)) {
    AddDirective(run, member, kModuleDirective, "float");
  }
}

// Hands what `variable` spreads to its members, and to those of members that are structures.
void Distribute(Run& run, const Spreading& spreading, NodeId variable) {
  const CdfgGraph* graph = run.graph;
  std::string text(NameOr(graph, variable, "(null)"));
  std::vector<Path> paths{{text.size(), ExtendHash(kEmptyHash, text)}};  // by depth
  ChainWalk walk(graph, MembersOf(graph, variable));
  while (const NodeId member = walk.Next()) {
    if (CdfgGetKind(graph, member) != CFG_DECLARE) continue;
    const Path outer = paths[walk.Depth()];
    const std::string_view name = NameOr(graph, member, "??");
    const std::uint64_t hash = ExtendHash(outer.hash, name);
    text.resize(outer.length);
    if (IsStructure(graph, member)) {
      text.append(".").append(name);
      paths.resize(walk.Depth() + 1);
      paths.push_back({text.size(), hash});
      walk.Enter(MembersOf(graph, member));
    } else {
      SpreadOnto(run, spreading, member, hash, text, name);
    }
  }
}

// --- The two scans -------------------------------------------------------------------------------

// Calls `act` with every directive of the declaration that has a text, until it answers true.
template <class Act>
void ForDirectives(const CdfgGraph* graph, NodeId declaration, Act act) {
  for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, declaration, CfgDecl_DIRECTIVE))) {
    if (CdfgGetKind(graph, node) != INFO_DIRECTIVE) continue;
    const char* text = CdfgGetAttrStr(graph, node, DfgDirective_STR);
    if (text != nullptr && act(node, text)) return;
  }
}

void SpreadNamedMembers(Run& run, NodeId declaration) {
  Spreading spreading;
  ForDirectives(run.graph, declaration, [&](NodeId directive, const char* text) {
    ReadDirective(spreading, directive, text);
    return false;
  });
  if (spreading.is_float || !spreading.directives.IsEmpty()) {
    Distribute(run, spreading, declaration);
  }
}

void SpreadFloat(Run& run, NodeId declaration) {
  Spreading spreading;
  ForDirectives(run.graph, declaration, [&](NodeId, const char* text) {
    spreading.is_float = std::string_view(text).starts_with("float");
    return spreading.is_float;
  });
  if (spreading.is_float) Distribute(run, spreading, declaration);
}

void ScanDeclarations(Run& run, NodeId list, void (*scan)(Run&, NodeId)) {
  const CdfgGraph* graph = run.graph;
  for (const NodeId node : NextChain(graph, list)) {
    if (CdfgGetKind(graph, node) == CFG_DECLARE && IsStructure(graph, node)) scan(run, node);
  }
}

void ScanFunction(Run& run, NodeId function) {
  const CdfgGraph* graph = run.graph;
  const NodeId arguments = CdfgGetAttr(graph, function, CfgFunc_ARGLIST);
  ScanDeclarations(run, arguments, SpreadNamedMembers);
  ScanDeclarations(run, arguments, SpreadFloat);
  ScanDeclarations(run, CdfgGetAttr(graph, function, CfgFunc_DECLARE), SpreadFloat);
}

void ScanElement(Run& run, NodeId element, const char* file_name) {
  const CdfgGraph* graph = run.graph;
  const std::uint32_t kind = CdfgGetKind(graph, element);
  if (kind == CFG_DECLARE_DEF) {
    const NodeId list = CdfgGetAttr(graph, element, CfgDeclDef_DECL);
    ScanDeclarations(run, list, SpreadNamedMembers);
    ScanDeclarations(run, list, SpreadFloat);
  } else if (kind == CFG_FUNCTION) {
    const char* name = CdfgGetAttrStr(graph, element, CfgFunc_NAME);
    if (IsModuleFunction(name, file_name) == 1) ScanFunction(run, element);
  }
}

}  // namespace

int DivideInoutDirectives(CdfgGraph* graph) {
  Run run{graph};
  for (const NodeId file : CdfgGetFiles(graph)) {
    const char* file_name = CdfgGetAttrStr(graph, file, CfgFileinfo_NAME);
    for (const NodeId element : NextChain(graph, CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT))) {
      ScanElement(run, element, file_name);
    }
  }
  return 0;
}
