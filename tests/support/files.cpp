#include "tests/support/files.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>

namespace support {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-test-XXXXXX").string();
  const char* path = mkdtemp(pattern.data());
  EXPECT_NE(path, nullptr);
  path_ = pattern;
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::File(std::string_view name, std::string_view bytes) const {
  std::string path = Path(name);
  std::ofstream stream(path, std::ios::binary);
  stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  EXPECT_TRUE(stream.good()) << path;
  return path;
}

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream.good()) << path;
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string ReadStream(std::FILE* stream) {
  std::rewind(stream);
  std::string bytes;
  char buffer[4096];
  while (const std::size_t got = std::fread(buffer, 1, sizeof buffer, stream)) {
    bytes.append(buffer, got);
  }
  return bytes;
}

std::string Hex(std::string_view digits) {
  std::string bytes;
  int high = -1;
  for (const char digit : digits) {
    if (digit == ' ') continue;
    const int value = digit <= '9' ? digit - '0' : digit - 'A' + 10;
    EXPECT_TRUE(value >= 0 && value <= 15) << digit;
    if (high < 0) {
      high = value;
    } else {
      bytes.push_back(static_cast<char>(high * 16 + value));
      high = -1;
    }
  }
  EXPECT_EQ(high, -1) << "odd number of digits";
  return bytes;
}

}  // namespace support
