// What differs between two texts.
#pragma once

#include <string>
#include <string_view>

// The lines that differ, '-' for those only in `expected` and '+' for those only in `actual`, with
// three lines around them and "@@ line @@" of the expected text in front of each group. Empty when
// the texts are equal.
std::string UnifiedDiff(std::string_view expected, std::string_view actual);
