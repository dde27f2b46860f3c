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

struct IdHash {
  std::size_t operator()(NodeId id) const {
    return static_cast<std::size_t>(MixBits(hash::seed ^ id));
  }
};

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const {
    std::uint64_t hashed = hash::seed ^ text.size();
    while (text.size() >= sizeof hashed) {
      hashed = MixBits(hashed ^ Word(text, sizeof hashed));
      text.remove_prefix(sizeof hashed);
    }
    return static_cast<std::size_t>(MixBits(hashed ^ Word(text, text.size())));
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
using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;
