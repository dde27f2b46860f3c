// A small design that gives every part of the pipeline something to do.
#pragma once

#include <string>

// Writes to `path` the graph of
//
//   int sub(int b, int c) { return b + c; }
//   int top(int a, int b) { int x; while (a) { x = a / (b + sub(a, b)); } return x; }
//   int main() { top(1, 2); }      with the directive "module prefix=p" at the call
void WriteModuleDesign(const std::string& path);
