// Running the kelvo that was built, on files of a test's own.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/files.h"
#include "tests/support/process.h"
#include "tests/support/records.h"

// A test with a directory that holds a small design: a root and a file without elements.
class KelvoRun : public testing::Test {
 protected:
  static std::string SmallDesign() {
    using namespace support;
    return Head(1, CFG_ROOT, {}, 1) + NodeAttribute(CfgRoot_ELEMENT, 2) + Tail() +
           Head(2, CFG_FILEINFO, {.prev = 1}, 1) + StringAttribute(CfgFileinfo_NAME, "a.c") +
           Tail("a.c", 1, 1);
  }

  support::ProcessResult Run(const std::vector<std::string>& arguments) const {
    support::ProcessResult result = support::RunProgram(KELVO_BINARY, arguments);
    EXPECT_EQ(result.errors, "") << "everything is said on standard output";
    return result;
  }
  // Runs over the design with these options in front.
  support::ProcessResult RunDesign(std::vector<std::string> options = {}) const {
    options.insert(options.end(), {input, info, output});
    return Run(options);
  }

  support::TempDir dir;
  const std::string input = dir.File("in.cdfg", SmallDesign());
  const std::string info = dir.Path("info");
  const std::string output = dir.Path("out.cdfg");
};
