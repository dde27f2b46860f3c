// Stacks whose first elements lie in themselves.
#include "cdfg/stack.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

TEST(Stacks, AreEmptyAtFirst) {
  Stack<int> stack;
  EXPECT_TRUE(stack.IsEmpty());
  EXPECT_EQ(stack.Size(), 0u);
}

TEST(Stacks, GiveBackWhatWasPushedLast) {
  Stack<int, 2> stack;
  for (int i = 0; i < 5; ++i) stack.Push(i);
  EXPECT_EQ(stack.Back(), 4);
  EXPECT_EQ(stack.Below(0), 4);
  EXPECT_EQ(stack.Below(4), 0);
  EXPECT_EQ(stack[1], 1);
  EXPECT_EQ(stack.End() - &stack[0], 5);
  stack.Pop();
  EXPECT_EQ(stack.Back(), 3);
  EXPECT_EQ(stack.Size(), 4u);
}

TEST(Stacks, KeepTheirElementsThroughEveryGrowth) {
  Stack<std::uint64_t, 4> stack;
  for (std::uint64_t i = 0; i < 100000; ++i) {
    stack.Push(i * i);
    ASSERT_EQ(stack[0], 0u);
    ASSERT_EQ(stack.Back(), i * i);
  }
  for (std::uint64_t i = 0; i < 100000; ++i) ASSERT_EQ(stack[i], i * i);
}

TEST(Stacks, ShrinkButDoNotGrowByShrinking) {
  Stack<int, 2> stack;
  for (int i = 0; i < 10; ++i) stack.Push(i);
  stack.ShrinkTo(20);
  EXPECT_EQ(stack.Size(), 10u);
  stack.ShrinkTo(3);
  EXPECT_EQ(stack.Size(), 3u);
  EXPECT_EQ(stack.Back(), 2);
  stack.ShrinkTo(0);
  EXPECT_TRUE(stack.IsEmpty());
}

TEST(Stacks, ServeAsWellInsideAndOutside) {
  for (const int count : {1, 8, 9, 1000}) {
    Stack<int> stack;
    std::vector<int> plain;
    for (int i = 0; i < count; ++i) {
      stack.Push(i);
      plain.push_back(i);
      if (i % 3 == 2) {
        stack.Pop();
        plain.pop_back();
      }
    }
    ASSERT_EQ(std::vector<int>(&stack[0], stack.End()), plain);
  }
}

}  // namespace
