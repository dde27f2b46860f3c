// Flattens nested structure definitions.
//
//   struct s { struct { int x; struct q { int y; } b; } a; };
//   ->  struct __ss_tag_1 { int x; struct q b; };
//       struct q { int y; };
//       struct s { struct __ss_tag_1 a; };
//
// A member defined in place names the CFG_STRUCT_DEF of its structure in CfgDecl_STRUCTORGNODE;
// afterwards it names the CFG_STRUCT, and the definition stands in the statement chain, each in
// front of those nested inside it.
//
// A file may define a tag several times (a header read for several sources). All definitions of a
// tag in one file make up a group and are walked side by side, so that nested structures that
// correspond get the same tag. They are taken to have the same members in the same order.
//
// Phases:
//   1. group the tagged structures of each file and its functions by tag and file;
//   2. walk the members of each group, the newest group first: note each nested definition, give it
//      a tag if it has none, and walk its members in turn;
//   3. hoist what was noted in front of the definition that it was found in.
#include "passes/modify_structure.h"

#include <deque>
#include <string>
#include <vector>

#include "cdfg/chain.h"
#include "cdfg/deep.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/kinds.h"
#include "cdfg/name_set.h"
#include "cdfg/runaway.h"
#include "cdfg/walk.h"

namespace {

// How many links the pass makes at most, over and above some for each node. Definitions shared so
// often that their number doubles with every level have more, and nobody lives to see them hoisted.
constexpr std::size_t kLinksAtLeast = 1'000'000;
constexpr std::size_t kLinksPerNode = 8;

// Goes on counting in later runs of the pass: tags stay unique in the process.
int tag_counter = 1;

// A nested definition found: the member, the CFG_STRUCT_DEF that it names, the CFG_STRUCT in that.
struct NestedStructLink {
  NodeId member;
  NodeId definition;
  NodeId structure;
};

// One definition of a tag.
struct StructEntry {
  NodeId definition;
  NodeId structure;
  std::vector<NestedStructLink> links;  // outer ones before those nested in them
};

// All definitions of one tag in one file.
struct StructGroup {
  std::vector<StructEntry> entries;
};

struct Modifying {
  CdfgGraph* graph;
  std::deque<StructGroup> groups = {};  // newest first
  TextMap<StructGroup*> groups_by_key = {};
  IdSet expanding = {};  // structures whose members are being walked
  IdSet hoisted = {};
  std::size_t links = 0;  // in all entries
};

// --- Phase 1: groups -----------------------------------------------------------------------------

std::string GroupKey(const char* tag, const char* file) {
  std::string key(tag);
  key.push_back('\0');
  return file == nullptr ? key : key.append("f").append(file);
}

void AddToGroup(Modifying& run, NodeId definition, NodeId structure) {
  const char* tag = CdfgGetAttrStr(run.graph, structure, CfgStruct_TAGNAME);
  if (tag == nullptr) return;
  StructGroup*& group = run.groups_by_key[GroupKey(tag, CdfgGetFileName(run.graph, structure))];
  if (group == nullptr) group = &run.groups.emplace_front();
  group->entries.push_back({definition, structure, {}});
}

void GroupStructures(Modifying& run, NodeId elements) {
  const CdfgGraph* graph = run.graph;
  ChainWalk walk(graph, elements);
  while (const NodeId node = walk.Next()) {
    const std::uint32_t kind = CdfgGetKind(graph, node);
    if (kind == CFG_FUNCTION) {
      walk.Enter(CdfgGetAttr(graph, node, CfgFunc_STARTCFG));
    } else if (kind == CFG_STRUCT_DEF) {
      for (const NodeId structure :
           NextChain(graph, CdfgGetAttr(graph, node, CfgStructDef_STRUCT))) {
        if (CdfgGetKind(graph, structure) == CFG_STRUCT) AddToGroup(run, node, structure);
      }
    }
  }
}

// --- Phase 2: nested definitions -----------------------------------------------------------------

// Where the walk of one entry stands in the structure at hand.
struct Cursor {
  StructEntry* entry;
  NodeId member;  // a CFG_DECLARE; 0: no more members
  ChainGuard guard = {};
};

// Moves on from `node`, which is looked at itself, to the next declaration.
void MoveToDeclaration(const CdfgGraph* graph, Cursor& cursor, NodeId node) {
  while (node != 0) {
    cursor.guard.Visit(node);
    if (CdfgGetKind(graph, node) == CFG_DECLARE) break;
    node = CdfgGetNext(graph, node);
  }
  cursor.member = node;
}

// An entry without further members has no part in what follows; the first one always stays.
void DropExhausted(std::vector<Cursor>& cursors) {
  const auto is_exhausted = [&](const Cursor& cursor) {
    return cursor.member == 0 && &cursor != &cursors.front();
  };
  std::vector<Cursor> rest;
  for (const Cursor& cursor : cursors) {
    if (!is_exhausted(cursor)) rest.push_back(cursor);
  }
  if (rest.size() != cursors.size()) cursors.swap(rest);
}

NodeId OriginOf(const CdfgGraph* graph, NodeId member) {
  return CdfgGetAttr(graph, member, CfgDecl_STRUCTORGNODE);
}

// Whether the member is a structure that is defined in place and not being walked already.
bool IsDefinedInPlace(const Modifying& run, NodeId member) {
  const CdfgGraph* graph = run.graph;
  if (CdfgGetAttrInt(graph, member, CfgDecl_VALTYPE) != DECL_VALTYPE_STRUCT) return false;
  const NodeId origin = OriginOf(graph, member);
  if (CdfgGetKind(graph, origin) != CFG_STRUCT_DEF) return false;
  return !run.expanding.contains(CdfgGetAttr(graph, origin, CfgStructDef_STRUCT));
}

NestedStructLink LinkOf(const CdfgGraph* graph, NodeId member) {
  const NodeId origin = OriginOf(graph, member);
  const bool is_definition = CdfgGetKind(graph, origin) == CFG_STRUCT_DEF;
  return {member, origin, is_definition ? CdfgGetAttr(graph, origin, CfgStructDef_STRUCT) : 0};
}

void CountLink(Modifying& run, NodeId member) {
  if (++run.links > kLinksAtLeast + kLinksPerNode * CdfgNodeCount(run.graph)) {
    CdfgStopEndless(member);
  }
}

// Notes the nested definitions at the cursors. They get one tag if the first has none.
void NoteNested(Modifying& run, std::vector<Cursor>& cursors) {
  std::string tag;
  for (Cursor& cursor : cursors) {
    const NestedStructLink link = LinkOf(run.graph, cursor.member);
    cursor.entry->links.push_back(link);
    CountLink(run, cursor.member);
    const bool is_first = &cursor == &cursors.front();
    if (is_first && CdfgGetAttrStr(run.graph, link.structure, CfgStruct_TAGNAME) == nullptr) {
      tag = NameSetFresh("__ss_tag_", 1, &tag_counter);
    }
    if (!tag.empty()) CdfgSetAttrStr(run.graph, link.structure, CfgStruct_TAGNAME, tag.c_str());
  }
}

// The cursors at the first members of the structures that the members at `cursors` have.
std::vector<Cursor> CursorsInside(const CdfgGraph* graph, const std::vector<Cursor>& cursors) {
  std::vector<Cursor> inside;
  for (const Cursor& cursor : cursors) {
    NodeId structure = OriginOf(graph, cursor.member);
    if (CdfgGetKind(graph, structure) == CFG_STRUCT_DEF) {
      structure = CdfgGetAttr(graph, structure, CfgStructDef_STRUCT);
    }
    inside.push_back({cursor.entry, 0});
    MoveToDeclaration(graph, inside.back(), CdfgGetAttr(graph, structure, CfgStruct_MEMBER));
  }
  DropExhausted(inside);
  return inside;
}

// The first entry decides what is nested; the members of the others follow in step.
Deep<> Expand(Modifying& run, std::vector<Cursor> cursors) {
  const CdfgGraph* graph = run.graph;
  while (cursors.front().member != 0) {
    const NodeId member = cursors.front().member;
    if (IsDefinedInPlace(run, member)) {
      NoteNested(run, cursors);
      const NodeId structure = LinkOf(graph, member).structure;
      run.expanding.insert(structure);
      co_await Expand(run, CursorsInside(graph, cursors));
      run.expanding.erase(structure);
    }
    for (Cursor& cursor : cursors) {
      MoveToDeclaration(graph, cursor, CdfgGetNext(graph, cursor.member));
    }
    DropExhausted(cursors);
  }
}

void ExpandGroup(Modifying& run, StructGroup& group) {
  std::vector<Cursor> cursors;
  for (StructEntry& entry : group.entries) {
    cursors.push_back({&entry, 0});
    const NodeId first = CdfgGetAttr(run.graph, entry.structure, CfgStruct_MEMBER);
    MoveToDeclaration(run.graph, cursors.back(), first);
  }
  DropExhausted(cursors);
  const NodeId outermost = group.entries.front().structure;
  run.expanding.insert(outermost);
  RunDeep(Expand(run, std::move(cursors)));
  run.expanding.erase(outermost);
}

// --- Phase 3: hoisting ---------------------------------------------------------------------------

// A chain of definitions on their way out.
struct Hoist {
  NodeId first = 0;
  NodeId last = 0;
};

void AddToHoist(CdfgGraph* graph, Hoist& hoist, NodeId definition) {
  CdfgSetNext(graph, definition, 0);
  if (hoist.first == 0) {
    hoist.first = definition;
  } else {
    CdfgAppend(graph, hoist.last, definition);
  }
  hoist.last = definition;
}

// A definition that is met again stands outside already; only the member is re-pointed.
void HoistLink(Modifying& run, const StructEntry& entry, const NestedStructLink& link,
               Hoist& hoist) {
  CdfgGraph* graph = run.graph;
  CdfgSetAttrNode(graph, link.member, CfgDecl_STRUCTORGNODE, link.structure);
  if (link.definition == entry.definition || !run.hoisted.insert(link.definition).second) return;
  const char* file = CdfgGetFileName(graph, entry.definition);
  if (file != nullptr) CdfgSetFileName(graph, link.definition, file);
  AddToHoist(graph, hoist, link.definition);
}

void InsertInFront(CdfgGraph* graph, NodeId definition, const Hoist& hoist) {
  const NodeId prev = CdfgGetPrev(graph, definition);
  const std::uint32_t body = CdfgBodyAttribute(CdfgGetKind(graph, prev));
  if (body != 0 && CdfgGetAttr(graph, prev, body) == definition) {
    CdfgSetAttrNode(graph, prev, body, hoist.first);
  } else {
    CdfgSetNext(graph, prev, hoist.first);
  }
  CdfgSetPrev(graph, hoist.first, prev);
  CdfgAppend(graph, hoist.last, definition);
}

void HoistEntry(Modifying& run, const StructEntry& entry) {
  Hoist hoist;
  for (const NestedStructLink& link : entry.links) {
    if (link.definition != 0) HoistLink(run, entry, link, hoist);
  }
  if (hoist.first != 0) InsertInFront(run.graph, entry.definition, hoist);
}

}  // namespace

void ResetStructureTags() { tag_counter = 1; }

int ModifyStructures(CdfgGraph* graph) {
  Modifying run{graph};
  for (const NodeId file : CdfgGetFiles(graph)) {
    GroupStructures(run, CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT));
  }
  for (StructGroup& group : run.groups) ExpandGroup(run, group);
  if (run.links == 0) return 0;
  for (const StructGroup& group : run.groups) {
    for (const StructEntry& entry : group.entries) HoistEntry(run, entry);
  }
  return 0;
}
