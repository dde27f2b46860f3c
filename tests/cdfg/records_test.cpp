// Rows of records.
#include "cdfg/records.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

struct Pair {
  std::uint32_t number;
  std::uint64_t square;
};

TEST(RecordRows, HoldWhatWasAddedHoweverManyThereAre) {
  Records<Pair> rows;
  EXPECT_TRUE(rows.IsEmpty());
  for (std::uint32_t i = 0; i < 300000; ++i) {
    EXPECT_EQ(rows.Add({i, std::uint64_t{i} * i}).number, i);
  }
  ASSERT_EQ(rows.Size(), 300000U);
  EXPECT_FALSE(rows.IsEmpty());
  for (std::uint32_t i = 0; i < 300000; ++i) {
    ASSERT_EQ(rows[i].number, i);
    ASSERT_EQ(rows[i].square, std::uint64_t{i} * i);
  }
}

TEST(RecordRows, AreCutAndFilledAgain) {
  Records<int> rows;
  for (int i = 0; i < 100; ++i) rows.Add(i);
  rows.Cut(40);
  EXPECT_EQ(rows.Size(), 40U);
  EXPECT_EQ(rows.Last(), 39);
  rows.Add(7);
  EXPECT_EQ(rows.Last(), 7);
  EXPECT_EQ(rows[39], 39);
  rows.Cut(0);
  EXPECT_TRUE(rows.IsEmpty());
}

TEST(RecordRows, TakeARecordOfTheirOwn) {
  Records<int> rows;
  rows.Add(1);
  for (int i = 0; i < 1000; ++i) rows.Add(rows[0]);
  for (std::size_t i = 0; i < rows.Size(); ++i) ASSERT_EQ(rows[i], 1);
}

}  // namespace
