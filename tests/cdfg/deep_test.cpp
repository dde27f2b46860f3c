// Recursion on the heap.
#include "cdfg/deep.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/stack.h"

namespace {

// --- Calling and answering -----------------------------------------------------------------------

Deep<int> Sum(int number) {
  if (number == 0) co_return 0;
  co_return number + co_await Sum(number - 1);
}

Deep<int> Fibonacci(int number) {
  if (number < 2) co_return number;
  const int before = co_await Fibonacci(number - 1);
  co_return before + co_await Fibonacci(number - 2);
}

TEST(DeepCalls, AnswerLikePlainRecursion) {
  EXPECT_EQ(RunDeep(Sum(0)), 0);
  EXPECT_EQ(RunDeep(Sum(100)), 5050);
  EXPECT_EQ(RunDeep(Fibonacci(20)), 6765);
}

Deep<> Trace(std::vector<std::string>& trace, int depth) {
  trace.push_back("in " + std::to_string(depth));
  for (int i = 0; i < 2 && depth < 2; ++i) co_await Trace(trace, depth + 1);
  trace.push_back("out " + std::to_string(depth));
}

TEST(DeepCalls, RunInTheOrderOfPlainRecursion) {
  std::vector<std::string> trace;
  RunDeep(Trace(trace, 1));
  EXPECT_EQ(trace, (std::vector<std::string>{"in 1", "in 2", "out 2", "in 2", "out 2", "out 1"}));
}

Deep<std::string> Repeat(const std::string& word, int times) {
  if (times == 0) co_return "";
  co_return word + co_await Repeat(word, times - 1);
}

Deep<std::unique_ptr<int>> Box(int number) { co_return std::make_unique<int>(number); }

TEST(DeepCalls, AnswerObjects) {
  EXPECT_EQ(RunDeep(Repeat("ab", 3)), "ababab");
  EXPECT_EQ(*RunDeep(Box(7)), 7);
}

Deep<bool> IsEven(int number);
Deep<bool> IsOdd(int number) {
  if (number == 0) co_return false;
  co_return co_await IsEven(number - 1);
}
Deep<bool> IsEven(int number) {
  if (number == 0) co_return true;
  co_return co_await IsOdd(number - 1);
}

TEST(DeepCalls, MayCallEachOther) {
  EXPECT_TRUE(RunDeep(IsEven(1000)));
  EXPECT_FALSE(RunDeep(IsEven(1001)));
}

TEST(DeepCalls, ThatAreNotRunDoNothing) {
  std::vector<std::string> trace;
  { const auto call = Trace(trace, 1); }
  EXPECT_TRUE(trace.empty());
}

// --- Runs within runs ----------------------------------------------------------------------------

Deep<int> SumInRunsOfItsOwn(int number) {
  if (number == 0) co_return 0;
  co_return RunDeep(Sum(number)) + co_await SumInRunsOfItsOwn(number - 1);
}

TEST(DeepCalls, MayRunOthersToTheirEnd) { EXPECT_EQ(RunDeep(SumInRunsOfItsOwn(3)), 6 + 3 + 1); }

// --- Depth ---------------------------------------------------------------------------------------

Deep<std::size_t> Depth(std::size_t levels) {
  if (levels == 0) co_return 0;
  co_return 1 + co_await Depth(levels - 1);
}

TEST(DeepCalls, AMillionLevelsNeedNoDeepStack) {
  std::size_t depth = 0;
  support::RunOnStack(support::kDefaultStack, [&] { depth = RunDeep(Depth(1000000)); });
  EXPECT_EQ(depth, 1000000U);
}

Deep<> GoUpAndDown(int levels, int times) {
  for (int i = 0; i < times; ++i) co_await GoUpAndDown(levels - 1, levels > 1 ? times : 0);
}

TEST(DeepCalls, MayBeMadeAndEndedAgainAndAgain) {
  RunDeep(GoUpAndDown(6, 8));
  EXPECT_EQ(RunDeep(Depth(5000)), 5000U);
}

// --- Exceptions ----------------------------------------------------------------------------------

struct Failure {};

// Counts how many of its kind are alive.
struct Counted {
  Counted() { ++alive; }
  ~Counted() { --alive; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  static inline int alive = 0;
};

Deep<int> FailAtTheBottom(int levels) {
  const Counted counted;
  if (levels == 0) throw Failure{};
  co_return 1 + co_await FailAtTheBottom(levels - 1);
}

TEST(DeepCalls, LetAnExceptionOut) {
  EXPECT_THROW(RunDeep(FailAtTheBottom(0)), Failure);
  EXPECT_THROW(RunDeep(FailAtTheBottom(1)), Failure);
  EXPECT_THROW(RunDeep(FailAtTheBottom(50)), Failure);
  EXPECT_EQ(Counted::alive, 0);
}

TEST(DeepCalls, RunAsBeforeAfterAnException) {
  EXPECT_THROW(RunDeep(FailAtTheBottom(10)), Failure);
  EXPECT_EQ(RunDeep(Sum(100)), 5050);
}

TEST(DeepCalls, LetAnExceptionOutOfAnyDepth) {
  support::RunOnStack(support::kDefaultStack,
                      [] { EXPECT_THROW(RunDeep(FailAtTheBottom(200000)), Failure); });
  EXPECT_EQ(Counted::alive, 0);
}

Deep<int> CatchFromARunOfItsOwn(int number) {
  int caught = 0;
  try {
    RunDeep(FailAtTheBottom(number));
  } catch (const Failure&) {
    caught = 1;
  }
  co_return caught + co_await Sum(number);
}

TEST(DeepCalls, GoOnAfterAnExceptionOfARunOfTheirOwn) {
  EXPECT_EQ(RunDeep(CatchFromARunOfItsOwn(4)), 11);
  EXPECT_EQ(Counted::alive, 0);
}

}  // namespace
