// What a piece of work costs, measured in a process of its own.
#pragma once

#include <functional>
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

// The median of each figure over the runs; succeeded only when all runs did.
Usage MedianOf(const std::vector<Usage>& runs);

}  // namespace bench
