// The set of used names: membership, its buckets, and fresh names.
#include "cdfg/name_set.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <iterator>
#include <random>
#include <set>
#include <string>

namespace {

class Names : public testing::Test {
 protected:
  void SetUp() override { EXPECT_EQ(NameSetInit(), 0); }
  void TearDown() override { NameSetFree(); }
};

// --- Membership ----------------------------------------------------------------------------------

TEST_F(Names, AreInTheSetOnceAdded) {
  EXPECT_EQ(NameSetContains("top"), 0);
  EXPECT_EQ(NameSetAdd("top"), 0);
  EXPECT_EQ(NameSetContains("top"), 1);
}

TEST_F(Names, AreComparedWholeAndWithTheirCase) {
  NameSetAdd("Top");
  for (const char* other : {"top", "TOP", "To", "Topp", "Top ", " Top", ""}) {
    EXPECT_EQ(NameSetContains(other), 0) << other;
  }
}

TEST_F(Names, MayBeAddedTwice) {
  EXPECT_EQ(NameSetAdd("top"), 0);
  EXPECT_EQ(NameSetAdd("top"), 0);
  EXPECT_EQ(NameSetContains("top"), 1);
}

TEST_F(Names, MayBeEmpty) {
  EXPECT_EQ(NameSetContains(""), 0);
  NameSetAdd("");
  EXPECT_EQ(NameSetContains(""), 1);
}

TEST_F(Names, AreCopied) {
  char name[] = "top";
  NameSetAdd(name);
  name[0] = 'm';
  EXPECT_EQ(NameSetContains("top"), 1);
  EXPECT_EQ(NameSetContains("mop"), 0);
}

TEST_F(Names, MayHaveAnyBytesAndAnyLength) {
  const std::string high(3, '\xE9');
  const std::string lengthy(100000, 'x');
  NameSetAdd(high.c_str());
  NameSetAdd(lengthy.c_str());
  EXPECT_EQ(NameSetContains(high.c_str()), 1);
  EXPECT_EQ(NameSetContains(lengthy.c_str()), 1);
  EXPECT_EQ(NameSetContains(lengthy.c_str() + 1), 0);
}

TEST_F(Names, AreAllForgottenByANewSet) {
  NameSetAdd("top");
  EXPECT_EQ(NameSetInit(), 0);
  EXPECT_EQ(NameSetContains("top"), 0);
}

TEST_F(Names, AreForgottenWhenTheSetIsFreed) {
  NameSetAdd("top");
  NameSetFree();
  NameSetFree();
  EXPECT_EQ(NameSetInit(), 0);
  EXPECT_EQ(NameSetContains("top"), 0);
}

TEST(NamesWithoutASet, AreNeitherKeptNorFound) {
  NameSetFree();
  EXPECT_EQ(NameSetContains("top"), 0);
  EXPECT_EQ(NameSetAdd("top"), -1);
  EXPECT_EQ(NameSetContains("top"), 0);
}

// --- Buckets -------------------------------------------------------------------------------------

TEST(NameBuckets, AreTheSumOfTheBytes) {
  EXPECT_EQ(NameSetBucket("a"), 97U);
  EXPECT_EQ(NameSetBucket("ab"), 195U);
  EXPECT_EQ(NameSetBucket("ba"), 195U);
}

TEST(NameBuckets, AreReducedToTheLowestEightBits) {
  EXPECT_EQ(NameSetBucket("abc"), 38U);    // 97 + 98 + 99 = 294
  EXPECT_EQ(NameSetBucket("zzzzz"), 98U);  // 5 * 122 = 610 = 2 * 256 + 98
}

TEST(NameBuckets, AreZeroForTheEmptyStringAndForSumsOfWholeBuckets) {
  EXPECT_EQ(NameSetBucket(""), 0U);
  EXPECT_EQ(NameSetBucket("@@@@"), 0U);  // 4 * 64 = 256
}

TEST(NameBuckets, CountBytesAbove127Negatively) {
  EXPECT_EQ(NameSetBucket("\xE9"), 0xE9U);  // -23
  EXPECT_EQ(NameSetBucket("a\xE9"), 74U);   // 97 - 23
  EXPECT_EQ(NameSetBucket("\xFF\xFF"), 254U);
  EXPECT_EQ(NameSetBucket("\x80"), 128U);
}

TEST_F(Names, OfOneBucketAreToldApart) {
  ASSERT_EQ(NameSetBucket("ab"), NameSetBucket("ba"));
  NameSetAdd("ab");
  EXPECT_EQ(NameSetContains("ba"), 0);
  NameSetAdd("ba");
  EXPECT_EQ(NameSetContains("ab"), 1);
  EXPECT_EQ(NameSetContains("ba"), 1);
}

TEST_F(Names, WhoseSumsDifferByAWholeTurnAreToldApart) {
  // "~~~" is 378, and 378 - 256 = 122 is "z".
  ASSERT_EQ(NameSetBucket("~~~"), NameSetBucket("z"));
  NameSetAdd("~~~");
  EXPECT_EQ(NameSetContains("z"), 0);
}

TEST_F(Names, InBucketZeroAreNotTheEmptyString) {
  NameSetAdd("@@@@");
  EXPECT_EQ(NameSetContains(""), 0);
  EXPECT_EQ(NameSetContains("@@@@"), 1);
}

TEST_F(Names, ThatCrowdIntoFewBucketsAreStillFoundAtOnce) {
  // A search along the lists of these buckets would take minutes.
  constexpr int kCount = 300000;
  char name[32];
  for (int i = 0; i < kCount; ++i) {
    std::snprintf(name, sizeof name, "__fpfix_tmp_%.6d", i);
    ASSERT_EQ(NameSetContains(name), 0);
    NameSetAdd(name);
    ASSERT_EQ(NameSetContains(name), 1);
  }
}

// --- Fresh names ---------------------------------------------------------------------------------

TEST_F(Names, ThatAreFreshCountUpFromTheCounter) {
  int counter = 0;
  EXPECT_EQ(NameSetFresh("__fpfix_tmp_", 6, &counter), "__fpfix_tmp_000000");
  EXPECT_EQ(NameSetFresh("__fpfix_tmp_", 6, &counter), "__fpfix_tmp_000001");
  EXPECT_EQ(counter, 2);
}

TEST_F(Names, ThatAreFreshAreInTheSetFromThenOn) {
  int counter = 7;
  const std::string name = NameSetFresh("t", 1, &counter);
  EXPECT_EQ(name, "t7");
  EXPECT_EQ(NameSetContains("t7"), 1);
  counter = 7;
  EXPECT_EQ(NameSetFresh("t", 1, &counter), "t8");
}

TEST_F(Names, ThatAreTakenArePassedOver) {
  NameSetAdd("t_00");
  NameSetAdd("t_01");
  NameSetAdd("t_03");
  int counter = 0;
  EXPECT_EQ(NameSetFresh("t_", 2, &counter), "t_02");
  EXPECT_EQ(counter, 3);
  EXPECT_EQ(NameSetFresh("t_", 2, &counter), "t_04");
  EXPECT_EQ(counter, 5);
}

TEST_F(Names, ThatAreFreshMayOutgrowTheirDigits) {
  int counter = 1000000;
  EXPECT_EQ(NameSetFresh("t", 6, &counter), "t1000000");
}

TEST_F(Names, ThatAreFreshMayHaveALongPrefix) {
  const std::string prefix(10000, 'p');
  int counter = 0;
  EXPECT_EQ(NameSetFresh(prefix.c_str(), 3, &counter), prefix + "000");
}

TEST_F(Names, ThatAreFreshComeAtOnceHoweverManyThereAre) {
  int counter = 0;
  for (int i = 0; i < 200000; ++i) NameSetFresh("__fpfix_tmp_", 6, &counter);
  EXPECT_EQ(counter, 200000);
  EXPECT_EQ(NameSetContains("__fpfix_tmp_199999"), 1);
}

TEST_F(Names, ThatAreFreshAreInTheSetAsTheyAreSpelled) {
  int counter = 9;
  EXPECT_EQ(NameSetFresh("__t_", 2, &counter), "__t_09");
  EXPECT_EQ(NameSetFresh("__t_", 2, &counter), "__t_10");
  EXPECT_EQ(counter, 11);
  for (const char* name : {"__t_09", "__t_10"}) EXPECT_EQ(NameSetContains(name), 1) << name;
  for (const char* other : {"__t_", "__t_9", "__t_010", "__t_08", "__t_11", "__t_1", "__t_10 ",
                            "__t_+9", "__t_-9", "__T_09", "__t_99999999999"}) {
    EXPECT_EQ(NameSetContains(other), 0) << other;
  }
}

TEST_F(Names, ThatAreFreshCountOnBehindTheLargestInt) {
  int counter = INT_MAX - 1;
  EXPECT_EQ(NameSetFresh("__t_", 1, &counter), "__t_2147483646");
  EXPECT_EQ(NameSetFresh("__t_", 1, &counter), "__t_2147483647");
  EXPECT_EQ(NameSetFresh("__t_", 11, &counter), "__t_-02147483648");
  EXPECT_EQ(NameSetFresh("__t_", 1, &counter), "__t_-2147483647");
  EXPECT_EQ(NameSetContains("__t_2147483647"), 1);
  EXPECT_EQ(NameSetContains("__t_-2147483647"), 1);
}

TEST_F(Names, ThatAreFreshNeedNoSet) {
  NameSetFree();
  int counter = 0;
  EXPECT_EQ(NameSetFresh("__t_", 1, &counter), "__t_0");
  EXPECT_EQ(NameSetFresh("__t_", 1, &counter), "__t_1");
}

std::string Spelled(const char* prefix, int digits, int number) {
  char text[64];
  std::snprintf(text, sizeof text, "%s%.*d", prefix, digits, number);
  return text;
}

// Prefixes that begin alike, and counters that are set back, against a set of plain texts.
TEST_F(Names, ThatAreFreshAreTheFirstThatAreNotThere) {
  const struct {
    const char* prefix;
    int digits;
  } kKinds[] = {{"__t", 1}, {"__t", 3}, {"__t0", 1}, {"__t1", 2}, {"__u", 2}, {"u", 1}, {"", 1}};
  std::mt19937 random(1);
  const auto below = [&](unsigned bound) { return random() % bound; };
  for (int round = 0; round < 300; ++round) {
    NameSetInit();
    std::set<std::string> model;
    int counters[std::size(kKinds)] = {};
    for (int step = 0; step < 60; ++step) {
      const std::size_t at = below(std::size(kKinds));
      const auto [prefix, digits] = kKinds[at];
      const int number = static_cast<int>(below(20));
      switch (below(8)) {
        case 0:
          counters[at] = number;
          break;
        case 1:
          NameSetAdd(Spelled(prefix, digits, number).c_str());
          model.insert(Spelled(prefix, digits, number));
          break;
        case 2: {
          const std::string name = Spelled(prefix, digits, number);
          ASSERT_EQ(NameSetContains(name.c_str()), model.contains(name) ? 1 : 0) << name;
          break;
        }
        default:
          int expected = counters[at];
          while (!model.insert(Spelled(prefix, digits, expected)).second) ++expected;
          ASSERT_EQ(NameSetFresh(prefix, digits, &counters[at]), Spelled(prefix, digits, expected));
          ASSERT_EQ(counters[at], expected + 1);
          break;
      }
    }
  }
}

}  // namespace
