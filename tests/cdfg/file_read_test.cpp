// Reading binary CDFG files: what every byte means, cut files, and odd ones.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <fstream>
#include <string>
#include <thread>

#include "cdfg/file.h"
#include "cdfg/graph.h"
#include "tests/support/capture.h"
#include "tests/support/files.h"
#include "tests/support/graphs.h"
#include "tests/support/records.h"

namespace {

using support::Attributes;
using support::CharAttribute;
using support::DoubleAttribute;
using support::Head;
using support::Hex;
using support::Int64Attribute;
using support::IntAttribute;
using support::NodeAttribute;
using support::OwnedGraph;
using support::PlainNode;
using support::Position;
using support::StringAttribute;
using support::Tail;
using support::TempDir;
using support::UnknownAttribute;

class FileRead : public testing::Test {
 protected:
  // The graph that a file of these bytes is read into.
  CdfgGraph* Read(const std::string& bytes) {
    const std::string path = dir.File("in.cdfg", bytes);
    const std::string output =
        support::CaptureOutput([&] { graph.reset(CdfgReadFile(path.c_str())); });
    EXPECT_EQ(output, "");
    EXPECT_NE(graph, nullptr);
    return graph.get();
  }
  // Reads these bytes and answers what the graph is written back as.
  std::string RoundTrip(const std::string& bytes) {
    const std::string path = dir.Path("out.cdfg");
    EXPECT_EQ(CdfgWriteFile(Read(bytes), path.c_str()), 0);
    return support::ReadFile(path);
  }
  // The attributes of a node with these records.
  std::string AttributesOf(std::int64_t count, const std::string& records) {
    return Attributes(Read(Head(1, CFG_DECLARE, {}, count) + records + Tail()), 1);
  }

  TempDir dir;
  OwnedGraph graph;
};

// --- What the bytes mean -------------------------------------------------------------------------

TEST_F(FileRead, OfNoBytesGivesAnEmptyGraph) { EXPECT_EQ(CdfgNodeCount(Read("")), 0U); }

TEST_F(FileRead, TakesEveryField) {
  Read(
      Hex("01020304 00000117 05060708 090A0B0C F0F1F2F3 00000000"
          "0003 612E63 11121314 FFFFFFFE"));
  const NodeId node = 0x01020304;
  ASSERT_EQ(CdfgNodeCount(graph.get()), 1U);
  EXPECT_EQ(CdfgGetKind(graph.get(), node), 279U);
  EXPECT_EQ(CdfgGetPrev(graph.get(), node), 0x05060708U);
  EXPECT_EQ(CdfgGetNext(graph.get(), node), 0x090A0B0CU);
  EXPECT_EQ(CdfgGetJump(graph.get(), node), 0xF0F1F2F3U);
  EXPECT_STREQ(CdfgGetFileName(graph.get(), node), "a.c");
  EXPECT_EQ(CdfgGetLine(graph.get(), node), 0x11121314);
  EXPECT_EQ(CdfgGetColumn(graph.get(), node), -2);
  EXPECT_EQ(CdfgGetAttrCount(graph.get(), node), 0);
}

TEST_F(FileRead, TakesEveryValueType) {
  Read(
      Hex("00000001 0000002F 00000000 00000000 00000000 00000006"
          "00000001 00000001 FE"
          "00000002 00000002 FFFFFFF9"
          "00000003 00000003 0102030405060708"
          "00000004 00000004 3FF0000000000000"
          "00000005 00000005 0002 6869"
          "00000006 00000006 EE6B2800"
          "0000 00000000 00000000"));
  EXPECT_EQ(Attributes(graph.get(), 1),
            "1=-2c 2=-7 3=72623859790382856L 4=1d 5=\"hi\" 6->4000000000");
}

TEST_F(FileRead, KeepsTheOrderOfNodesAndAttributes) {
  Read(PlainNode(3, 16) + Head(1, 17, {}, 2) + IntAttribute(9, 1) + IntAttribute(2, 2) + Tail() +
       PlainNode(2, 18));
  EXPECT_EQ(CdfgNodeIdAt(graph.get(), 0), 3U);
  EXPECT_EQ(CdfgNodeIdAt(graph.get(), 1), 1U);
  EXPECT_EQ(CdfgNodeIdAt(graph.get(), 2), 2U);
  EXPECT_EQ(Attributes(graph.get(), 1), "9=1 2=2");
}

TEST_F(FileRead, LeavesANodeWithoutFileNameWhenItIsEmpty) {
  Read(PlainNode(1, 16));
  EXPECT_EQ(CdfgGetFileName(graph.get(), 1), nullptr);
}

TEST_F(FileRead, KeepsAnEmptyStringThatIsAnAttribute) {
  EXPECT_EQ(AttributesOf(1, StringAttribute(3, "")), "3=\"\"");
}

TEST_F(FileRead, LeavesUserDataNull) {
  Read(PlainNode(1, 16));
  EXPECT_EQ(CdfgGetUserData(graph.get(), 1), nullptr);
}

TEST_F(FileRead, KeepsKindsThatNobodyKnows) {
  Read(PlainNode(1, 52) + PlainNode(2, 0xFFFFFFFF));
  EXPECT_EQ(CdfgGetKind(graph.get(), 1), 52U);
  EXPECT_EQ(CdfgGetKind(graph.get(), 2), 0xFFFFFFFFU);
}

// --- Ids -----------------------------------------------------------------------------------------

TEST_F(FileRead, LetsNewNodesCountOnFromTheLastOne) {
  Read(PlainNode(1, 16) + PlainNode(2, 17) + PlainNode(3, 36));
  EXPECT_EQ(CdfgAddNode(graph.get(), CFG_DECLARE), 4U);
}

TEST_F(FileRead, LetsNewNodesCountOnFromTheLastOneEvenWhenItIsNotTheHighest) {
  Read(PlainNode(9, 16) + PlainNode(5, 17));
  EXPECT_EQ(CdfgAddNode(graph.get(), CFG_DECLARE), 6U);
}

TEST_F(FileRead, LetsNewNodesCountFromOneInAnEmptyGraph) {
  Read("");
  EXPECT_EQ(CdfgAddNode(graph.get(), CFG_DECLARE), 1U);
}

TEST_F(FileRead, FindsTheNewestOfTwoNodesWithOneId) {
  Read(Head(4, 36) + Tail("", 1) + Head(4, 47, {}, 1) + IntAttribute(1, 5) + Tail("", 2));
  EXPECT_EQ(CdfgGetKind(graph.get(), 4), 47U);
  EXPECT_EQ(CdfgGetLine(graph.get(), 4), 2);
  EXPECT_EQ(CdfgGetAttrInt(graph.get(), 4, 1), 5);
  EXPECT_EQ(CdfgNodeCount(graph.get()), 2U);
}

TEST_F(FileRead, FindsNoNodeWithIdZero) {
  Read(Head(0, 16, {}, 1) + IntAttribute(1, 5) + Tail() + PlainNode(1, 17));
  EXPECT_EQ(CdfgHasNode(graph.get(), 0), 0);
  EXPECT_EQ(CdfgNodeCount(graph.get()), 2U);
  EXPECT_EQ(CdfgGetKind(graph.get(), 1), 17U);
}

TEST_F(FileRead, FindsTheLargestIdAndHasNoneAfterIt) {
  Read(PlainNode(4294967295U, 16));
  EXPECT_EQ(CdfgGetKind(graph.get(), 4294967295U), 16U);
  EXPECT_EQ(CdfgAddNode(graph.get(), CFG_DECLARE), 0U);
}

TEST_F(FileRead, FindsIdsFarApart) {
  Read(PlainNode(4000000000U, 16) + PlainNode(7, 17));
  EXPECT_EQ(CdfgGetKind(graph.get(), 4000000000U), 16U);
  EXPECT_EQ(CdfgGetKind(graph.get(), 7), 17U);
  EXPECT_EQ(CdfgGetRoot(graph.get()), 4000000000U);
}

// --- Odd attributes ------------------------------------------------------------------------------

TEST_F(FileRead, DropsAttributesOfUnknownTypes) {
  EXPECT_EQ(AttributesOf(5, UnknownAttribute(1, 0) + IntAttribute(2, 5) + UnknownAttribute(3, 7) +
                                UnknownAttribute(4, 0xFFFFFFFF) + IntAttribute(5, 6)),
            "2=5 5=6");
}

TEST_F(FileRead, CountsAttributesOfUnknownTypes) {
  // The second record is the last one, so what follows is the file name.
  Read(Head(1, CFG_DECLARE, {}, 2) + UnknownAttribute(1, 99) + IntAttribute(2, 5) + Tail("a.c", 3));
  EXPECT_EQ(Attributes(graph.get(), 1), "2=5");
  EXPECT_EQ(Position(graph.get(), 1), "a.c:3:0");
}

// Ascending ids are read without a search; the highest id leaves no higher one.
TEST_F(FileRead, FindsAnAttributeAgainInWhateverOrderTheyCome) {
  const std::uint32_t highest = 4294967295U;
  const std::string records = IntAttribute(3, 1) + IntAttribute(highest, 2) + IntAttribute(7, 3) +
                              IntAttribute(3, 4) + IntAttribute(highest, 5) + IntAttribute(7, 6) +
                              StringAttribute(8, "a") + StringAttribute(8, "b");
  Read(Head(1, CFG_DECLARE, {}, 8) + records + Tail());
  ASSERT_EQ(CdfgGetAttrCount(graph.get(), 1), 4);
  EXPECT_EQ(CdfgGetAttrInt(graph.get(), 1, 3), 4);
  EXPECT_EQ(CdfgGetAttrInt(graph.get(), 1, highest), 5);
  EXPECT_EQ(CdfgGetAttrInt(graph.get(), 1, 7), 6);
  EXPECT_STREQ(CdfgGetAttrStr(graph.get(), 1, 8), "b");
}

// A node's file name is written as its neighbour's was where they are the same.
TEST_F(FileRead, KeepsFileNamesOfAllLengthsBesideOneAnother) {
  std::string bytes;
  std::uint32_t id = 0;
  for (const std::size_t length : {0U, 1U, 29U, 30U, 31U, 32U, 1000U, 65535U, 30U, 0U, 31U, 31U}) {
    for (const char letter : {'a', 'b', 'b'}) {
      bytes += Head(++id, CFG_DECLARE, {}, 0) + Tail(std::string(length, letter), 1, 2);
    }
  }
  EXPECT_TRUE(RoundTrip(bytes) == bytes);
}

TEST_F(FileRead, LeavesAnAttributeAloneThatAnUnknownTypeNamesAgain) {
  EXPECT_EQ(AttributesOf(2, IntAttribute(1, 5) + UnknownAttribute(1, 7)), "1=5");
}

TEST_F(FileRead, OverwritesASecondAttributeOfAnIdInPlace) {
  EXPECT_EQ(AttributesOf(3, IntAttribute(1, 5) + IntAttribute(2, 6) + IntAttribute(1, 7)),
            "1=7 2=6");
}

TEST_F(FileRead, TakesTheTypeOfASecondAttributeOfAnId) {
  EXPECT_EQ(AttributesOf(2, IntAttribute(1, 5) + DoubleAttribute(1, 2.5)), "1=2.5d");
  EXPECT_EQ(AttributesOf(2, StringAttribute(1, "text") + NodeAttribute(1, 8)), "1->8");
  EXPECT_EQ(AttributesOf(2, Int64Attribute(1, -1) + CharAttribute(1, 'c')), "1=99c");
}

TEST_F(FileRead, DoesNotTurnANumberIntoAString) {
  EXPECT_EQ(AttributesOf(3, IntAttribute(1, 5) + StringAttribute(1, "text") + IntAttribute(2, 6)),
            "1=5 2=6");
}

TEST_F(FileRead, OverwritesAStringByAString) {
  EXPECT_EQ(AttributesOf(2, StringAttribute(1, "first") + StringAttribute(1, "second")),
            "1=\"second\"");
  EXPECT_EQ(AttributesOf(2, StringAttribute(1, "") + StringAttribute(1, "second")), "1=\"second\"");
}

TEST_F(FileRead, TakesNoAttributesWhenTheirCountIsNegative) {
  for (const std::int64_t count : {std::int64_t{-1}, std::int64_t{-2147483647} - 1}) {
    Read(Head(1, CFG_DECLARE, {}, count) + Tail("a.c", 3, 4) + PlainNode(2, 36));
    EXPECT_EQ(CdfgGetAttrCount(graph.get(), 1), 0);
    EXPECT_EQ(Position(graph.get(), 1), "a.c:3:4");
    EXPECT_EQ(CdfgGetKind(graph.get(), 2), 36U);
  }
}

TEST_F(FileRead, TakesTheAttributesThatAreThereWhenTheirCountIsHuge) {
  Read(Head(1, CFG_DECLARE, {}, 2147483647) + IntAttribute(1, 5) + StringAttribute(2, "text"));
  EXPECT_EQ(Attributes(graph.get(), 1), "1=5 2=\"text\"");
  EXPECT_EQ(Position(graph.get(), 1), "-:0:0");
}

TEST_F(FileRead, TakesTheRestOfTheFileForAttributesWhenTheirCountIsTooHigh) {
  // The end of node 1 and all of node 2 are read as five records of unknown types and a cut one.
  Read(Head(1, CFG_DECLARE, {}, 1000) + IntAttribute(1, 5) + Tail() + PlainNode(2, 36));
  EXPECT_EQ(CdfgNodeCount(graph.get()), 1U);
  EXPECT_EQ(CdfgHasNode(graph.get(), 2), 0);
  EXPECT_EQ(CdfgGetAttrInt(graph.get(), 1, 1), 5);
}

TEST_F(FileRead, TakesThousandsOfAttributes) {
  std::string records;
  for (std::uint32_t id = 1; id <= 5000; ++id) records += IntAttribute(id, id * 2);
  records += IntAttribute(7, -7);
  Read(Head(1, CFG_DECLARE, {}, 5001) + records + Tail());
  EXPECT_EQ(CdfgGetAttrCount(graph.get(), 1), 5000);
  EXPECT_EQ(CdfgGetAttrInt(graph.get(), 1, 7), -7);
  EXPECT_EQ(CdfgGetAttrIdAt(graph.get(), 1, 7), 7U);
  EXPECT_EQ(CdfgGetAttrInt(graph.get(), 1, 5000), 10000);
}

// --- Strings -------------------------------------------------------------------------------------

TEST_F(FileRead, EndsAStringAtItsFirstZeroByte) {
  const std::string text("ab\0cd", 5);
  EXPECT_EQ(AttributesOf(2, StringAttribute(1, text) + IntAttribute(2, 5)), "1=\"ab\" 2=5");
}

TEST_F(FileRead, KeepsAStringThatBeginsWithAZeroByteAsEmpty) {
  EXPECT_EQ(AttributesOf(1, StringAttribute(1, std::string("\0cd", 3))), "1=\"\"");
}

TEST_F(FileRead, EndsAFileNameAtItsFirstZeroByte) {
  Read(Head(1, 16) + Tail(std::string("a.c\0x", 5), 3, 4) + PlainNode(2, 17));
  EXPECT_EQ(Position(graph.get(), 1), "a.c:3:4");
  EXPECT_EQ(CdfgGetKind(graph.get(), 2), 17U);
}

TEST_F(FileRead, DropsAFileNameThatBeginsWithAZeroByte) {
  Read(Head(1, 16) + Tail(std::string("\0a.c", 4), 3, 4));
  EXPECT_EQ(Position(graph.get(), 1), "-:3:4");
}

TEST_F(FileRead, KeepsBytesAbove127) {
  EXPECT_EQ(AttributesOf(1, StringAttribute(1, "\x80\xFF\xC3\xA9")), "1=\"\x80\xFF\xC3\xA9\"");
}

TEST_F(FileRead, TakesStringsOfEveryLengthNearThatOfABuffer) {
  std::string records;
  const std::size_t lengths[] = {1022, 1023, 1024, 1025, 1026, 4096, 65534, 65535, 1};
  std::uint32_t id = 0;
  for (const std::size_t length : lengths) {
    ++id;
    records += StringAttribute(id, std::string(length, static_cast<char>('a' + id)));
  }
  Read(Head(1, CFG_DECLARE, {}, 9) + records + Tail(std::string(65535, 'f'), 3, 4));
  id = 0;
  for (const std::size_t length : lengths) {
    ++id;
    EXPECT_TRUE(CdfgGetAttrStr(graph.get(), 1, id) ==
                std::string(length, static_cast<char>('a' + id)))
        << length;
  }
  EXPECT_TRUE(CdfgGetFileName(graph.get(), 1) == std::string(65535, 'f'));
  EXPECT_EQ(CdfgGetColumn(graph.get(), 1), 4);
}

// --- Cut files -----------------------------------------------------------------------------------

// One node with every value type and a position, and one empty node. Where each part ends:
//
//   20 head   24 count   33 char   45 int   61 long integer   77 double   89 string   101 node
//   106 file name   110 line   114 column   134 head of node 2   138 count   148 the rest
std::string FileToCut() {
  return Head(1, 47, {7, 8, 9}, 6) + CharAttribute(1, 'A') + IntAttribute(2, -7) +
         Int64Attribute(3, 1234567890123) + DoubleAttribute(4, 1.5) + StringAttribute(5, "hi") +
         NodeAttribute(6, 19) + Tail("a.c", 3, 4) + PlainNode(2, 36, {1, 2, 3});
}

// What is left of the attributes of node 1 when only `size` bytes are there.
std::string AttributesLeft(std::size_t size) {
  if (size >= 101) return "1=65c 2=-7 3=1234567890123L 4=1.5d 5=\"hi\" 6->19";
  if (size >= 89) return "1=65c 2=-7 3=1234567890123L 4=1.5d 5=\"hi\"";
  if (size >= 77) return "1=65c 2=-7 3=1234567890123L 4=1.5d";
  if (size >= 61) return "1=65c 2=-7 3=1234567890123L";
  if (size >= 45) return "1=65c 2=-7";
  if (size >= 33) return "1=65c";
  return "";
}

std::size_t NodesLeft(std::size_t size) { return size >= 134 ? 2 : size >= 20 ? 1 : 0; }

TEST_F(FileRead, GivesWhatStandsInFrontOfACutAtEveryByte) {
  const std::string whole = FileToCut();
  ASSERT_EQ(whole.size(), 148U);
  for (std::size_t size = 0; size <= whole.size(); ++size) {
    SCOPED_TRACE(size);
    Read(whole.substr(0, size));
    ASSERT_EQ(CdfgNodeCount(graph.get()), NodesLeft(size));
    EXPECT_EQ(CdfgGetKind(graph.get(), 1), size >= 20 ? 47U : 0U);
    EXPECT_EQ(CdfgGetJump(graph.get(), 1), size >= 20 ? 9U : 0U);
    EXPECT_EQ(Attributes(graph.get(), 1), AttributesLeft(size));
    EXPECT_EQ(Position(graph.get(), 1), size >= 114 ? "a.c:3:4" : "-:0:0");
    EXPECT_EQ(CdfgGetKind(graph.get(), 2), size >= 134 ? 36U : 0U);
    EXPECT_EQ(CdfgGetNext(graph.get(), 2), size >= 134 ? 2U : 0U);
  }
}

TEST_F(FileRead, OfACutFileIsWrittenBackWithACountThatFits) {
  // Cut in the middle of the double: three attributes of six are left, and no position.
  EXPECT_EQ(RoundTrip(FileToCut().substr(0, 70)), Head(1, 47, {7, 8, 9}, 3) +
                                                      CharAttribute(1, 'A') + IntAttribute(2, -7) +
                                                      Int64Attribute(3, 1234567890123) + Tail());
}

TEST_F(FileRead, SkipsAStringThatIsCutShort) {
  for (std::size_t missing = 1; missing <= 3; ++missing) {
    const std::string whole = Head(1, 47, {}, 1) + StringAttribute(1, "abc");
    EXPECT_EQ(Attributes(Read(whole.substr(0, whole.size() - missing)), 1), "") << missing;
  }
}

TEST_F(FileRead, TakesNothingOutOfAStringThatIsCutShort) {
  // What looks like a second attribute and the end of the node belongs to the string.
  const std::string inside = IntAttribute(2, 5) + Tail("a.c", 3, 4) + PlainNode(2, 36);
  Read(Head(1, 47, {}, 2) + support::U32(1) + support::U32(ATTR_STRING) + support::U16(1000) +
       inside);
  EXPECT_EQ(Attributes(graph.get(), 1), "");
  EXPECT_EQ(Position(graph.get(), 1), "-:0:0");
  EXPECT_EQ(CdfgNodeCount(graph.get()), 1U);
}

TEST_F(FileRead, TakesNothingOutOfAFileNameThatIsCutShort) {
  Read(Head(1, 47) + support::U16(1000) + PlainNode(2, 36) + PlainNode(3, 36));
  EXPECT_EQ(Position(graph.get(), 1), "-:0:0");
  EXPECT_EQ(CdfgNodeCount(graph.get()), 1U);
}

TEST_F(FileRead, KeepsAnEmptyStringAtTheVeryEnd) {
  EXPECT_EQ(Attributes(Read(Head(1, 47, {}, 1) + StringAttribute(1, "")), 1), "1=\"\"");
}

TEST_F(FileRead, KeepsALongStringThatIsWholeAndSkipsItWhenOneByteIsMissing) {
  const std::string whole = Head(1, 47, {}, 1) + StringAttribute(1, std::string(65535, 'x'));
  EXPECT_TRUE(CdfgGetAttrStr(Read(whole), 1, 1) == std::string(65535, 'x'));
  EXPECT_EQ(Attributes(Read(whole.substr(0, whole.size() - 1)), 1), "");
}

TEST_F(FileRead, GivesWhatStandsInFrontOfACutBehindUnknownTypes) {
  Read(Head(1, 47, {}, 3) + UnknownAttribute(1, 9) + IntAttribute(2, 5) +
       UnknownAttribute(3, 9).substr(0, 7));
  EXPECT_EQ(Attributes(graph.get(), 1), "2=5");
}

// --- Round trips ---------------------------------------------------------------------------------

TEST_F(FileRead, ReproducesAFileByteForByte) { EXPECT_EQ(RoundTrip(FileToCut()), FileToCut()); }

TEST_F(FileRead, ReproducesOddIdsByteForByte) {
  const std::string file = Head(0, 16, {1, 2, 3}, 2) + IntAttribute(1, 5) +
                           StringAttribute(2, "zero") + Tail("a.c", 1, 2) +
                           PlainNode(4294967295U, 17) + Head(5, 36, {}, 1) + IntAttribute(1, 1) +
                           Tail() + Head(5, 47, {}, 1) + IntAttribute(1, 2) + Tail() +
                           PlainNode(0, 47) + PlainNode(4000000000U, 52);
  EXPECT_EQ(RoundTrip(file), file);
}

TEST_F(FileRead, ReproducesOddValuesByteForByte) {
  const std::string file = Head(1, 999, {}, 7) + DoubleAttribute(1, std::nan("7")) +
                           DoubleAttribute(2, -INFINITY) + StringAttribute(3, "") +
                           StringAttribute(4, "\x80\xFF") + CharAttribute(0, 0x80) +
                           IntAttribute(4294967295U, -1) + NodeAttribute(8, 4294967295U) +
                           Tail("\xE9.c", -1, -2147483648LL);
  EXPECT_EQ(RoundTrip(file), file);
}

TEST_F(FileRead, ReproducesASignallingNanByteForByte) {
  const std::string file = Head(1, 47, {}, 1) + Hex("00000001 00000004 7FF0000000000001") + Tail();
  EXPECT_EQ(RoundTrip(file), file);
}

TEST_F(FileRead, ReproducesLongStringsByteForByte) {
  const std::string file = Head(1, 47, {}, 2) + StringAttribute(1, std::string(65535, 'x')) +
                           StringAttribute(2, std::string(1024, 'y')) +
                           Tail(std::string(65535, 'z'));
  EXPECT_TRUE(RoundTrip(file) == file);
}

TEST_F(FileRead, DropsUnknownTypesFromARoundTripAndLowersTheCount) {
  EXPECT_EQ(RoundTrip(Head(1, 47, {}, 3) + UnknownAttribute(1, 0) + IntAttribute(2, 5) +
                      UnknownAttribute(3, 7) + Tail("a.c", 3, 4)),
            Head(1, 47, {}, 1) + IntAttribute(2, 5) + Tail("a.c", 3, 4));
}

TEST_F(FileRead, JoinsAttributesOfOneIdInARoundTrip) {
  EXPECT_EQ(RoundTrip(Head(1, 47, {}, 3) + IntAttribute(1, 5) + IntAttribute(2, 6) +
                      NodeAttribute(1, 7) + Tail()),
            Head(1, 47, {}, 2) + NodeAttribute(1, 7) + IntAttribute(2, 6) + Tail());
}

TEST_F(FileRead, ShortensStringsAtTheirFirstZeroByteInARoundTrip) {
  const std::string text("ab\0cd", 5);
  EXPECT_EQ(RoundTrip(Head(1, 47, {}, 1) + StringAttribute(1, text) + Tail(text, 3, 4)),
            Head(1, 47, {}, 1) + StringAttribute(1, "ab") + Tail("ab", 3, 4));
}

TEST_F(FileRead, LowersANegativeCountToZeroInARoundTrip) {
  EXPECT_EQ(RoundTrip(Head(1, 47, {}, -1) + Tail("a.c", 3, 4)), Head(1, 47) + Tail("a.c", 3, 4));
}

TEST_F(FileRead, ReproducesAFileLongerThanAnyBuffer) {
  std::string file;
  for (std::uint32_t id = 1; id <= 20000; ++id) {
    file += Head(id, 47, {id - 1, id + 1, 0}, 2) + IntAttribute(1, 257) +
            StringAttribute(3, std::string(id % 40, 'n')) + Tail("a.c", id, 1);
  }
  EXPECT_TRUE(RoundTrip(file) == file);
}

// --- Where from ----------------------------------------------------------------------------------

TEST_F(FileRead, OfAFileThatIsNotThereFails) {
  std::string output = "not run";
  const CdfgGraph* read = nullptr;
  output = support::CaptureOutput([&] { read = CdfgReadFile(dir.Path("missing").c_str()); });
  EXPECT_EQ(read, nullptr);
  EXPECT_EQ(output, "");
}

TEST_F(FileRead, OfADirectoryGivesAnEmptyGraph) {
  // It opens like a file; only reading from it fails.
  graph.reset(CdfgReadFile(dir.Path("").c_str()));
  ASSERT_NE(graph, nullptr);
  EXPECT_EQ(CdfgNodeCount(graph.get()), 0U);
}

TEST_F(FileRead, OfAFifoTakesWhatComesThroughIt) {
  const std::string path = dir.Path("fifo");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  const std::string file = FileToCut();
  std::thread writer([&] {
    // In pieces, so that reads come back short.
    std::ofstream stream(path, std::ios::binary);
    for (const char byte : file) stream.put(byte).flush();
  });
  graph.reset(CdfgReadFile(path.c_str()));
  writer.join();
  ASSERT_NE(graph, nullptr);
  EXPECT_EQ(CdfgNodeCount(graph.get()), 2U);
  EXPECT_EQ(Attributes(graph.get(), 1), AttributesLeft(file.size()));
}

TEST_F(FileRead, OfAStreamTakesWhatIsLeftOfIt) {
  const support::Stream stream(std::tmpfile());
  const std::string bytes = "before" + PlainNode(7, 16);
  std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
  std::fseek(stream.get(), 6, SEEK_SET);
  graph.reset(CdfgReadStream(stream.get()));
  ASSERT_NE(graph, nullptr);
  EXPECT_EQ(CdfgGetRoot(graph.get()), 7U);
}

}  // namespace
