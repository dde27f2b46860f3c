// Names of kinds, attributes and values, for listings and messages.
#pragma once

#include <cstdint>

// A buffer of this size holds every name below and its terminating zero.
inline constexpr unsigned kCdfgNameSize = 64;

// Each writes a NUL-terminated name into `buffer` (at least kCdfgNameSize bytes) and answers 0.
// A number without a name gives the empty string. Nothing is allocated, no graph is needed.

// The name of a node kind: 305 gives DFG_OPERATION.
int CdfgKindName(char* buffer, std::uint32_t kind);
// The name of an attribute of a kind: (305, 2) gives DfgOpe_LEFT.
int CdfgAttrName(char* buffer, std::uint32_t kind, std::uint32_t attribute);
// The enumerator that an attribute's value stands for: (305, 1, 12) gives CALC_Div. Empty for
// attributes that hold plain numbers.
int CdfgValueName(char* buffer, std::uint32_t kind, std::uint32_t attribute, std::uint32_t value);
// The name of an attribute's value type: 6 gives ATTR_NODE.
int CdfgValueTypeName(char* buffer, std::uint32_t type);
