// Splitting of texts into words.
#include "cdfg/tokens.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using Words = std::vector<std::string>;

Words Split(std::string_view text, std::string_view delimiters) {
  Words words;
  Tokens tokens(text);
  for (;;) {
    const std::string_view token = tokens.Next(delimiters);
    if (token.empty()) return words;
    words.emplace_back(token);
  }
}

TEST(Splitting, OfWordsGivesThemInOrder) {
  EXPECT_EQ(Split("module prefix p", " "), (Words{"module", "prefix", "p"}));
}

TEST(Splitting, CountsARunOfDelimitersAsOne) {
  EXPECT_EQ(Split("a  b \t, c", " \t,"), (Words{"a", "b", "c"}));
}

TEST(Splitting, PassesOverDelimitersInFrontAndBehind) {
  EXPECT_EQ(Split("  a b  ", " "), (Words{"a", "b"}));
}

TEST(Splitting, KeepsATextWithoutDelimitersWhole) {
  EXPECT_EQ(Split("module", " \t,"), (Words{"module"}));
}

TEST(Splitting, DoesNotSplitAtOtherCharacters) {
  EXPECT_EQ(Split("prefix=p", " \t,"), (Words{"prefix=p"}));
}

TEST(Splitting, OfNothingGivesNothing) {
  EXPECT_EQ(Split("", " "), Words{});
  EXPECT_EQ(Split("   ", " "), Words{});
}

TEST(Splitting, GivesNothingForEverOnceAtTheEnd) {
  Tokens tokens("a");
  EXPECT_EQ(tokens.Next(" "), "a");
  EXPECT_EQ(tokens.Next(" "), "");
  EXPECT_EQ(tokens.Next("="), "");
}

TEST(Splitting, MayChangeItsDelimitersBetweenWords) {
  Tokens tokens("module prefix=p:rest");
  EXPECT_EQ(tokens.Next(" \t,"), "module");
  EXPECT_EQ(tokens.Next("=:"), "prefix");
  EXPECT_EQ(tokens.Next(" "), "p:rest");
}

TEST(Splitting, UsesUpTheDelimiterThatEndsAWord) {
  Tokens tokens("a=b");
  EXPECT_EQ(tokens.Next("="), "a");
  EXPECT_EQ(tokens.Next(" "), "b");
}

TEST(Splitting, UsesUpOnlyOneDelimiterBehindAWord) {
  Tokens tokens("a==b");
  EXPECT_EQ(tokens.Next("="), "a");
  EXPECT_EQ(tokens.Next(" "), "=b");
}

}  // namespace
