// The command line of kelvo.
#pragma once

// What the arguments say. The strings are the process's own; null means not given.
struct CommandLine {
  int title = 0;
  int debug = 0;
  int module = 0;  // accepted and stored; nothing asks for it
  const char* temp_prefix = nullptr;
  const char* cast_prefix = nullptr;
  const char* input_path = nullptr;
  const char* info_path = nullptr;  // has to be given, is never opened
  const char* output_path = nullptr;
  bool failed = false;  // an option lacks its argument, or a path is missing
};

// Reads the arguments behind the program name: options by exact comparison, everything else a path,
// a fourth path and later ones ignored. An option without its argument is said in one line and ends
// the reading; what stood in front of it counts.
CommandLine ParseCommandLine(int argument_count, char** arguments);
