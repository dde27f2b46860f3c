// Where the tool's output is gathered: in memory, or in memory and now and then on to a file.
#pragma once

#include <cstdio>
#include <string>

struct Output {
  std::FILE* file = nullptr;  // null: everything stays in `text`
  std::string text;           // not yet written
  int error = 0;              // errno of a write that went wrong; what follows is dropped
};

// Passes on what has gathered once it is worth a write. To be called where `text` is not going to
// be taken back, such as at the end of a record or a line.
void FlushWhenFull(Output* out);
// Passes on everything.
void Flush(Output* out);
