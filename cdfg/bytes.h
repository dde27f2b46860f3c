// Big-endian numbers in memory.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

inline std::uint16_t ReadBig16(const unsigned char* bytes) {
  return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline std::uint32_t ReadBig32(const unsigned char* bytes) {
  std::uint32_t value;
  std::memcpy(&value, bytes, sizeof value);
  return std::endian::native == std::endian::little ? __builtin_bswap32(value) : value;
}

inline std::uint64_t ReadBig64(const unsigned char* bytes) {
  return static_cast<std::uint64_t>(ReadBig32(bytes)) << 32 | ReadBig32(bytes + 4);
}

// Each answers the byte behind the number written.
inline unsigned char* WriteBig16(unsigned char* bytes, std::uint16_t value) {
  bytes[0] = static_cast<unsigned char>(value >> 8);
  bytes[1] = static_cast<unsigned char>(value);
  return bytes + 2;
}

inline unsigned char* WriteBig32(unsigned char* bytes, std::uint32_t value) {
  if (std::endian::native == std::endian::little) value = __builtin_bswap32(value);
  std::memcpy(bytes, &value, sizeof value);
  return bytes + 4;
}

inline unsigned char* WriteBig64(unsigned char* bytes, std::uint64_t value) {
  bytes = WriteBig32(bytes, static_cast<std::uint32_t>(value >> 32));
  return WriteBig32(bytes, static_cast<std::uint32_t>(value));
}
