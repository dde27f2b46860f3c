// cdfg: looks at CDFG files and makes them from text.
//
// Exit status: 0, or 1 when a file cannot be read or written, or 2 when the command line or a text
// has a mistake.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <new>

#include "tools/commands.h"
#include "tools/files.h"

namespace {

constexpr void (*kCommands[])(CLI::App*, int*) = {
    AddDump,
    AddDis,
    AddAs,
};

int Run(int argc, char** argv) {
  int status = kStatusFine;
  CLI::App app("Looks at CDFG files and makes them from text.", "cdfg");
  app.require_subcommand(1);
  app.footer(
      "'cdfg COMMAND --help' shows an example of each. Where a FILE is asked for, - stands\n"
      "for standard input or output.");
  for (const auto add : kCommands) add(&app, &status);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kStatusFine : kStatusUsage;
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("cdfg: out of memory\n", stderr);
    return kStatusFile;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "cdfg: %s\n", error.what());
    return kStatusFile;
  }
}
