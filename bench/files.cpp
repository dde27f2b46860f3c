#include "bench/files.h"

#include "bench/measure.h"
#include "cdfg/file.h"
#include "cdfg/graph.h"

namespace bench {

long SizeOf(std::FILE* stream) {
  std::fseek(stream, 0, SEEK_END);
  const long size = std::ftell(stream);
  std::rewind(stream);
  return size;
}

long SizeOfFile(const char* path) {
  std::FILE* stream = std::fopen(path, "rb");
  if (stream == nullptr) return -1;
  const long size = SizeOf(stream);
  std::fclose(stream);
  return size;
}

std::size_t CountNodes(const char* path, const char* scratch) {
  const Usage counting = RunInChild([&] {
    CdfgGraph* graph = CdfgReadFile(path);
    std::FILE* out = std::fopen(scratch, "wb");
    if (graph == nullptr || out == nullptr) return false;
    std::fprintf(out, "%zu", CdfgNodeCount(graph));
    return std::fclose(out) == 0;
  });
  if (!counting.succeeded) return 0;
  std::size_t count = 0;
  std::FILE* in = std::fopen(scratch, "rb");
  if (in != nullptr && std::fscanf(in, "%zu", &count) != 1) count = 0;
  if (in != nullptr) std::fclose(in);
  return count;
}

}  // namespace bench
