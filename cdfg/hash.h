// Hashing for tables whose keys come out of a file. The seed differs from run to run, so no file
// can be made to crowd a table.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "cdfg/graph.h"

inline std::uint64_t MixBits(std::uint64_t value) {
  value ^= value >> 30;
  value *= 0xBF58476D1CE4E5B9U;
  value ^= value >> 27;
  value *= 0x94D049BB133111EBU;
  return value ^ (value >> 31);
}

namespace hash {
// Where the program's data lies is chosen anew for every run.
inline const std::uint64_t seed = MixBits(reinterpret_cast<std::uintptr_t>(&seed));
}  // namespace hash

// Sixteen neighbours start in neighbouring places of a table, so that whoever asks for one after
// the other stays in the cache; which of them comes first differs, so that all places are used
// alike.
inline std::size_t StartOfNeighbours(std::uint64_t mixed, unsigned neighbour) {
  return static_cast<std::size_t>(mixed << 4) | ((neighbour ^ (mixed >> 60)) & 15U);
}

struct IdHash {
  std::size_t operator()(NodeId id) const {
    return StartOfNeighbours(MixBits(hash::seed ^ (id >> 4)), id);
  }
};

// Neighbours are texts that differ in their last byte alone, as numbered names do.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    if (text.empty()) return static_cast<std::size_t>(hash::seed);
    const auto last = static_cast<unsigned char>(text.back());
    text.remove_suffix(1);
    std::uint64_t hashed = hash::seed ^ text.size();
    while (text.size() >= sizeof hashed) {
      hashed = MixBits(hashed ^ Word(text, sizeof hashed));
      text.remove_prefix(sizeof hashed);
    }
    return StartOfNeighbours(MixBits(hashed ^ Word(text, text.size())), last);
  }

 private:
  static std::uint64_t Word(std::string_view text, std::size_t size) {
    std::uint64_t word = 0;
    if (size != 0) std::memcpy(&word, text.data(), size);
    return word;
  }
};

template <class Value>
using IdMap = std::unordered_map<NodeId, Value, IdHash>;
using IdSet = std::unordered_set<NodeId, IdHash>;
template <class Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;
