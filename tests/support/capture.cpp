#include "tests/support/capture.h"

#include <unistd.h>

#include <cstdio>

#include "tests/support/files.h"

namespace support {
namespace {

// Leads standard output into a file for the length of a scope.
class Redirected {
 public:
  explicit Redirected(std::FILE* target) {
    std::fflush(stdout);
    saved_ = dup(STDOUT_FILENO);
    dup2(fileno(target), STDOUT_FILENO);
  }
  ~Redirected() {
    std::fflush(stdout);
    dup2(saved_, STDOUT_FILENO);
    close(saved_);
  }
  Redirected(const Redirected&) = delete;
  Redirected& operator=(const Redirected&) = delete;

 private:
  int saved_;
};

}  // namespace

std::string CaptureOutput(const std::function<void()>& action) {
  const Stream target(std::tmpfile());
  {
    const Redirected redirected(target.get());
    action();
  }
  return ReadStream(target.get());
}

}  // namespace support
