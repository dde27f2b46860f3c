// Numbers looked up by hash.
#include "cdfg/hash_index.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cdfg/hash.h"

namespace {

// Texts by number, as a caller would keep them.
struct Texts {
  std::vector<std::string> records = {};
  HashIndex index = {};

  auto IsText(const std::string& text) const {
    return [this, &text](std::uint32_t number) { return records[number] == text; };
  }
  std::uint32_t Find(const std::string& text, std::size_t hash) const {
    return index.Find(hash, IsText(text));
  }
  std::uint32_t FindOrAdd(const std::string& text, std::size_t hash) {
    const auto next = static_cast<std::uint32_t>(records.size());
    const std::uint32_t number = index.FindOrAdd(hash, next, IsText(text));
    if (number == next) records.push_back(text);
    return number;
  }
};

TEST(HashIndexes, HoldWhatWasAdded) {
  Texts texts;
  EXPECT_EQ(texts.Find("a", 7), HashIndex::kNone);
  EXPECT_EQ(texts.FindOrAdd("a", 7), 0U);
  EXPECT_EQ(texts.Find("a", 7), 0U);
  EXPECT_EQ(texts.FindOrAdd("a", 7), 0U);
  EXPECT_EQ(texts.records.size(), 1U);
  EXPECT_EQ(texts.Find("a", 8), HashIndex::kNone) << "found by its own hash alone";
}

TEST(HashIndexes, TellRecordsOfOneHashApart) {
  Texts texts;
  for (int i = 0; i < 100; ++i) texts.FindOrAdd(std::to_string(i), 5);
  for (int i = 0; i < 100; ++i) {
    EXPECT_EQ(texts.Find(std::to_string(i), 5), static_cast<std::uint32_t>(i));
  }
  EXPECT_EQ(texts.Find("100", 5), HashIndex::kNone);
}

TEST(HashIndexes, LetANumberBeReplaced) {
  Texts texts;
  texts.FindOrAdd("a", 5);
  texts.FindOrAdd("b", 5);
  texts.records.emplace_back("a");
  texts.index.FindOrAdd(5, 2, texts.IsText("a")) = 2;
  EXPECT_EQ(texts.Find("a", 5), 2U);
  EXPECT_EQ(texts.Find("b", 5), 1U);
}

TEST(HashIndexes, Grow) {
  Texts texts;
  constexpr std::uint32_t kCount = 100000;
  const auto name = [](std::uint32_t i) { return "n" + std::to_string(i); };
  for (std::uint32_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(texts.FindOrAdd(name(i), TextHash{}(name(i))), i);
  }
  for (std::uint32_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(texts.Find(name(i), TextHash{}(name(i))), i);
  }
  EXPECT_EQ(texts.Find("n100000", TextHash{}("n100000")), HashIndex::kNone);
}

}  // namespace
