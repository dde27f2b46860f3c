// plain_words: the least that a program over such a file could do, to compare kelvo with.
//
//   plain_words INPUT OUTPUT
//
// Reads the whole file into memory, walks it as 32-bit words, each read as the big-endian number
// that the format has and written back in place, and writes the file again. The sum of the words is
// the answer to nothing, but it is printed, so that the walk has to be made.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

struct Bytes {
  char* data = nullptr;
  std::size_t size = 0;
};

// All bytes of a file; without data when it cannot be read.
Bytes ReadFile(const char* path) {
  std::FILE* in = std::fopen(path, "rb");
  if (in == nullptr) return {};
  std::setvbuf(in, nullptr, _IONBF, 0);
  std::fseek(in, 0, SEEK_END);
  Bytes bytes;
  const long size = std::ftell(in);
  std::rewind(in);
  if (size >= 0) bytes.data = static_cast<char*>(std::malloc(static_cast<std::size_t>(size) + 1));
  if (bytes.data != nullptr) bytes.size = static_cast<std::size_t>(size);
  const bool is_read = std::fread(bytes.data, 1, bytes.size, in) == bytes.size;
  std::fclose(in);
  if (is_read) return bytes;
  std::free(bytes.data);
  return {};
}

// Bytes behind the last whole word are left alone.
std::uint32_t WalkWords(const Bytes& bytes) {
  std::uint32_t sum = 0;
  for (std::size_t place = 0; place + sizeof sum <= bytes.size; place += sizeof sum) {
    std::uint32_t word = 0;
    std::memcpy(&word, bytes.data + place, sizeof word);
    const std::uint32_t swapped = __builtin_bswap32(word);
    sum += swapped;
    word = __builtin_bswap32(swapped);
    std::memcpy(bytes.data + place, &word, sizeof word);
  }
  return sum;
}

bool WriteFile(const char* path, const Bytes& bytes) {
  std::FILE* out = std::fopen(path, "wb");
  if (out == nullptr) return false;
  std::setvbuf(out, nullptr, _IONBF, 0);
  const bool is_written = std::fwrite(bytes.data, 1, bytes.size, out) == bytes.size;
  return std::fclose(out) == 0 && is_written;
}

}  // namespace

int main(int argument_count, char** arguments) {
  if (argument_count != 3) {
    std::puts("usage: plain_words INPUT OUTPUT");
    return 2;
  }
  const Bytes bytes = ReadFile(arguments[1]);
  if (bytes.data == nullptr) {
    std::printf("plain_words: cannot read '%s'\n", arguments[1]);
    return 1;
  }
  std::printf("%u\n", WalkWords(bytes));
  const bool is_written = WriteFile(arguments[2], bytes);
  std::free(bytes.data);
  if (!is_written) std::printf("plain_words: cannot write '%s'\n", arguments[2]);
  return is_written ? 0 : 1;
}
