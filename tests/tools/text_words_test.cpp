#include "tools/text_words.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

#include "cdfg/names.h"
#include "cdfg/vocabulary.h"
#include "tools/text_form.h"

namespace {

constexpr std::uint32_t kBeyondKinds = 400;
constexpr std::uint32_t kBeyondAttributes = 64;
constexpr std::uint32_t kBeyondValues = 64;

std::string KindName(std::uint32_t kind) {
  char name[kCdfgNameSize];
  CdfgKindName(name, kind);
  return name;
}

std::string AttributeName(std::uint32_t kind, std::uint32_t attribute) {
  char name[kCdfgNameSize];
  CdfgAttrName(name, kind, attribute);
  return name;
}

std::string ValueName(std::uint32_t kind, std::uint32_t attribute, std::uint32_t value) {
  char name[kCdfgNameSize];
  CdfgValueName(name, kind, attribute, value);
  return name;
}

TEST(TextWords, KindsAreCalledByTheirNamesBothWays) {
  int kinds = 0;
  for (std::uint32_t kind = 0; kind < kBeyondKinds; ++kind) {
    EXPECT_EQ(KindWord(kind), KindName(kind)) << kind;
    if (KindWord(kind).empty()) continue;
    EXPECT_EQ(FindKind(KindWord(kind)), kind);
    ++kinds;
  }
  EXPECT_EQ(kinds, 90);
  EXPECT_EQ(FindKind("CFG_NOTHING"), std::nullopt);
  EXPECT_EQ(FindKind(""), std::nullopt);
}

TEST(TextWords, AttributesAreCalledByTheirNamesWithoutPrefixBothWays) {
  for (std::uint32_t kind = 0; kind < kBeyondKinds; ++kind) {
    std::set<std::string> words;
    for (std::uint32_t id = 0; id < kBeyondAttributes; ++id) {
      const std::string name = AttributeName(kind, id);
      const std::string word(AttributeWord(kind, id));
      EXPECT_EQ(word.empty(), name.empty()) << kind << ' ' << id;
      if (name.empty()) continue;
      EXPECT_EQ(word, name.substr(name.find('_') + 1));
      EXPECT_TRUE(words.insert(word).second) << name;
      EXPECT_EQ(FindAttribute(kind, word), id);
      EXPECT_EQ(FindAttribute(kind, name), id);
    }
  }
}

TEST(TextWords, AttributesOfAPrefixOfTwoPartsKeepTheRest) {
  EXPECT_EQ(AttributeWord(DFG_FUNC_CALL, DfgFuncCall_FUNC_SIGNED), "FUNC_SIGNED");
}

TEST(TextWords, FullAttributeNamesAreKnownInEveryKind) {
  EXPECT_EQ(FindAttribute(DFG_OPERATION, "CfgRoot_LANG"), 2u);
  EXPECT_EQ(FindAttribute(999, "DfgOpe_COND"), 4u);
}

TEST(TextWords, NotShortAttributeNamesOfOtherKinds) {
  EXPECT_EQ(FindAttribute(DFG_OPERATION, "LANG"), std::nullopt);
  EXPECT_EQ(FindAttribute(CFG_BREAK, "NAME"), std::nullopt);
  EXPECT_EQ(FindAttribute(999, "NAME"), std::nullopt);
}

TEST(TextWords, EnumeratorsAreCalledByTheirNamesBothWays) {
  int enumerators = 0;
  for (std::uint32_t kind = 0; kind < kBeyondKinds; ++kind) {
    for (std::uint32_t id = 0; id < kBeyondAttributes; ++id) {
      for (std::uint32_t value = 0; value < kBeyondValues; ++value) {
        const std::string_view word = EnumeratorWord(kind, id, value);
        if (word != ValueName(kind, id, value)) ADD_FAILURE() << kind << ' ' << id << ' ' << value;
        if (word.empty()) continue;
        EXPECT_EQ(FindEnumerator(word), value);
        ++enumerators;
      }
    }
  }
  EXPECT_EQ(enumerators, 10 + 13 + 3 + 10 + 8 + 39);
  EXPECT_EQ(FindEnumerator("CALC_Nothing"), std::nullopt);
  EXPECT_EQ(EnumeratorWord(DFG_OPERATION, DfgOpe_TYPE, 0xffffffff), "");
}

// A value that starts with a word is a node, an enumerator or a word of the form; never two.
TEST(TextWords, KindsAreNoEnumeratorsAndNeitherIsAWordOfTheForm) {
  for (std::uint32_t kind = 0; kind < kBeyondKinds; ++kind) {
    const std::string_view word = KindWord(kind);
    if (word.empty()) continue;
    EXPECT_EQ(FindEnumerator(word), std::nullopt) << word;
    EXPECT_TRUE(IsLabel(word)) << word;
  }
}

TEST(TextWords, AttributeWordsAreListedForMessages) {
  EXPECT_EQ(AttributeWords(CFG_ROOT), "ELEMENT, LANG, ENVIRON, END");
  EXPECT_EQ(AttributeWords(CFG_BREAK), "");
  EXPECT_EQ(AttributeWords(999), "");
}

}  // namespace
