// Runs pass cases: pass_cases [--rewrite] FILE-OR-DIRECTORY...
//
// A file named *.cdfg is a design: the whole pipeline runs over it, and its shape is checked after
// every step.
//
// Prints what differs for each case that fails and a closing count; status 0 when all passed, 1
// when one failed, 2 for a command line without cases. With --rewrite, expectations that do not
// hold are replaced in the files; the change is then there to be read before it is committed.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/passes/runner/run_case.h"

namespace {

namespace fs = std::filesystem;

constexpr int kStatusFailed = 1;
constexpr int kStatusUsage = 2;

struct Request {
  bool rewrite = false;
  std::vector<std::string> paths;
};

struct Count {
  int passed = 0;
  int rewritten = 0;
  int failed = 0;
};

void AddCases(const fs::path& path, std::vector<std::string>* cases) {
  if (!fs::is_directory(path)) {
    cases->push_back(path.string());
    return;
  }
  std::vector<std::string> found;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(path)) {
    const fs::path extension = entry.path().extension();
    if (extension == ".case" || extension == ".cdfg") found.push_back(entry.path().string());
  }
  std::sort(found.begin(), found.end());
  cases->insert(cases->end(), found.begin(), found.end());
}

Request ParseRequest(int argument_count, char** arguments) {
  Request request;
  for (int i = 1; i < argument_count; ++i) {
    const std::string argument = arguments[i];
    if (argument == "--rewrite") {
      request.rewrite = true;
    } else {
      AddCases(argument, &request.paths);
    }
  }
  return request;
}

bool ReadText(const std::string& path, std::string* text) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  std::ostringstream content;
  content << file.rdbuf();
  *text = content.str();
  return true;
}

void Report(const CaseRun& run) {
  std::printf("FAIL %s: %s\n", run.parsed.path.c_str(), run.parsed.intent.c_str());
  std::istringstream details(run.mistake + run.verdict.details);
  for (std::string line; std::getline(details, line);) std::printf("    %s\n", line.c_str());
}

bool Rewrite(const CaseRun& run) {
  if (!run.mistake.empty() || !run.verdict.shape) return false;
  std::ofstream file(run.parsed.path, std::ios::binary);
  file << RewrittenCase(run);
  std::printf("rewritten %s: %s\n", run.parsed.path.c_str(), run.parsed.intent.c_str());
  return static_cast<bool>(file.flush());
}

void RunOne(const std::string& path, bool rewrite, Count* count) {
  std::string content;
  if (!ReadText(path, &content)) {
    std::printf("FAIL %s: cannot be read\n", path.c_str());
    ++count->failed;
    return;
  }
  const bool is_design = fs::path(path).extension() == ".cdfg";
  const CaseRun run = is_design ? RunDesign(path, content) : RunCase(path, content);
  if (Passed(run)) {
    ++count->passed;
  } else if (rewrite && !is_design && Rewrite(run)) {
    ++count->rewritten;
  } else {
    Report(run);
    ++count->failed;
  }
}

}  // namespace

int main(int argument_count, char** arguments) {
  const Request request = ParseRequest(argument_count, arguments);
  if (request.paths.empty()) {
    std::printf("usage: pass_cases [--rewrite] FILE-OR-DIRECTORY...\n");
    return kStatusUsage;
  }
  Count count;
  for (const std::string& path : request.paths) RunOne(path, request.rewrite, &count);
  if (request.rewrite) {
    std::printf("%d passed, %d rewritten, %d failed\n", count.passed, count.rewritten,
                count.failed);
  } else {
    std::printf("%d passed, %d failed\n", count.passed, count.failed);
  }
  return count.failed == 0 ? 0 : kStatusFailed;
}
