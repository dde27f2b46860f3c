// What the benchmarks of whole files ask about them.
#pragma once

#include <cstddef>
#include <cstdio>

namespace bench {

// How many bytes the stream has; it stands at its beginning afterwards.
long SizeOf(std::FILE* stream);
// The same of a file, -1 when it cannot be read.
long SizeOfFile(const char* path);

// How many nodes the file has, 0 when it cannot be read. Counted in another process so that this
// one stays small; `scratch` is a file that may be overwritten.
std::size_t CountNodes(const char* path, const char* scratch);

}  // namespace bench
