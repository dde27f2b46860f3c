// Looking at a stopped run from within: what it said and which status it would have ended with.
#pragma once

#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

#include "cdfg/graph.h"

namespace support {

// What a piece of a run did: the status it stopped with, none when it came to its end, and all it
// wrote to standard output.
struct Outcome {
  std::optional<int> status;
  std::string output;

  bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

// Runs `action` with a stop handler that comes back here instead of ending the process.
Outcome RunCatchingStop(const std::function<void()>& action);

// The outcome of a walk that cannot end and was stopped at `node`.
Outcome Endless(NodeId node);
// The outcome of an action that came to its end and said nothing.
Outcome Quiet();

}  // namespace support
