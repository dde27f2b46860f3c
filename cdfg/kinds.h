// Families of node kinds that several steps ask for.
#pragma once

#include <cstdint>

#include "cdfg/vocabulary.h"

// A reference to a declared object, read (DFG_INPUT_PORT to DFG_INPUT_VAR) or written
// (DFG_OUTPUT_PORT to DFG_OUTPUT_VAR): the kinds that share the DfgPort attributes.
constexpr bool CdfgIsPort(std::uint32_t kind) {
  return (kind >= DFG_INPUT_PORT && kind <= DFG_INPUT_VAR) ||
         (kind >= DFG_OUTPUT_PORT && kind <= DFG_OUTPUT_VAR);
}

// The same with the two concatenations.
constexpr bool CdfgIsPortOrConcat(std::uint32_t kind) {
  return CdfgIsPort(kind) || kind == DFG_INPUT_CONCAT || kind == DFG_OUTPUT_CONCAT;
}

// An assignment: the target stands in front of the edge, the value behind it.
constexpr bool CdfgIsAssignment(std::uint32_t kind) {
  return kind == DFG_EDGE_BLOCKING || kind == DFG_EDGE_NONBLOCKING;
}

// A selection among CFG_CASE_ITEM bodies.
constexpr bool CdfgIsCase(std::uint32_t kind) {
  return kind == CFG_STATE_CASE || kind == CFG_STATE_CASEX || kind == CFG_STATE_CASEZ;
}
