#include "tools/raw_file.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "tests/tools/bytes.h"

namespace {

TEST(RawFile, NoBytesAreNoNodes) {
  const RawFile file = ParseRaw("");
  EXPECT_TRUE(file.nodes.empty());
  EXPECT_TRUE(file.tail.empty());
  EXPECT_EQ(RawBytes(file), "");
}

TEST(RawFile, ASmallestNodeTakes34Bytes) {
  const std::string bytes = Bytes().Words(7, 264, 1, 2, 3, 0).Foot("", 5, -6).Get();
  ASSERT_EQ(bytes.size(), 34u);
  const RawFile file = ParseRaw(bytes);
  ASSERT_EQ(file.nodes.size(), 1u);
  const RawNode& node = file.nodes[0];
  EXPECT_EQ(node.id, 7u);
  EXPECT_EQ(node.kind, 264u);
  EXPECT_EQ(node.prev, 1u);
  EXPECT_EQ(node.next, 2u);
  EXPECT_EQ(node.jump, 3u);
  EXPECT_EQ(node.count, 0);
  EXPECT_EQ(node.file, "");
  EXPECT_EQ(node.line, 5);
  EXPECT_EQ(node.column, -6);
}

TEST(RawFile, EveryValueTypeHasItsOwnSize) {
  const std::string bytes = SmallFile();
  const RawFile file = ParseRaw(bytes);
  ASSERT_EQ(file.nodes.size(), 3u);
  const auto attributes = RawAttributesOf(file, file.nodes[1]);
  ASSERT_EQ(attributes.size(), 7u);
  EXPECT_EQ(attributes[0].type, 2u);
  EXPECT_EQ(attributes[0].bits, 12u);
  EXPECT_EQ(attributes[1].type, 6u);
  EXPECT_EQ(attributes[1].bits, 3u);
  EXPECT_EQ(attributes[2].type, 1u);
  EXPECT_EQ(attributes[2].bits, 0x41u);
  EXPECT_EQ(attributes[3].type, 3u);
  EXPECT_EQ(attributes[3].bits, 0xfffffffffffffffe);
  EXPECT_EQ(attributes[4].type, 4u);
  EXPECT_EQ(attributes[4].bits, 0x3ff8000000000000);
  EXPECT_EQ(attributes[5].type, 5u);
  EXPECT_EQ(RawText(attributes[5]), std::string_view("a\0\xff", 3));
  EXPECT_EQ(attributes[6].id, 24u);
  EXPECT_EQ(attributes[6].type, 9u);
  EXPECT_EQ(file.nodes[1].file, "a.c");
  EXPECT_EQ(RawBytes(file), bytes);
}

TEST(RawFile, ANegativeCountIsKeptAndHasNoRecords) {
  const std::string bytes = Bytes().Head(1, 16, -3).Foot("x", 1, 2).Get();
  const RawFile file = ParseRaw(bytes);
  ASSERT_EQ(file.nodes.size(), 1u);
  EXPECT_EQ(file.nodes[0].count, -3);
  EXPECT_TRUE(RawAttributesOf(file, file.nodes[0]).empty());
  EXPECT_EQ(file.nodes[0].file, "x");
  EXPECT_EQ(RawBytes(file), bytes);
}

// Wherever a file is cut, the nodes in front are there and the started one is the tail.
TEST(RawFile, ACutFileKeepsItsRestAsTail) {
  const std::string whole = SmallFile();
  const std::size_t first_end = 24 + 12 + 5 + 8;
  const std::size_t second_end = whole.size() - 34;
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    const std::string bytes = whole.substr(0, size);
    const RawFile file = ParseRaw(bytes);
    const std::size_t nodes = size < first_end      ? 0u
                              : size < second_end   ? 1u
                              : size < whole.size() ? 2u
                                                    : 3u;
    const std::size_t ends[] = {0, first_end, second_end, whole.size()};
    EXPECT_EQ(file.nodes.size(), nodes) << size;
    EXPECT_EQ(file.tail, bytes.substr(ends[nodes])) << size;
    EXPECT_EQ(RawBytes(file), bytes) << size;
  }
}

TEST(RawFile, ACountBeyondTheFileMakesATail) {
  const std::string node = Bytes().Head(1, 16).Foot().Get();
  const std::string cut = Bytes().Head(2, 16, 0x7fffffff).Words(1, 2, 3).Foot().Get();
  const std::string bytes = node + cut;
  const RawFile file = ParseRaw(bytes);
  EXPECT_EQ(file.nodes.size(), 1u);
  EXPECT_TRUE(file.attributes.empty());
  EXPECT_EQ(file.tail, cut);
}

TEST(RawFile, AStringBeyondTheFileMakesATail) {
  const std::string bytes = Bytes().Head(1, 36, 1).Words(4, 5).Number(65535, 2).Foot().Get();
  const RawFile file = ParseRaw(bytes);
  EXPECT_TRUE(file.nodes.empty());
  EXPECT_EQ(file.tail, bytes);
}

TEST(RawFile, TheLongestStringIsRead) {
  const std::string longest(65535, 'x');
  const std::string bytes = Bytes().Head(1, 36, 1).Words(4, 5).String(longest).Foot(longest).Get();
  const RawFile file = ParseRaw(bytes);
  ASSERT_EQ(file.nodes.size(), 1u);
  EXPECT_EQ(RawText(file.attributes[0]), longest);
  EXPECT_EQ(file.nodes[0].file, longest);
  EXPECT_EQ(RawBytes(file), bytes);
}

TEST(RawFile, OnlyStringsHaveText) {
  const std::string bytes = SmallFile();
  const RawFile file = ParseRaw(bytes);
  EXPECT_EQ(RawText(file.attributes[0]), "");
}

// More than one write's worth, so that the pieces have to come in order.
TEST(RawFile, WritesLargeFilesInPieces) {
  std::string bytes;
  for (std::uint32_t id = 1; id <= 50000; ++id) bytes += Bytes().Head(id, 264).Foot().Get();
  Output out;
  out.file = std::tmpfile();
  ASSERT_NE(out.file, nullptr);
  WriteRaw(ParseRaw(bytes), &out);
  EXPECT_EQ(out.error, 0);
  std::rewind(out.file);
  std::string written(bytes.size() + 1, '\0');
  written.resize(std::fread(written.data(), 1, written.size(), out.file));
  std::fclose(out.file);
  EXPECT_TRUE(written == bytes);
}

TEST(RawFile, AFailedWriteIsRemembered) {
  std::string bytes;
  for (std::uint32_t id = 1; id <= 50000; ++id) bytes += Bytes().Head(id, 264).Foot().Get();
  Output out;
  out.file = std::fopen("/dev/full", "wb");
  if (out.file == nullptr) GTEST_SKIP() << "no device that is always full here";
  WriteRaw(ParseRaw(bytes), &out);
  std::fclose(out.file);
  EXPECT_EQ(out.error, ENOSPC);
}

}  // namespace
