// Files that live as long as a test, and their bytes.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace support {

struct StreamCloser {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};
using Stream = std::unique_ptr<std::FILE, StreamCloser>;

// A directory of its own that goes away with all it holds.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  // The path of an entry, there or not.
  std::string Path(std::string_view name) const { return (path_ / name).string(); }
  // Makes a file with these bytes and answers its path.
  std::string File(std::string_view name, std::string_view bytes) const;

 private:
  std::filesystem::path path_;
};

// All bytes of a file; the test fails when it cannot be read.
std::string ReadFile(const std::string& path);
// All bytes of an open stream, from its beginning.
std::string ReadStream(std::FILE* stream);

// The bytes that hexadecimal digits stand for; blanks are skipped: Hex("00 00 2A").
std::string Hex(std::string_view digits);

}  // namespace support
