// A run in which one allocation fails, for every allocation of the run.
//
// The allocator that fails is preloaded (tests/support/failing_malloc.cpp). It counts from the
// start of main on: what the runtime allocates in front of that is not the program's, and a failure
// there may end in a normal run.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/driver/kelvo_run.h"
#include "tests/driver/module_design.h"

namespace {

constexpr int kMostAllocations = 20000;

class MemoryShort : public KelvoRun {
 protected:
  void SetUp() override {
#ifndef FAILING_MALLOC
    GTEST_SKIP() << "a sanitizer has an allocator of its own";
#endif
    WriteModuleDesign(design);
  }

  // Runs with the `failing` allocation failing, counted from 1 (0: none), and every one after it
  // when `onwards`.
  support::ProcessResult RunFailing(int failing, bool onwards,
                                    const std::vector<std::string>& options = {}) {
    std::filesystem::remove(report);
    std::filesystem::remove(output);
    std::vector<std::string> settings = {"FAILING_MALLOC_AT=" + std::to_string(failing),
                                         "FAILING_MALLOC_REPORT=" + report};
    if (onwards) settings.push_back("FAILING_MALLOC_ONWARDS=1");
    std::vector<std::string> arguments = options;
    arguments.insert(arguments.end(), {design, info, output});
#ifdef FAILING_MALLOC
    settings.push_back("LD_PRELOAD=" FAILING_MALLOC);
    return support::RunProgram(KELVO_WITH_LIBRARIES, arguments, settings);
#else
    return {};
#endif
  }
  bool HasFailed() const { return std::filesystem::exists(report); }

  // How a run short of memory may end: in the handler, in the making of a node, or in the reader.
  // Progress lines may stand in front of that.
  bool SaysShortOfMemory(const std::string& text) const {
    return text.ends_with("kelvo :Error : Short of memory\n") ||
           text.ends_with("kelvo : Error Short of memory. (create node)\n") ||
           text.ends_with("Error:Cdfg read short of memory\nkelvo : Error : Cat't open '" + design +
                          "'\n");
  }
  // Answers how many allocations a run makes.
  int StepThroughAllocations(bool onwards) {
    for (int failing = 1; failing < kMostAllocations; ++failing) {
      const support::ProcessResult result = RunFailing(failing, onwards);
      if (!HasFailed()) {
        EXPECT_EQ(result.status, 0);
        return failing - 1;
      }
      EXPECT_EQ(result.status, 255) << "allocation " << failing;
      EXPECT_TRUE(SaysShortOfMemory(result.output))
          << "allocation " << failing << " said: " << result.output;
      EXPECT_LE(std::count(result.output.begin(), result.output.end(), '\n'), 2);
      EXPECT_EQ(result.errors, "") << "allocation " << failing;
      EXPECT_FALSE(std::filesystem::exists(output)) << "allocation " << failing;
    }
    ADD_FAILURE() << "the run makes more allocations than this test looks at";
    return 0;
  }

  const std::string design = dir.Path("module.cdfg");
  const std::string report = dir.Path("report");
};

TEST_F(MemoryShort, NowhereIsANormalRun) {
  const auto result = RunFailing(0, false);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_FALSE(HasFailed());
  EXPECT_GT(support::ReadFile(output).size(), support::ReadFile(design).size());
}

TEST_F(MemoryShort, AtAnyOneAllocationEndsTheRun) { EXPECT_GT(StepThroughAllocations(false), 20); }

TEST_F(MemoryShort, FromAnyAllocationOnEndsTheRun) { EXPECT_GT(StepThroughAllocations(true), 20); }

// The runtime can do without what it allocates itself to print the banner: a buffer for standard
// output and the rules of the time zone. These come first; from then on it is the program's turn.
TEST_F(MemoryShort, AtAnyOneAllocationBehindTheBannerEndsTheRun) {
  bool has_ended_short = false;
  for (int failing = 1; failing < kMostAllocations; ++failing) {
    const support::ProcessResult result = RunFailing(failing, false, {"-debug"});
    if (!HasFailed()) break;
    if (result.status == 0) {
      EXPECT_FALSE(has_ended_short) << "allocation " << failing;
      EXPECT_TRUE(result.output.ends_with("--- Deleteing of used memory ...\n"));
      continue;
    }
    has_ended_short = true;
    EXPECT_EQ(result.status, 255) << "allocation " << failing;
    EXPECT_TRUE(SaysShortOfMemory(result.output))
        << "allocation " << failing << " said: " << result.output;
  }
  EXPECT_TRUE(has_ended_short);
}

}  // namespace
