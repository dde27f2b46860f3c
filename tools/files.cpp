#include "tools/files.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

namespace {

// One byte more than a regular file holds, so that its end is met without growing.
std::size_t FirstSize(std::FILE* file) {
  struct stat status = {};
  const bool is_known = fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode);
  return is_known ? static_cast<std::size_t>(status.st_size) + 1 : std::size_t{1} << 16;
}

bool ReadRest(std::FILE* file, std::string* bytes) {
  std::size_t size = 0;
  bytes->resize(FirstSize(file));
  for (;;) {
    const std::size_t got = std::fread(bytes->data() + size, 1, bytes->size() - size, file);
    size += got;
    if (size < bytes->size()) break;
    bytes->resize(size * 2);
  }
  bytes->resize(size);
  return std::ferror(file) == 0;
}

}  // namespace

std::string NameOfInput(const std::string& path) { return path == "-" ? "<stdin>" : path; }

bool ReadWholeFile(const std::string& path, std::string* bytes) {
  std::FILE* file = path == "-" ? stdin : std::fopen(path.c_str(), "rb");
  const bool is_read = file != nullptr && ReadRest(file, bytes);
  if (!is_read) ReportFile("read", NameOfInput(path), errno);
  if (file != nullptr && file != stdin) std::fclose(file);
  return is_read;
}

std::FILE* OpenOutput(const std::string& path) {
  if (path == "-") return stdout;
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) ReportFile("write", path, errno);
  return file;
}

bool CloseOutput(std::FILE* file, const std::string& path, int error) {
  const int status = file == stdout ? std::fflush(file) : std::fclose(file);
  if (status != 0 && error == 0) error = errno;
  if (error != 0) ReportFile("write", path == "-" ? "<stdout>" : path, error);
  return error == 0;
}

void ReportFile(const char* verb, const std::string& name, int error) {
  std::fprintf(stderr, "cdfg: cannot %s %s: %s\n", verb, name.c_str(), std::strerror(error));
}
