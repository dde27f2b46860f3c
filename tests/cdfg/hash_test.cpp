// Hashing for tables whose keys come out of a file.
#include "cdfg/hash.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

TEST(Hashing, OfTextsDependsOnTheirBytesAlone) {
  const std::string text = "__fpfix_tmp_000000";
  const std::string shifted = "x" + text;
  EXPECT_EQ(TextHash{}(text), TextHash{}(std::string_view(shifted).substr(1)));
}

TEST(Hashing, OfTextsLooksAtEveryByteAndAtTheLength) {
  std::set<std::size_t> hashes;
  for (std::size_t length = 0; length <= 40; ++length) {
    hashes.insert(TextHash{}(std::string(length, '\0')));
    for (std::size_t i = 0; i < length; ++i) {
      std::string text(length, '\0');
      text[i] = 'a';
      hashes.insert(TextHash{}(text));
    }
  }
  EXPECT_EQ(hashes.size(), 41U + 40U * 41U / 2U);
}

TEST(Hashing, OfIdsTellsThemApart) {
  std::set<std::size_t> hashes;
  for (NodeId id = 0; id < 10000; ++id) hashes.insert(IdHash{}(id));
  for (NodeId id = 10000; id != 0; id *= 2) hashes.insert(IdHash{}(id));
  EXPECT_EQ(hashes.size(), 10028U);
}

TEST(Hashing, SpreadsIdsOverTheLowestBits) {
  // Ids that agree in their lowest bits must not crowd into one slot.
  std::set<std::size_t> slots;
  for (NodeId id = 1; id <= 1000; ++id) slots.insert(IdHash{}(id << 20) % 4096);
  EXPECT_GT(slots.size(), 700U);
}

TEST(Hashing, ServesMapsAndSets) {
  TextMap<int> numbers;
  TextMap<int> names;
  IdMap<int> ids;
  IdSet seen;
  numbers["a"] = 1;
  names.emplace("a", 1);
  ids[4294967295U] = 2;
  seen.insert(0);
  EXPECT_EQ(numbers.find(std::string_view("a"))->second, 1);
  EXPECT_EQ(numbers.find(std::string_view("b")), numbers.end());
  EXPECT_TRUE(names.contains(std::string_view("a")));
  EXPECT_EQ(ids.at(4294967295U), 2);
  EXPECT_TRUE(seen.contains(0));
  EXPECT_FALSE(seen.contains(1));
}

}  // namespace
