#include "driver/command_line.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>

namespace {

void TakePath(CommandLine& command, const char* path) {
  for (const char** slot : {&command.input_path, &command.info_path, &command.output_path}) {
    if (*slot != nullptr) continue;
    *slot = path;
    return;
  }
}

// The setting that a flag turns on, null for anything else.
int* FlagOf(CommandLine& command, const char* argument) {
  if (std::strcmp(argument, "-title") == 0) return &command.title;
  if (std::strcmp(argument, "-debug") == 0) return &command.debug;
  if (std::strcmp(argument, "-module") == 0) return &command.module;
  return nullptr;
}

// The setting that takes the next argument, null for anything else.
const char** PrefixOf(CommandLine& command, const char* argument) {
  if (std::strcmp(argument, "-p_tvar") == 0) return &command.temp_prefix;
  if (std::strcmp(argument, "-p_cvar") == 0) return &command.cast_prefix;
  return nullptr;
}

}  // namespace

CommandLine ParseCommandLine(int argument_count, char** arguments) {
  CommandLine command;
  for (int i = 1; i < argument_count; ++i) {
    if (int* flag = FlagOf(command, arguments[i])) {
      *flag = 1;
    } else if (const char** prefix = PrefixOf(command, arguments[i])) {
      if (i + 1 == argument_count) {
        std::printf("kelvo : Error Illegal option '%s <prifix>'\n", arguments[i]);
        command.failed = true;
        return command;
      }
      *prefix = arguments[++i];
    } else {
      TakePath(command, arguments[i]);
    }
  }
  command.failed = command.output_path == nullptr;
  return command;
}
