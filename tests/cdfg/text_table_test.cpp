// The set of texts that names are kept in.
#include "cdfg/text_table.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(TextTables, HoldWhatWasAdded) {
  TextTable table;
  EXPECT_FALSE(table.Contains("a"));
  EXPECT_TRUE(table.Add("a"));
  EXPECT_TRUE(table.Contains("a"));
  EXPECT_FALSE(table.Add("a"));
  EXPECT_FALSE(table.Contains("b"));
}

TEST(TextTables, TellAnyBytesApart) {
  TextTable table;
  EXPECT_FALSE(table.Contains(""));
  EXPECT_TRUE(table.Add(""));
  EXPECT_TRUE(table.Contains(""));
  const std::string zero("a\0b", 3);
  EXPECT_TRUE(table.Add(zero));
  EXPECT_FALSE(table.Contains("a"));
  EXPECT_FALSE(table.Contains(std::string("a\0c", 3)));
  EXPECT_TRUE(table.Contains(zero));
  EXPECT_TRUE(table.Add(std::string(1, '\0')));
  EXPECT_FALSE(table.Add(std::string(1, '\0')));
}

TEST(TextTables, KeepACopy) {
  TextTable table;
  std::string text = "abc";
  table.Add(text);
  text = "xyz";
  EXPECT_TRUE(table.Contains("abc"));
  EXPECT_FALSE(table.Contains("xyz"));
}

TEST(TextTables, HoldTextsLongerThanABlock) {
  TextTable table;
  const std::string text(100000, 'x');
  EXPECT_TRUE(table.Add(text));
  EXPECT_TRUE(table.Contains(text));
  EXPECT_FALSE(table.Contains(text + "x"));
}

// Texts that differ in their last byte alone lie side by side.
TEST(TextTables, HoldAllTextsThatDifferInTheirLastByte) {
  TextTable table;
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_TRUE(table.Add("name" + std::string(1, static_cast<char>(byte))));
  }
  for (int byte = 0; byte < 256; ++byte) {
    EXPECT_TRUE(table.Contains("name" + std::string(1, static_cast<char>(byte))));
  }
  EXPECT_FALSE(table.Contains("name"));
}

TEST(TextTables, MayBeToldWhatToExpect) {
  TextTable table;
  table.Expect("a");
  table.Add("a");
  table.Expect("");
  table.Expect(std::string(100000, 'x'));
  EXPECT_TRUE(table.Contains("a"));
  EXPECT_FALSE(table.Contains("")) << "expecting is not adding";
}

TEST(TextTables, Grow) {
  TextTable table;
  for (int i = 0; i < 100000; ++i) ASSERT_TRUE(table.Add("n" + std::to_string(i)));
  for (int i = 0; i < 100000; ++i) ASSERT_TRUE(table.Contains("n" + std::to_string(i)));
  EXPECT_FALSE(table.Contains("n100000"));
}

}  // namespace
