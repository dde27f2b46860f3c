// A case of a pass test: one text file that says what it is about, which steps run, and what they
// make of a graph. docs/pass-tests.md describes the format.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "driver/pipeline.h"

// The sections in the order in which they stand.
enum SectionName { kBefore, kAfter, kOutput, kStatus, kState, kSectionCount };

// Where a section stands in the file.
struct CaseSection {
  bool is_present = false;
  std::size_t head = 0;   // its line "-- name --"
  std::size_t begin = 0;  // behind that line
  std::size_t end = 0;
};

struct PassCase {
  std::string path;
  std::string content;
  std::string intent;
  std::vector<const PipelineStep*> steps;
  std::vector<std::string> options;  // words of a command line
  bool is_damaged = false;           // the graph may break the rules of shape
  bool is_loose = false;             // it breaks one that a step brings about
  std::array<CaseSection, kSectionCount> sections;
  int status = 0;
};

// Reads the file's content. False, and "path:line: error: what" in `error`, when it is no case.
bool ParseCase(const std::string& path, const std::string& content, PassCase* parsed,
               std::string* error);

// The text of a section; empty when it is absent.
std::string_view SectionText(const PassCase& parsed, SectionName name);
// Its first line as it stands in a file.
std::string SectionHead(SectionName name);

// The text without blanks and line ends around it.
std::string_view Trimmed(std::string_view text);
// What stands between runs of blanks and line ends.
std::vector<std::string> WordsOf(std::string_view text);
