#include "tests/support/process.h"

#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "tests/support/files.h"

namespace support {
namespace {

// A list of strings as the system takes it: pointers with a null behind the last.
std::vector<char*> Pointers(std::vector<std::string>& strings) {
  std::vector<char*> pointers;
  for (std::string& string : strings) pointers.push_back(string.data());
  pointers.push_back(nullptr);
  return pointers;
}

bool SetsTheSame(const std::string& setting, const char* other) {
  const std::size_t name_size = setting.find('=') + 1;
  return std::strncmp(setting.c_str(), other, name_size) == 0;
}

std::vector<std::string> EnvironmentWith(const std::vector<std::string>& settings) {
  std::vector<std::string> environment = settings;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    bool is_replaced = false;
    for (const std::string& setting : settings) is_replaced |= SetsTheSame(setting, *entry);
    if (!is_replaced) environment.emplace_back(*entry);
  }
  return environment;
}

int StatusOf(int wait_status) {
  return WIFSIGNALED(wait_status) ? 1000 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

}  // namespace

ProcessResult RunProgram(const std::string& path, const std::vector<std::string>& arguments,
                         const std::vector<std::string>& settings, const std::string& name) {
  std::vector<std::string> words = {name.empty() ? path : name};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = EnvironmentWith(settings);
  const Stream output(std::tmpfile());
  const Stream errors(std::tmpfile());
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(output.get()), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(errors.get()), STDERR_FILENO);
  pid_t process = 0;
  const int failure = posix_spawn(&process, path.c_str(), &actions, nullptr, Pointers(words).data(),
                                  Pointers(environment).data());
  posix_spawn_file_actions_destroy(&actions);
  EXPECT_EQ(failure, 0) << path;
  if (failure != 0) return {};
  int wait_status = 0;
  EXPECT_EQ(waitpid(process, &wait_status, 0), process);
  return {StatusOf(wait_status), ReadStream(output.get()), ReadStream(errors.get())};
}

}  // namespace support
