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

// Comparisons and logical operators: 0 or 1, which may be tested as it stands.
constexpr bool CdfgIsTruthOperator(std::int32_t code) {
  return code == CALC_Not || (code >= CALC_Les && code <= CALC_LogOr);
}

// What stands in the list of a CFG_LOOP_BEGIN.
constexpr bool CdfgIsLoopPart(std::uint32_t kind) {
  return kind >= CFG_LOOP_INIT && kind <= CFG_LOOP_STEP;
}

// The attribute by which a node of this kind names the first node of the chain inside it, 0 for
// kinds without one.
constexpr std::uint32_t CdfgBodyAttribute(std::uint32_t kind) {
  switch (kind) {
    case CFG_ROOT:
      return CfgRoot_ELEMENT;
    case CFG_FILEINFO:
      return CfgFileinfo_ELEMENT;
    case CFG_FUNCTION:
      return CfgFunc_STARTCFG;
    case CFG_STATE_IF:
      return CfgStateIf_STATOPE;
    case CFG_STATE_CASE:
      return CfgStateCase_STATOPE;
    case CFG_IF_THEN:
      return CfgIfThen_CFG;
    case CFG_IF_ELSE:
      return CfgIfElse_CFG;
    case CFG_LOOP_BEGIN:
      return CfgLoopBegin_CFG;
    case CFG_LOOP_STAT:
      return CfgLoopStat_CFG;
    case CFG_CASE_ITEM:
      return CfgCaseItem_CFG;
    default:
      return 0;
  }
}
