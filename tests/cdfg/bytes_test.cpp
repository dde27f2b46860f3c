// Big-endian numbers in memory.
#include "cdfg/bytes.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const unsigned char kBytes[] = {0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88};

TEST(BigEndian, IsReadHighestByteFirst) {
  EXPECT_EQ(ReadBig16(kBytes), 0x8102U);
  EXPECT_EQ(ReadBig32(kBytes), 0x81020304U);
  EXPECT_EQ(ReadBig64(kBytes), 0x8102030405060788U);
}

TEST(BigEndian, IsReadFromAnyAddress) {
  EXPECT_EQ(ReadBig16(kBytes + 1), 0x0203U);
  EXPECT_EQ(ReadBig32(kBytes + 3), 0x04050607U);
}

TEST(BigEndian, IsWrittenHighestByteFirst) {
  unsigned char bytes[14];
  unsigned char* end = WriteBig16(bytes, 0x8102);
  EXPECT_EQ(end, bytes + 2);
  end = WriteBig32(end, 0x83040506);
  EXPECT_EQ(end, bytes + 6);
  end = WriteBig64(end, 0x8708090A0B0C0D8E);
  EXPECT_EQ(end, bytes + 14);
  EXPECT_EQ(std::string(reinterpret_cast<char*>(bytes), sizeof bytes),
            "\x81\x02\x83\x04\x05\x06\x87\x08\x09\x0A\x0B\x0C\x0D\x8E");
}

}  // namespace
