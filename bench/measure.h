// What a piece of work costs, measured in a process of its own.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

struct Usage {
  double cpu_seconds = 0;   // user and system time, the process's end included
  double wall_seconds = 0;  // from start to end
  double peak_bytes = 0;    // the most memory that was resident at a time
  bool succeeded = false;
};

// Runs `work` in a child of this process, whose memory is therefore counted from a small start.
Usage RunInChild(const std::function<bool()>& work);

// Runs the program at `path`, whose output goes nowhere.
Usage RunProgram(const std::string& path, const std::vector<std::string>& arguments);

// The least time of the runs, since what else the machine does only ever adds to it, and the
// highest peak; succeeded only when all runs did.
Usage BestOf(const std::vector<Usage>& runs);

}  // namespace bench
