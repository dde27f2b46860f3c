// Designs that give the pipeline something to do.
#pragma once

#include <string>

// Writes to `path` a small design with something for every part of the pipeline, the graph of
//
//   int sub(int b, int c) { return b + c; }
//   int top(int a, int b) { int x; while (a) { x = a / ((char)b + sub(a, b)); } return x; }
//   int main() { top(1, 2); }      with the directive "module prefix=p" at the call
void WriteModuleDesign(const std::string& path);

// Writes to `path` a design whose module function holds one statement, a sum of `depth` operations
// nested in each other.
void WriteDeepDesign(const std::string& path, int depth);
