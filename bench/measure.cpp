#include "bench/measure.h"

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace bench {

namespace {

double SecondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

}  // namespace

Usage RunInChild(const std::function<bool()>& work) {
  std::fflush(stdout);
  const auto start = std::chrono::steady_clock::now();
  const pid_t child = fork();
  if (child == 0) _exit(work() ? 0 : 1);
  Usage usage;
  if (child < 0) return usage;
  int status = 0;
  rusage resources{};
  wait4(child, &status, 0, &resources);
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  usage.wall_seconds = wall.count();
  usage.cpu_seconds = SecondsOf(resources.ru_utime) + SecondsOf(resources.ru_stime);
  usage.peak_bytes = static_cast<double>(resources.ru_maxrss) * 1024;
  usage.succeeded = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  return usage;
}

Usage RunProgram(const std::string& path, const std::vector<std::string>& arguments) {
  std::vector<std::string> words{path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  return RunInChild([&] {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return false;
    execv(path.c_str(), pointers.data());
    return false;
  });
}

Usage BestOf(const std::vector<Usage>& runs) {
  if (runs.empty()) return {};
  Usage best = runs.front();
  for (const Usage& run : runs) {
    best.cpu_seconds = std::min(best.cpu_seconds, run.cpu_seconds);
    best.wall_seconds = std::min(best.wall_seconds, run.wall_seconds);
    best.peak_bytes = std::max(best.peak_bytes, run.peak_bytes);
    best.succeeded = best.succeeded && run.succeeded;
  }
  return best;
}

}  // namespace bench
