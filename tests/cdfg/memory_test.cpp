// Allocation with a handler for the case that there is no memory, and stopping a run.
#include "cdfg/memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "cdfg/graph.h"
#include "tests/support/sanitizers.h"
#include "tests/support/stop.h"

// Asked for more memory than there is, the address sanitizer would end the run.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }

namespace {

// No machine has this much; volatile, or the compiler would see it too.
volatile std::size_t too_much = SIZE_MAX / 4;

struct OutOfMemory {};
int handler_calls = 0;

void ThrowOutOfMemory() {
  ++handler_calls;
  throw OutOfMemory{};
}

class Memory : public testing::Test {
 protected:
  void SetUp() override { handler_calls = 0; }
  void TearDown() override { MemSetOomHandler(nullptr); }
};

// --- Blocks --------------------------------------------------------------------------------------

TEST_F(Memory, IsZeroFilled) {
  // What the second block is made from has been used before.
  auto* used = static_cast<unsigned char*>(MemAllocZero(4096));
  std::memset(used, 0xFF, 4096);
  MemFree(used);
  auto* block = static_cast<unsigned char*>(MemAllocZero(4096));
  ASSERT_NE(block, nullptr);
  for (int i = 0; i < 4096; ++i) ASSERT_EQ(block[i], 0) << i;
  MemFree(block);
}

TEST_F(Memory, KeepsItsContentsWhenResized) {
  char* block = static_cast<char*>(MemAllocZero(8));
  std::strcpy(block, "seven c");
  block = static_cast<char*>(MemRealloc(block, 1000000));
  EXPECT_STREQ(block, "seven c");
  block = static_cast<char*>(MemRealloc(block, 5));
  EXPECT_EQ(std::string(block, 5), "seven");
  MemFree(block);
}

TEST_F(Memory, IsAllocatedByResizingNothing) {
  void* block = MemRealloc(nullptr, 100);
  ASSERT_NE(block, nullptr);
  std::memset(block, 1, 100);
  MemFree(block);
}

TEST_F(Memory, OfSizeZeroIsABlockAndNoFailure) {
  MemSetOomHandler(ThrowOutOfMemory);
  void* block = MemAllocZero(0);
  EXPECT_NE(block, nullptr);
  block = MemRealloc(block, 0);
  EXPECT_NE(block, nullptr);
  MemFree(block);
  EXPECT_EQ(handler_calls, 0);
}

TEST_F(Memory, HoldsCopiesOfStrings) {
  char text[] = "text";
  char* copy = MemStrdup(text);
  text[0] = 'n';
  EXPECT_STREQ(copy, "text");
  MemFree(copy);
  char* empty = MemStrdup("");
  EXPECT_STREQ(empty, "");
  MemFree(empty);
}

TEST_F(Memory, HoldsNoCopyOfANullString) { EXPECT_EQ(MemStrdup(nullptr), nullptr); }

TEST_F(Memory, MayBeFreedWhenNull) { MemFree(nullptr); }

// --- The handler ---------------------------------------------------------------------------------

TEST_F(Memory, ThatIsShortCallsTheHandler) {
  MemSetOomHandler(ThrowOutOfMemory);
  EXPECT_THROW(MemAllocZero(too_much), OutOfMemory);
  EXPECT_THROW(MemRealloc(nullptr, too_much), OutOfMemory);
  EXPECT_EQ(handler_calls, 2);
}

TEST_F(Memory, ThatIsShortForAResizedBlockCallsTheHandlerAndKeepsTheBlock) {
  MemSetOomHandler(ThrowOutOfMemory);
  char* block = static_cast<char*>(MemAllocZero(8));
  std::strcpy(block, "kept");
  EXPECT_THROW(MemRealloc(block, too_much), OutOfMemory);
  EXPECT_STREQ(block, "kept");
  MemFree(block);
}

TEST_F(Memory, ThatIsShortIsNullWithoutAHandler) {
  EXPECT_EQ(MemAllocZero(too_much), nullptr);
  EXPECT_EQ(MemRealloc(nullptr, too_much), nullptr);
}

TEST_F(Memory, ThatIsThereCallsNoHandler) {
  MemSetOomHandler(ThrowOutOfMemory);
  MemFree(MemAllocZero(100));
  MemFree(MemRealloc(nullptr, 100));
  MemFree(MemStrdup("text"));
  EXPECT_EQ(handler_calls, 0);
}

TEST_F(Memory, CallsTheHandlerRegisteredLast) {
  MemSetOomHandler([] { throw 1; });
  MemSetOomHandler(ThrowOutOfMemory);
  EXPECT_THROW(MemAllocZero(too_much), OutOfMemory);
}

TEST_F(Memory, CallsNoHandlerThatWasTakenBack) {
  MemSetOomHandler(ThrowOutOfMemory);
  MemSetOomHandler(nullptr);
  EXPECT_EQ(MemAllocZero(too_much), nullptr);
  EXPECT_EQ(handler_calls, 0);
}

TEST_F(Memory, ThatIsShortForNewCallsTheHandler) {
  if (support::kAddressSanitizer) GTEST_SKIP() << "the sanitizer's new asks no handler";
  MemSetOomHandler(ThrowOutOfMemory);
  EXPECT_THROW(::operator delete(::operator new(too_much)), OutOfMemory);
  EXPECT_EQ(handler_calls, 1);
}

TEST_F(Memory, ThatIsShortForContainersCallsTheHandler) {
  if (support::kAddressSanitizer) GTEST_SKIP() << "the sanitizer's new asks no handler";
  MemSetOomHandler(ThrowOutOfMemory);
  std::vector<char> bytes;
  EXPECT_THROW(bytes.reserve(too_much), OutOfMemory);
  std::string text;
  EXPECT_THROW(text.reserve(too_much), OutOfMemory);
  EXPECT_EQ(handler_calls, 2);
}

// --- Stopping ------------------------------------------------------------------------------------

TEST(Stop, CallsTheStopHandlerWithTheStatus) {
  const auto outcome = support::RunCatchingStop([] { CdfgStop(7); });
  EXPECT_EQ(outcome.status, 7);
  EXPECT_EQ(outcome.output, "");
}

TEST(StopDeathTest, EndsTheProcessWithTheStatus) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(CdfgStop(255), testing::ExitedWithCode(255), "");
}

TEST(StopDeathTest, EndsTheProcessAgainOnceTheStopHandlerIsTakenBack) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  support::RunCatchingStop([] { CdfgStop(7); });
  EXPECT_EXIT(CdfgStop(3), testing::ExitedWithCode(3), "");
}

}  // namespace
