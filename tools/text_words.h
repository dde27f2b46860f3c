// The words of the text form for kinds, attributes and enumerated values, in both directions.
//
// They are the names of the vocabulary, save that an attribute is usually called by its name
// without the list's prefix: ELEMENT instead of CfgRoot_ELEMENT. All come from the vocabulary's
// rows, so a row added there is known here.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// DFG_OPERATION for 305; empty for a number that is no kind.
std::string_view KindWord(std::uint32_t kind);
// LEFT for (305, 2); empty for a number that is no attribute of the kind.
std::string_view AttributeWord(std::uint32_t kind, std::uint32_t attribute);
// CALC_Div for (305, 1, 12); empty for plain numbers.
std::string_view EnumeratorWord(std::uint32_t kind, std::uint32_t attribute, std::uint32_t value);

std::optional<std::uint32_t> FindKind(std::string_view word);
// Takes the short word of an attribute of this kind, or the full name of an attribute of any kind.
std::optional<std::uint32_t> FindAttribute(std::uint32_t kind, std::string_view word);
std::optional<std::uint32_t> FindEnumerator(std::string_view word);

// The words of all attributes of a kind for messages: "ELEMENT, LANG, ENVIRON, END".
std::string AttributeWords(std::uint32_t kind);
