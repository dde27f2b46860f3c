#include "tests/support/stop.h"

#include <ostream>

#include "cdfg/memory.h"
#include "tests/support/capture.h"

namespace support {
namespace {

struct Stopped {
  int status;
};

void ThrowStopped(int status) { throw Stopped{status}; }

class StopCatcher {
 public:
  StopCatcher() { CdfgSetStopHandler(ThrowStopped); }
  ~StopCatcher() { CdfgSetStopHandler(nullptr); }
  StopCatcher(const StopCatcher&) = delete;
  StopCatcher& operator=(const StopCatcher&) = delete;
};

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  if (outcome.status) {
    stream << "stopped with " << *outcome.status;
  } else {
    stream << "came to its end";
  }
  return stream << " saying \"" << outcome.output << '"';
}

Outcome RunCatchingStop(const std::function<void()>& action) {
  const StopCatcher catcher;
  Outcome outcome;
  outcome.output = CaptureOutput([&] {
    try {
      action();
    } catch (const Stopped& stopped) {
      outcome.status = stopped.status;
    }
  });
  return outcome;
}

Outcome Endless(NodeId node) {
  return {255, "kelvo : Error : Endless graph : node " + std::to_string(node) + "\n"};
}

Outcome Quiet() { return {}; }

}  // namespace support
