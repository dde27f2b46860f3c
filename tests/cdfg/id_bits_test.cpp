// Sets of ids as bits.
#include "cdfg/id_bits.h"

#include <gtest/gtest.h>

#include <set>
#include <vector>

namespace {

TEST(IdBitsSets, HoldWhatWasAdded) {
  IdBits ids;
  EXPECT_FALSE(ids.Contains(1));
  EXPECT_TRUE(ids.Add(1));
  EXPECT_TRUE(ids.Contains(1));
  EXPECT_FALSE(ids.Add(1));
  EXPECT_FALSE(ids.Contains(2)) << "a neighbour in the same word";
  EXPECT_FALSE(ids.Contains(65)) << "the same bit of another word";
}

TEST(IdBitsSets, GiveUpWhatIsRemoved) {
  IdBits ids;
  ids.Remove(7);
  ids.Add(6);
  ids.Add(7);
  ids.Remove(7);
  ids.Remove(7000);
  EXPECT_TRUE(ids.Contains(6));
  EXPECT_FALSE(ids.Contains(7));
  EXPECT_FALSE(ids.Contains(7000));
  EXPECT_TRUE(ids.Add(7));
}

TEST(IdBitsSets, HoldTheLowestAndTheHighestIds) {
  IdBits ids;
  for (const NodeId id : {0U, 63U, 64U, 4294967232U, 4294967295U}) EXPECT_TRUE(ids.Add(id));
  for (const NodeId id : {0U, 63U, 64U, 4294967232U, 4294967295U}) EXPECT_TRUE(ids.Contains(id));
  for (const NodeId id : {1U, 62U, 65U, 4294967231U, 4294967294U}) EXPECT_FALSE(ids.Contains(id));
}

TEST(IdBitsSets, GrowWithIdsOfAnySort) {
  for (const NodeId step : {1U, 7U, 64U, 256U, 65537U}) {
    IdBits ids;
    std::set<NodeId> expected;
    NodeId id = 1;
    for (int i = 0; i < 20000; ++i, id += step) {
      ASSERT_EQ(ids.Add(id), expected.insert(id).second) << id;
      if (i % 3 == 0) {
        ids.Remove(id);
        expected.erase(id);
      }
    }
    id = 1;
    for (int i = 0; i < 20000; ++i, id += step) {
      ASSERT_EQ(ids.Contains(id), expected.contains(id)) << id;
    }
  }
}

}  // namespace
