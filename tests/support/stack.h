// Running on the stack that a program has by default.
#pragma once

#include <cstddef>
#include <functional>

namespace support {

inline constexpr std::size_t kDefaultStack = 8 * 1024 * 1024;

// Runs `action` on a stack of this size, whatever the test was started with.
void RunOnStack(std::size_t size, const std::function<void()>& action);

}  // namespace support
