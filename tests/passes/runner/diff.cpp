#include "tests/passes/runner/diff.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

using Lines = std::vector<std::string_view>;

constexpr std::size_t kContext = 3;
constexpr std::size_t kLargestTable = 25'000'000;

struct Edit {
  char sign;  // ' ', '-' or '+'
  std::string_view line;
};

Lines LinesOf(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return lines;
}

// How many lines the ends of two texts from a line on have in common, for every pair of lines.
class CommonLines {
 public:
  CommonLines(const Lines& expected, const Lines& actual)
      : width_(actual.size() + 1), counts_((expected.size() + 1) * width_) {
    for (std::size_t i = expected.size(); i-- > 0;) {
      for (std::size_t j = actual.size(); j-- > 0;) {
        At(i, j) =
            expected[i] == actual[j] ? At(i + 1, j + 1) + 1 : std::max(At(i + 1, j), At(i, j + 1));
      }
    }
  }
  std::uint32_t& At(std::size_t i, std::size_t j) { return counts_[i * width_ + j]; }

 private:
  std::size_t width_;
  std::vector<std::uint32_t> counts_;
};

void AddAll(std::vector<Edit>* edits, char sign, const Lines& lines, std::size_t from) {
  for (std::size_t i = from; i < lines.size(); ++i) edits->push_back({sign, lines[i]});
}

std::vector<Edit> EditsBetween(const Lines& expected, const Lines& actual) {
  std::vector<Edit> edits;
  std::size_t i = 0;
  std::size_t j = 0;
  if (expected.size() * actual.size() <= kLargestTable) {
    CommonLines common(expected, actual);
    while (i < expected.size() && j < actual.size()) {
      if (expected[i] == actual[j]) {
        edits.push_back({' ', expected[i++]});
        ++j;
      } else if (common.At(i + 1, j) >= common.At(i, j + 1)) {
        edits.push_back({'-', expected[i++]});
      } else {
        edits.push_back({'+', actual[j++]});
      }
    }
  }
  AddAll(&edits, '-', expected, i);
  AddAll(&edits, '+', actual, j);
  return edits;
}

std::vector<bool> ShownEdits(const std::vector<Edit>& edits) {
  std::vector<bool> shown(edits.size());
  for (std::size_t i = 0; i < edits.size(); ++i) {
    if (edits[i].sign == ' ') continue;
    const std::size_t begin = i < kContext ? 0 : i - kContext;
    const std::size_t end = std::min(i + kContext + 1, edits.size());
    for (std::size_t near = begin; near < end; ++near) shown[near] = true;
  }
  return shown;
}

}  // namespace

std::string UnifiedDiff(std::string_view expected, std::string_view actual) {
  const std::vector<Edit> edits = EditsBetween(LinesOf(expected), LinesOf(actual));
  const std::vector<bool> shown = ShownEdits(edits);
  std::string diff;
  std::size_t line = 1;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    if (shown[i]) {
      if (i == 0 || !shown[i - 1]) diff += "@@ line " + std::to_string(line) + " @@\n";
      diff.append(1, edits[i].sign).append(edits[i].line).append("\n");
    }
    if (edits[i].sign != '+') ++line;
  }
  return diff;
}
