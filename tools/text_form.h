// The text form of a CDFG file: readable, written by hand in tests, and without loss.
//
// docs/text-form.md is its reference. For any bytes, printing them and parsing the text gives the
// same bytes again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tools/output.h"
#include "tools/raw_file.h"

// --- Printing ------------------------------------------------------------------------------------

struct TextStyle {
  // One node a line in file order, instead of nested. Files whose ids do not ascend are always
  // printed like that.
  bool flat = false;
  // Labels to print in place of these ids, or null. Each has to be a word that IsLabel accepts, and
  // no two ids may share one.
  const std::unordered_map<std::uint32_t, std::string>* names = nullptr;
};

void PrintText(const RawFile& file, const TextStyle& style, Output* out);
std::string TextOf(const RawFile& file, const TextStyle& style = {});

// --- Parsing -------------------------------------------------------------------------------------

struct TextError {
  std::size_t offset = 0;  // of the offending token in the text
  int line = 0;            // both from 1; a column is a byte
  int column = 0;
  std::string message;  // "expected X, found Y"
};

// The ids that the labels of a text stand for. Numbers used as labels are not in it.
using TextLabels = std::unordered_map<std::string, std::uint32_t>;
// The other way round, for TextStyle::names: what a text calls its nodes, another can call them.
std::unordered_map<std::uint32_t, std::string> NamesById(const TextLabels& labels);

// True and the file (which points into `text`), or false and the first error; the others are then
// unspecified. `labels` may be null.
bool ParseText(std::string_view text, RawFile* file, TextLabels* labels, TextError* error);

// "PATH:LINE:COLUMN: error: expected X, found Y", the source line, and a caret under the token.
std::string DescribeError(std::string_view path, std::string_view text, const TextError& error);

// Whether a word can be a label: letters, digits and '_', no digit first, no word of the form.
bool IsLabel(std::string_view word);
