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

#include <cstring>
#include <string>

#include "cdfg/chain.h"
#include "cdfg/edit.h"
#include "cdfg/hash.h"
#include "cdfg/hash_index.h"
#include "cdfg/id_bits.h"
#include "cdfg/kinds.h"
#include "cdfg/name_set.h"
#include "cdfg/read_ahead.h"
#include "cdfg/records.h"
#include "cdfg/runaway.h"
#include "cdfg/walk.h"

namespace {

// How many links the pass makes at most, over and above some for each node. Definitions shared so
// often that their number doubles with every level have more, and nobody lives to see them hoisted.
constexpr std::size_t kLinksAtLeast = 1'000'000;
constexpr std::size_t kLinksPerNode = 8;

// How far ahead memory is asked for: attributes by so many records, nodes by twice as many.
constexpr std::size_t kFewAhead = 8;
// A member, the definition in it and the structure in that, with what they usually have.
constexpr std::uintptr_t kNested = 5;
constexpr std::uintptr_t kNestedAttributes = 18;

// Goes on counting in later runs of the pass: tags stay unique in the process.
int tag_counter = 1;

// Groups, entries and links lie one behind the other, each sort in a list of its own, and know each
// other by place.
using Place = std::uint32_t;
constexpr Place kNoPlace = HashIndex::kNone;

// A list of records that are linked by `next`.
struct PlaceList {
  Place first = kNoPlace;
  Place last = kNoPlace;
};

// A nested definition found: the member, the CFG_STRUCT_DEF that it names, the CFG_STRUCT in that.
struct NestedStructLink {
  NodeId member;
  NodeId definition;
  NodeId structure;
  Place next = kNoPlace;
};

// One definition of a tag.
struct StructEntry {
  NodeId definition;
  NodeId structure;
  Place next = kNoPlace;
  PlaceList links = {};  // outer ones before those nested in them
};

// All definitions of one tag in one file: a list of entries.
using StructGroup = PlaceList;

// Where the walk of one entry stands in a structure.
struct Cursor {
  Place entry;
  NodeId member;  // a CFG_DECLARE; 0: no more members
  NodeId next;    // behind it; no link changes before all walks are done
  ChainGuard guard = {};
};

// A structure whose members are being walked, with the cursors in it, which reach to those of the
// structure inside it.
struct Level {
  NodeId structure;
  std::size_t first_cursor;
};

struct Modifying {
  CdfgGraph* graph;
  Records<StructGroup> groups = {};
  Records<StructEntry> entries = {};
  Records<NestedStructLink> links = {};
  HashIndex groups_by_key = {};
  Records<Level> levels = {};  // outermost first
  Records<Cursor> cursors = {};
  IdBits expanding = {};  // structures whose members are being walked
  IdBits hoisted = {};
};

// Adds a record that was found at `node`.
template <class Record>
void AppendTo(PlaceList& list, Records<Record>& records, const Record& record, NodeId node) {
  if (records.Size() == kNoPlace) CdfgStopEndless(node);
  const auto place = static_cast<Place>(records.Size());
  records.Add(record);
  if (list.first == kNoPlace) {
    list.first = place;
  } else {
    records[list.last].next = place;
  }
  list.last = place;
}

// --- Reading ahead -------------------------------------------------------------------------------

// Asks for the nodes named by the records behind the one at a place, `kNodes` from each on with
// `kAttributes`. Records are mostly used in their order; where they are not, asking does no harm.
template <std::uintptr_t kNodes, std::uintptr_t kAttributes, class Record>
void ExpectAhead(const CdfgGraph* graph, const Records<Record>& records, std::size_t place,
                 NodeId Record::*node) {
  const std::size_t left = records.Size() - place;
  if (left > 2 * kFewAhead) {
    CdfgExpectNodes<kNodes>(graph, records[place + 2 * kFewAhead].*node);
  }
  if (kAttributes > 0 && left > kFewAhead) {
    CdfgExpectAttributes<kAttributes>(graph, records[place + kFewAhead].*node);
  }
}

// The same for the links of the nodes that the records name.
template <class Record>
void ExpectLinksAhead(const CdfgGraph* graph, const Records<Record>& records, std::size_t place,
                      NodeId Record::*node) {
  if (records.Size() - place <= kFewAhead) return;
  CdfgExpectRest<1>(graph, records[place + kFewAhead].*node);
}

// --- Phase 1: groups -----------------------------------------------------------------------------

// What a tagged structure is grouped by.
struct GroupKey {
  const char* tag;
  const char* file;  // may be null
};

GroupKey KeyOf(const CdfgGraph* graph, NodeId structure) {
  return {CdfgGetAttrStr(graph, structure, CfgStruct_TAGNAME), CdfgGetFileName(graph, structure)};
}

std::size_t HashOf(const GroupKey& key) {
  const std::size_t file = key.file == nullptr ? 0 : TextHash{}(key.file);
  return TextHash{}(key.tag) ^ (file << 4);  // tags of one file stay neighbours
}

bool IsSameText(const char* text, const char* other) {
  if (text == other) return true;
  return text != nullptr && other != nullptr && std::strcmp(text, other) == 0;
}

void AddToGroup(Modifying& run, NodeId definition, NodeId structure) {
  const CdfgGraph* graph = run.graph;
  const GroupKey key = KeyOf(graph, structure);
  if (key.tag == nullptr) return;
  const auto next = static_cast<Place>(run.groups.Size());
  const Place group = run.groups_by_key.FindOrAdd(HashOf(key), next, [&](Place other) {
    const GroupKey found = KeyOf(graph, run.entries[run.groups[other].first].structure);
    return IsSameText(found.file, key.file) && IsSameText(found.tag, key.tag);
  });
  if (group == next) run.groups.Add({});
  AppendTo(run.groups[group], run.entries, {definition, structure}, definition);
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

// Moves on from `node`, which is looked at itself, to the next declaration.
void MoveToDeclaration(const CdfgGraph* graph, Cursor& cursor, NodeId node) {
  while (node != 0) {
    cursor.guard.Visit(node);
    cursor.next = CdfgGetNext(graph, node);
    if (CdfgGetKind(graph, node) == CFG_DECLARE) break;
    node = cursor.next;
  }
  cursor.member = node;
}

// An entry without further members has no part in what follows; the first one of a level always
// stays.
bool HasPart(const Modifying& run, const Cursor& cursor) {
  return cursor.member != 0 || &cursor == &run.cursors[run.levels.Last().first_cursor];
}

NestedStructLink LinkOf(const CdfgGraph* graph, NodeId member) {
  const NodeId origin = CdfgGetAttr(graph, member, CfgDecl_STRUCTORGNODE);
  const bool is_definition = CdfgGetKind(graph, origin) == CFG_STRUCT_DEF;
  return {member, origin, is_definition ? CdfgGetAttr(graph, origin, CfgStructDef_STRUCT) : 0};
}

// Whether the member is a structure that is defined in place and not being walked already.
bool IsDefinedInPlace(const Modifying& run, const NestedStructLink& link) {
  const CdfgGraph* graph = run.graph;
  if (CdfgGetAttrInt(graph, link.member, CfgDecl_VALTYPE) != DECL_VALTYPE_STRUCT) return false;
  if (CdfgGetKind(graph, link.definition) != CFG_STRUCT_DEF) return false;
  return !run.expanding.Contains(link.structure);
}

void AddLink(Modifying& run, Place entry, const NestedStructLink& link) {
  AppendTo(run.entries[entry].links, run.links, link, link.member);
  if (run.links.Size() > kLinksAtLeast + kLinksPerNode * CdfgNodeCount(run.graph)) {
    CdfgStopEndless(link.member);
  }
}

// Notes the nested definitions at the cursors of the innermost level. They get one tag if the first
// has none.
void NoteNested(Modifying& run) {
  std::string tag;
  const std::size_t first = run.levels.Last().first_cursor;
  for (std::size_t i = first; i < run.cursors.Size(); ++i) {
    ExpectAhead<kNested, kNestedAttributes>(run.graph, run.cursors, i, &Cursor::member);
    const NestedStructLink link = LinkOf(run.graph, run.cursors[i].member);
    AddLink(run, run.cursors[i].entry, link);
    if (i == first && CdfgGetAttrStr(run.graph, link.structure, CfgStruct_TAGNAME) == nullptr) {
      tag = NameSetFresh("__ss_tag_", 1, &tag_counter);
    }
    if (!tag.empty()) CdfgSetAttrStr(run.graph, link.structure, CfgStruct_TAGNAME, tag.c_str());
  }
}

void AddCursor(Modifying& run, Place entry, NodeId structure) {
  Cursor& cursor = run.cursors.Add({entry, 0, 0});
  MoveToDeclaration(run.graph, cursor, CdfgGetAttr(run.graph, structure, CfgStruct_MEMBER));
  if (!HasPart(run, cursor)) run.cursors.Cut(run.cursors.Size() - 1);
}

void OpenLevel(Modifying& run, NodeId structure) {
  run.expanding.Add(structure);
  run.levels.Add({structure, run.cursors.Size()});
}

// The structure that a noted member has.
NodeId StructureOf(const CdfgGraph* graph, const NestedStructLink& link) {
  if (link.structure != 0) return link.structure;
  return CdfgGetKind(graph, link.definition) == CFG_STRUCT_DEF ? 0 : link.definition;
}

// Goes into the structures of the members at the cursors, which were noted last.
void EnterMembers(Modifying& run) {
  const std::size_t outer = run.levels.Last().first_cursor;
  const std::size_t count = run.cursors.Size() - outer;
  const std::size_t noted = run.links.Size() - count;
  OpenLevel(run, run.links[noted].structure);
  for (std::size_t i = 0; i < count; ++i) {
    ExpectAhead<2, 2>(run.graph, run.links, noted + i, &NestedStructLink::structure);
    AddCursor(run, run.cursors[outer + i].entry, StructureOf(run.graph, run.links[noted + i]));
  }
}

// Moves all cursors of the innermost level on to the next member.
void MoveOn(Modifying& run) {
  std::size_t kept = run.levels.Last().first_cursor;
  for (std::size_t i = kept; i < run.cursors.Size(); ++i) {
    ExpectAhead<1, 0>(run.graph, run.cursors, i, &Cursor::next);
    Cursor& cursor = run.cursors[i];
    MoveToDeclaration(run.graph, cursor, cursor.next);
    if (HasPart(run, cursor)) run.cursors[kept++] = cursor;
  }
  run.cursors.Cut(kept);
}

void CloseLevel(Modifying& run) {
  const Level& level = run.levels.Last();
  run.expanding.Remove(level.structure);
  run.cursors.Cut(level.first_cursor);
  run.levels.Cut(run.levels.Size() - 1);
}

// Groups are expanded backwards.
void ExpectGroup(const Modifying& run, std::size_t group) {
  const auto structure_of = [&](std::size_t other) {
    return run.entries[run.groups[other].first].structure;
  };
  if (group >= 2 * kFewAhead) {
    CdfgExpectNodes<1 + kNested>(run.graph, structure_of(group - 2 * kFewAhead));
  }
  if (group >= kFewAhead) {
    CdfgExpectAttributes<2 + kNestedAttributes>(run.graph, structure_of(group - kFewAhead));
  }
}

// The first entry decides what is nested; the members of the others follow in step.
void ExpandGroup(Modifying& run, const StructGroup& group) {
  OpenLevel(run, run.entries[group.first].structure);
  for (Place place = group.first; place != kNoPlace; place = run.entries[place].next) {
    ExpectAhead<2, 2>(run.graph, run.entries, place, &StructEntry::structure);
    AddCursor(run, place, run.entries[place].structure);
  }
  while (!run.levels.IsEmpty()) {
    const NodeId member = run.cursors[run.levels.Last().first_cursor].member;
    if (member == 0) {
      CloseLevel(run);
      if (!run.levels.IsEmpty()) MoveOn(run);
      continue;
    }
    const NestedStructLink link = LinkOf(run.graph, member);
    if (IsDefinedInPlace(run, link)) {
      NoteNested(run);
      EnterMembers(run);
    } else {
      MoveOn(run);
    }
  }
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
  if (link.definition == entry.definition || !run.hoisted.Add(link.definition)) return;
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
  for (Place place = entry.links.first; place != kNoPlace; place = run.links[place].next) {
    ExpectAhead<kNested, 5>(run.graph, run.links, place, &NestedStructLink::member);
    ExpectLinksAhead(run.graph, run.links, place, &NestedStructLink::definition);
    const NestedStructLink& link = run.links[place];
    if (link.definition != 0) HoistLink(run, entry, link, hoist);
  }
  if (hoist.first != 0) InsertInFront(run.graph, entry.definition, hoist);
}

void HoistGroup(Modifying& run, const StructGroup& group) {
  for (Place place = group.first; place != kNoPlace; place = run.entries[place].next) {
    ExpectLinksAhead(run.graph, run.entries, place, &StructEntry::definition);
    HoistEntry(run, run.entries[place]);
  }
}

}  // namespace

void ResetStructureTags() { tag_counter = 1; }

int ModifyStructures(CdfgGraph* graph) {
  Modifying run{graph};
  for (const NodeId file : CdfgGetFiles(graph)) {
    GroupStructures(run, CdfgGetAttr(graph, file, CfgFileinfo_ELEMENT));
  }
  for (std::size_t i = run.groups.Size(); i-- > 0;) {
    ExpectGroup(run, i);
    ExpandGroup(run, run.groups[i]);
  }
  if (run.links.IsEmpty()) return 0;
  for (std::size_t i = run.groups.Size(); i-- > 0;) HoistGroup(run, run.groups[i]);
  return 0;
}
