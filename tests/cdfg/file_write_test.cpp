// Writing binary CDFG files, byte for byte.
#include <cmath>
#include <filesystem>
#include <string>

#include "cdfg/file.h"
#include "cdfg/graph.h"
#include "tests/support/files.h"
#include "tests/support/graphs.h"

namespace {

using support::GraphTest;
using support::Hex;
using support::Stream;
using support::TempDir;

class FileWrite : public GraphTest {
 protected:
  // What the graph is written as.
  std::string Written() {
    const std::string path = dir.Path("written.cdfg");
    EXPECT_EQ(CdfgWriteFile(graph, path.c_str()), 0);
    return support::ReadFile(path);
  }

  TempDir dir;
};

// The record of a node of kind CFG_DECLARE with id 1 and one attribute.
std::string NodeWith(const std::string& attribute_digits) {
  return Hex("00000001 0000002F 00000000 00000000 00000000 00000001" + attribute_digits +
             "0000 00000000 00000000");
}

// --- Layout --------------------------------------------------------------------------------------

TEST_F(FileWrite, OfNoNodesGivesNoBytes) { EXPECT_EQ(Written(), ""); }

TEST_F(FileWrite, OfAnEmptyNodeTakesThirtyFourBytes) {
  Add(CFG_ROOT);
  const std::string expected =
      Hex("00000001 00000010 00000000 00000000 00000000 00000000"
          "0000 00000000 00000000");
  ASSERT_EQ(expected.size(), 34U);
  EXPECT_EQ(Written(), expected);
}

TEST_F(FileWrite, KeepsTheOrderOfTheFields) {
  CdfgAddNodeWithId(graph, 0x01020304);
  CdfgSetKind(graph, 0x01020304, 279);
  CdfgSetPrev(graph, 0x01020304, 0x05060708);
  CdfgSetNext(graph, 0x01020304, 0x090A0B0C);
  CdfgSetJump(graph, 0x01020304, 0xF0F1F2F3);
  Place(0x01020304, "a.c", 0x11121314, -2);
  EXPECT_EQ(Written(), Hex("01020304 00000117 05060708 090A0B0C F0F1F2F3 00000000"
                           "0003 612E63 11121314 FFFFFFFE"));
}

TEST_F(FileWrite, PutsACharInOneByte) {
  CdfgSetAttrChar(graph, Add(CFG_DECLARE), 2, 'A');
  EXPECT_EQ(Written(), NodeWith("00000002 00000001 41"));
}

TEST_F(FileWrite, PutsANegativeCharInOneByte) {
  CdfgSetAttrChar(graph, Add(CFG_DECLARE), 2, -2);
  EXPECT_EQ(Written(), NodeWith("00000002 00000001 FE"));
}

TEST_F(FileWrite, PutsAnIntInFourBytes) {
  CdfgSetAttrInt(graph, Add(CFG_DECLARE), 0x01020304, -2);
  EXPECT_EQ(Written(), NodeWith("01020304 00000002 FFFFFFFE"));
}

TEST_F(FileWrite, PutsALongIntegerInEightBytes) {
  CdfgSetAttrInt64(graph, Add(CFG_DECLARE), 3, 0x0102030405060708);
  EXPECT_EQ(Written(), NodeWith("00000003 00000003 0102030405060708"));
}

TEST_F(FileWrite, PutsADoubleAsItsBitPattern) {
  CdfgSetAttrDouble(graph, Add(CFG_DECLARE), 4, 1.0);
  EXPECT_EQ(Written(), NodeWith("00000004 00000004 3FF0000000000000"));
}

TEST_F(FileWrite, PutsANegativeZeroAsItsBitPattern) {
  CdfgSetAttrDouble(graph, Add(CFG_DECLARE), 4, -0.0);
  EXPECT_EQ(Written(), NodeWith("00000004 00000004 8000000000000000"));
}

TEST_F(FileWrite, PutsAStringBehindItsCount) {
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, "hi");
  EXPECT_EQ(Written(), NodeWith("00000003 00000005 0002 6869"));
}

TEST_F(FileWrite, PutsAnEmptyStringAsACountOfZero) {
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, "");
  EXPECT_EQ(Written(), NodeWith("00000003 00000005 0000"));
}

TEST_F(FileWrite, PutsANullStringAsACountOfZero) {
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, nullptr);
  EXPECT_EQ(Written(), NodeWith("00000003 00000005 0000"));
}

TEST_F(FileWrite, PutsANodeReferenceInFourBytes) {
  CdfgSetAttrNode(graph, Add(CFG_DECLARE), 20, 0xFFFFFFFF);
  EXPECT_EQ(Written(), NodeWith("00000014 00000006 FFFFFFFF"));
}

TEST_F(FileWrite, PutsOnlyTheWidthOfTheTypeThatWasSetLast) {
  const NodeId node = Add(CFG_DECLARE);
  CdfgSetAttrInt64(graph, node, 2, -1);
  CdfgSetAttrChar(graph, node, 2, 0x41);
  EXPECT_EQ(Written(), NodeWith("00000002 00000001 41"));
}

TEST_F(FileWrite, KeepsTheOrderOfAttributes) {
  const NodeId node = Add(CFG_DECLARE);
  CdfgSetAttrInt(graph, node, 9, 1);
  CdfgSetAttrInt(graph, node, 2, 2);
  CdfgSetAttrInt(graph, node, 9, 3);
  EXPECT_EQ(Written(), Hex("00000001 0000002F 00000000 00000000 00000000 00000002"
                           "00000009 00000002 00000003"
                           "00000002 00000002 00000002"
                           "0000 00000000 00000000"));
}

TEST_F(FileWrite, PutsAnEmptyFileNameAsNone) {
  CdfgSetFileName(graph, Add(CFG_ROOT), "");
  EXPECT_EQ(Written(), Hex("00000001 00000010 00000000 00000000 00000000 00000000"
                           "0000 00000000 00000000"));
}

// --- Which nodes, in which order -----------------------------------------------------------------

TEST_F(FileWrite, KeepsTheOrderOfNodes) {
  for (const NodeId id : {3U, 1U, 2U}) CdfgAddNodeWithId(graph, id);
  const std::string rest =
      Hex("00000000 00000000 00000000 00000000 00000000"
          "0000 00000000 00000000");
  EXPECT_EQ(Written(), Hex("00000003") + rest + Hex("00000001") + rest + Hex("00000002") + rest);
}

TEST_F(FileWrite, PassesOverFreedNodes) {
  Add(CFG_ROOT);
  Add(CFG_ROOT);
  Add(CFG_ROOT);
  CdfgFreeNode(graph, 2);
  const std::string bytes = Written();
  ASSERT_EQ(bytes.size(), 68U);
  EXPECT_EQ(bytes.substr(0, 4), Hex("00000001"));
  EXPECT_EQ(bytes.substr(34, 4), Hex("00000003"));
}

TEST_F(FileWrite, PutsBothNodesOfOneId) {
  CdfgAddNodeWithId(graph, 7);
  CdfgSetLine(graph, 7, 1);
  CdfgAddNodeWithId(graph, 7);
  CdfgSetLine(graph, 7, 2);
  const std::string bytes = Written();
  ASSERT_EQ(bytes.size(), 68U);
  EXPECT_EQ(bytes.substr(26, 4), Hex("00000001"));
  EXPECT_EQ(bytes.substr(60, 4), Hex("00000002"));
}

TEST_F(FileWrite, LeavesUserDataOut) {
  Add(CFG_ROOT);
  const std::string without = Written();
  CdfgSetUserData(graph, 1, this);
  EXPECT_EQ(Written(), without);
}

TEST_F(FileWrite, LeavesTheGraphAsItIs) {
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, "name");
  const std::string first = Written();
  EXPECT_EQ(Written(), first);
  EXPECT_EQ(support::Attributes(graph, 1), "3=\"name\"");
}

// --- Long strings --------------------------------------------------------------------------------

TEST_F(FileWrite, CountsAStringOf65535Bytes) {
  const std::string text(65535, 'x');
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, text.c_str());
  EXPECT_EQ(Written(), Hex("00000001 0000002F 00000000 00000000 00000000 00000001"
                           "00000003 00000005 FFFF") +
                           text + Hex("0000 00000000 00000000"));
}

TEST_F(FileWrite, CountsAStringOf65536BytesAsNone) {
  const std::string text(65536, 'x');
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, text.c_str());
  EXPECT_EQ(Written(), Hex("00000001 0000002F 00000000 00000000 00000000 00000001"
                           "00000003 00000005 0000") +
                           text + Hex("0000 00000000 00000000"));
}

TEST_F(FileWrite, CountsALongerStringByItsLowest16Bits) {
  const std::string text(70000, 'x');  // 70000 - 65536 = 4464 = 0x1170
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, text.c_str());
  EXPECT_EQ(Written(), Hex("00000001 0000002F 00000000 00000000 00000000 00000001"
                           "00000003 00000005 1170") +
                           text + Hex("0000 00000000 00000000"));
}

TEST_F(FileWrite, CountsALongFileNameByItsLowest16Bits) {
  const std::string name(70000, 'f');
  CdfgSetFileName(graph, Add(CFG_ROOT), name.c_str());
  EXPECT_EQ(Written(), Hex("00000001 00000010 00000000 00000000 00000000 00000000 1170") + name +
                           Hex("00000000 00000000"));
}

TEST_F(FileWrite, PutsAllBytesOfAStringOfAMillion) {
  const std::string text(1000000, 'x');  // 1000000 - 15 * 65536 = 16960 = 0x4240
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), 3, text.c_str());
  EXPECT_EQ(Written(), Hex("00000001 0000002F 00000000 00000000 00000000 00000001"
                           "00000003 00000005 4240") +
                           text + Hex("0000 00000000 00000000"));
}

TEST_F(FileWrite, KeepsManyRecordsWhole) {
  std::string expected;
  for (int i = 1; i <= 20000; ++i) {
    const NodeId node = Add(CFG_DECLARE);
    CdfgSetAttrStr(graph, node, 3, std::string(static_cast<std::size_t>(i % 50), 'n').c_str());
    expected += std::string{'\0', '\0', static_cast<char>(i >> 8), static_cast<char>(i)};
    expected += Hex("0000002F 00000000 00000000 00000000 00000001 00000003 00000005 00");
    expected += static_cast<char>(i % 50);
    expected += std::string(static_cast<std::size_t>(i % 50), 'n');
    expected += Hex("0000 00000000 00000000");
  }
  EXPECT_TRUE(Written() == expected);
}

// --- Where to ------------------------------------------------------------------------------------

TEST_F(FileWrite, ReplacesWhatIsThere) {
  const std::string path = dir.File("old.cdfg", std::string(1000, 'o'));
  Add(CFG_ROOT);
  EXPECT_EQ(CdfgWriteFile(graph, path.c_str()), 0);
  EXPECT_EQ(support::ReadFile(path).size(), 34U);
}

TEST_F(FileWrite, FailsWhereNoFileCanBeMade) {
  Add(CFG_ROOT);
  EXPECT_EQ(CdfgWriteFile(graph, dir.Path("missing/out.cdfg").c_str()), -1);
  EXPECT_EQ(CdfgWriteFile(graph, dir.Path("").c_str()), -1) << "a directory";
  EXPECT_EQ(CdfgMemoryIsShort(graph), 0);
}

TEST_F(FileWrite, OfNoGraphFailsAndMakesNoFile) {
  const std::string path = dir.Path("none.cdfg");
  EXPECT_EQ(CdfgWriteFile(nullptr, path.c_str()), -1);
  EXPECT_FALSE(std::filesystem::exists(path));
  const Stream stream(std::tmpfile());
  EXPECT_EQ(CdfgWriteStream(nullptr, stream.get()), -1);
}

TEST_F(FileWrite, ToAStreamWritesWhereItStands) {
  Add(CFG_ROOT);
  const Stream stream(std::tmpfile());
  std::fputs("before", stream.get());
  EXPECT_EQ(CdfgWriteStream(graph, stream.get()), 0);
  std::fputs("after", stream.get());
  const std::string bytes = support::ReadStream(stream.get());
  EXPECT_EQ(bytes.size(), 6U + 34U + 5U);
  EXPECT_EQ(bytes.substr(0, 6), "before");
  EXPECT_EQ(bytes.substr(40), "after");
}

}  // namespace
