// The commands of the tool, one file each.
//
// To add one: write its Add function in a file of its own, name it here and in the list in
// main.cpp.
#pragma once

#include <CLI/CLI.hpp>

// Each adds its subcommand to `app`. Once the command line has been read, the subcommand's callback
// does the work and leaves the tool's exit status in `status`.
void AddDump(CLI::App* app, int* status);
void AddDis(CLI::App* app, int* status);
void AddAs(CLI::App* app, int* status);
