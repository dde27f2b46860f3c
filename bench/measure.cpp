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

double Median(const std::vector<Usage>& runs, double Usage::*figure) {
  std::vector<double> values;
  for (const Usage& run : runs) values.push_back(run.*figure);
  std::sort(values.begin(), values.end());
  const std::size_t middle = values.size() / 2;
  if (values.empty()) return 0;
  return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
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

Usage MedianOf(const std::vector<Usage>& runs) {
  Usage median;
  median.cpu_seconds = Median(runs, &Usage::cpu_seconds);
  median.wall_seconds = Median(runs, &Usage::wall_seconds);
  median.peak_bytes = Median(runs, &Usage::peak_bytes);
  median.succeeded = !runs.empty();
  for (const Usage& run : runs) median.succeeded = median.succeeded && run.succeeded;
  return median;
}

}  // namespace bench
