// Phases: join nodes to chains; mark the chains that some reference may be home to; walk the tree
// in text order from what nothing refers to and choose the homes on the way.

#include "tools/text_nesting.h"

#include <algorithm>
#include <cstddef>

#include "cdfg/graph.h"
#include "cdfg/vocabulary.h"

namespace {

constexpr int kDeepest = 32;

void JoinChains(Nesting* nesting) {
  const std::vector<RawNode>& nodes = nesting->file.nodes;
  for (Place place = 0; place < nodes.size(); ++place) {
    const Place next = FindPlace(nesting->file, nodes[place].next);
    if (next == kNowhere || next == place || nodes[place].id == 0) continue;
    if (nodes[next].prev == nodes[place].id) nesting->after[place] = next;
  }
}

// Walks from `first` to the chain's end, or once around a ring, which is cut there.
void SetHead(Nesting* nesting, Place first) {
  Place last = first;
  nesting->head[first] = first;
  for (Place place = nesting->after[first]; place != kNowhere && place != first;
       place = nesting->after[place]) {
    nesting->head[place] = first;
    last = place;
  }
  nesting->after[last] = kNowhere;
}

void SetHeads(Nesting* nesting) {
  const Place count = static_cast<Place>(nesting->file.nodes.size());
  std::vector<bool> is_inner(count);
  for (const Place place : nesting->after) {
    if (place != kNowhere) is_inner[place] = true;
  }
  for (Place place = 0; place < count; ++place) {
    if (!is_inner[place]) SetHead(nesting, place);
  }
  for (Place place = 0; place < count; ++place) {
    if (nesting->head[place] == kNowhere) SetHead(nesting, place);
  }
}

bool OwnsReference(std::uint32_t kind, std::uint32_t attribute) {
  return CdfgOwnsReference(kind, attribute) != 0;
}

// The node that `attribute` may be home to: one that it owns, or one that itself points back to
// the node the attribute belongs to.
Place OwnedBy(const RawFile& file, const RawNode& node, const RawAttribute& attribute) {
  if (attribute.type != ATTR_NODE) return kNowhere;
  const Place target = FindPlace(file, static_cast<std::uint32_t>(attribute.bits));
  if (target == kNowhere || OwnsReference(node.kind, attribute.id)) return target;
  return file.nodes[target].prev == node.id ? target : kNowhere;
}

// The node that a next link may be home to: one that follows without being of the chain.
Place LinkedBy(const Nesting& nesting, Place place) {
  if (nesting.after[place] != kNowhere) return kNowhere;
  return FindPlace(nesting.file, nesting.file.nodes[place].next);
}

bool IsElsewhere(const Nesting& nesting, Place place, Place target) {
  return target != kNowhere && nesting.head[target] != nesting.head[place];
}

void MarkReferred(Nesting* nesting) {
  const RawFile& file = nesting->file;
  for (Place place = 0; place < file.nodes.size(); ++place) {
    const Place linked = LinkedBy(*nesting, place);
    if (IsElsewhere(*nesting, place, linked)) nesting->is_linked[nesting->head[linked]] = true;
    for (const RawAttribute& attribute : RawAttributesOf(file, file.nodes[place])) {
      const Place owned = OwnedBy(file, file.nodes[place], attribute);
      if (IsElsewhere(*nesting, place, owned)) nesting->has_owner[nesting->head[owned]] = true;
    }
  }
}

void PlaceChain(Nesting* nesting, Place head, int depth);

// Makes `reference` the home of the chain of `target`, unless that has one. Those that would stand
// too deep go to top level, behind what is being placed.
void TakeIn(Nesting* nesting, Place target, Reference reference, int depth) {
  const Place head = nesting->head[target];
  if (nesting->home[head] != kUndecided) return;
  if (depth < kDeepest) {
    nesting->home[head] = reference;
    PlaceChain(nesting, head, depth + 1);
  } else {
    nesting->home[head] = kTopLevel;
    nesting->deferred.push_back(head);
  }
}

void PlaceNode(Nesting* nesting, Place place, int depth) {
  const RawFile& file = nesting->file;
  const RawNode& node = file.nodes[place];
  if (place < nesting->last_placed) nesting->in_file_order = false;
  nesting->last_placed = place;
  const Place linked = LinkedBy(*nesting, place);
  if (linked != kNowhere && !nesting->has_owner[nesting->head[linked]]) {
    TakeIn(nesting, linked, kNextLink + place, depth);
  }
  Reference reference = node.first_attribute;
  for (const RawAttribute& attribute : RawAttributesOf(file, node)) {
    const Place owned = OwnedBy(file, node, attribute);
    if (owned != kNowhere) TakeIn(nesting, owned, reference, depth);
    ++reference;
  }
}

void PlaceChain(Nesting* nesting, Place head, int depth) {
  for (Place place = head; place != kNowhere; place = nesting->after[place]) {
    PlaceNode(nesting, place, depth);
  }
}

void PlaceAtTop(Nesting* nesting, Place head) {
  nesting->home[head] = kTopLevel;
  nesting->deferred.push_back(head);
  while (!nesting->deferred.empty()) {
    const Place top = nesting->deferred.front();
    nesting->deferred.pop_front();
    nesting->tops.push_back(top);
    PlaceChain(nesting, top, 1);
  }
}

// First the chains that nothing refers to, with all that hangs below them; what is left then are
// circles of owners, and each is entered at its lowest node.
void ChooseHomes(Nesting* nesting) {
  const Place count = static_cast<Place>(nesting->file.nodes.size());
  for (Place place = 0; place < count; ++place) {
    const Place head = nesting->head[place];
    if (nesting->home[head] != kUndecided) continue;
    if (!nesting->has_owner[head] && !nesting->is_linked[head]) PlaceAtTop(nesting, head);
  }
  for (Place place = 0; place < count; ++place) {
    const Place head = nesting->head[place];
    if (nesting->home[head] == kUndecided) PlaceAtTop(nesting, head);
  }
}

}  // namespace

bool IdsAscend(const RawFile& file) {
  const auto not_below = [](const RawNode& left, const RawNode& right) {
    return left.id >= right.id;
  };
  return std::adjacent_find(file.nodes.begin(), file.nodes.end(), not_below) == file.nodes.end() &&
         file.nodes.size() < kNowhere;
}

Place FindPlace(const RawFile& file, std::uint32_t id) {
  if (id == 0 || file.nodes.empty() || id < file.nodes.front().id) return kNowhere;
  // Ids mostly count up by one, so that the guess is the node itself. It is never in front of it.
  const std::size_t guess =
      std::min<std::size_t>(id - file.nodes.front().id, file.nodes.size() - 1);
  if (file.nodes[guess].id == id) return static_cast<Place>(guess);
  const auto end = file.nodes.begin() + static_cast<std::ptrdiff_t>(guess);
  const auto found =
      std::lower_bound(file.nodes.begin(), end, id,
                       [](const RawNode& node, std::uint32_t wanted) { return node.id < wanted; });
  if (found == end || found->id != id) return kNowhere;
  return static_cast<Place>(found - file.nodes.begin());
}

Nesting FindNesting(const RawFile& file) {
  const std::size_t count = file.nodes.size();
  Nesting nesting{file,
                  std::vector<Place>(count, kNowhere),
                  std::vector<Place>(count, kNowhere),
                  std::vector<bool>(count),
                  std::vector<bool>(count),
                  std::vector<Reference>(count, kUndecided),
                  {},
                  {}};
  JoinChains(&nesting);
  SetHeads(&nesting);
  MarkReferred(&nesting);
  ChooseHomes(&nesting);
  return nesting;
}
