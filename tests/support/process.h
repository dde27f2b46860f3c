// Running a program and looking at what it did.
#pragma once

#include <string>
#include <vector>

namespace support {

struct ProcessResult {
  int status = -1;  // the exit status; 1000 plus the signal's number when a signal ended it
  std::string output;
  std::string errors;
};

// Runs the program at `path` to its end. `settings` are added to the environment, each written
// NAME=VALUE. `name` is what the program is told it was started by; empty: the path.
ProcessResult RunProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::vector<std::string>& settings = {},
                         const std::string& name = "");

}  // namespace support
