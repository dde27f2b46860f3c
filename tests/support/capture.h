// Standard output of this process, caught while something runs.
#pragma once

#include <functional>
#include <string>

namespace support {

// Runs `action` and answers all that went to standard output meanwhile, whether or not the action
// ends by an exception (which then goes on, and the output is lost).
std::string CaptureOutput(const std::function<void()>& action);

}  // namespace support
