// Binary CDFG files written out by hand, number by number, so that what tests expect does not come
// from the code they test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

class Bytes {
 public:
  Bytes& Number(std::uint64_t number, int size) {
    for (int i = size - 1; i >= 0; --i) bytes_ += static_cast<char>(number >> (8 * i));
    return *this;
  }
  // Four-byte numbers in a row.
  template <typename... Numbers>
  Bytes& Words(Numbers... numbers) {
    (Number(static_cast<std::uint32_t>(numbers), 4), ...);
    return *this;
  }
  Bytes& String(std::string_view string) {
    Number(string.size(), 2);
    bytes_ += string;
    return *this;
  }
  // What stands in front of a node's attributes: id, kind, prev, next, jump, count.
  Bytes& Head(std::uint32_t id, std::uint32_t kind, std::int32_t count = 0) {
    return Words(id, kind, 0, 0, 0, count);
  }
  // What stands behind them.
  Bytes& Foot(std::string_view file = "", std::int32_t line = 0, std::int32_t column = 0) {
    return String(file).Words(line, column);
  }
  const std::string& Get() const { return bytes_; }

 private:
  std::string bytes_;
};

// A file with one attribute of each type, one of an unknown type and file names: three nodes.
inline std::string SmallFile() {
  return Bytes()
      .Words(1, 16, 0, 0, 0, 1)
      .Words(1, 6, 2)
      .Foot("a.c", 1, 1)
      .Words(2, 305, 1, 3, 0, 7)
      .Words(1, 2, 12)
      .Words(2, 6, 3)
      .Words(20, 1)
      .Number(0x41, 1)
      .Words(21, 3)
      .Number(0xfffffffffffffffe, 8)
      .Words(22, 4)
      .Number(0x3ff8000000000000, 8)
      .Words(23, 5)
      .String(std::string_view("a\0\xff", 3))
      .Words(24, 9)
      .Foot("a.c", 2, 7)
      .Words(3, 290, 2, 0, 1, 0)
      .Foot("", -1, -2)
      .Get();
}
