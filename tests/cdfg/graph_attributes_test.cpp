// Attributes of nodes: setting, overwriting, order, the ways to read one value, and wide nodes.
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "cdfg/graph.h"
#include "tests/support/graphs.h"

namespace {

using support::Attributes;
using support::GraphTest;

class GraphAttributes : public GraphTest {
 protected:
  const NodeId node = Add(CFG_DECLARE);
};

// --- Setting -------------------------------------------------------------------------------------

TEST_F(GraphAttributes, OfEveryTypeAreKept) {
  EXPECT_EQ(CdfgSetAttrChar(graph, node, 1, 'A'), 0);
  EXPECT_EQ(CdfgSetAttrInt(graph, node, 2, -7), 0);
  EXPECT_EQ(CdfgSetAttrInt64(graph, node, 3, 1234567890123456789), 0);
  EXPECT_EQ(CdfgSetAttrDouble(graph, node, 4, 1.5), 0);
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 5, "text"), 0);
  EXPECT_EQ(CdfgSetAttrNode(graph, node, 6, 19), 0);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 6);
  EXPECT_EQ(CdfgGetAttrChar(graph, node, 1), 'A');
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 2), -7);
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 3), 1234567890123456789);
  EXPECT_EQ(CdfgGetAttrDouble(graph, node, 4), 1.5);
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 5), "text");
  EXPECT_EQ(CdfgGetAttr(graph, node, 6), 19U);
}

TEST_F(GraphAttributes, HaveTheTypeOfTheirSetter) {
  CdfgSetAttrChar(graph, node, 1, 0);
  CdfgSetAttrInt(graph, node, 2, 0);
  CdfgSetAttrInt64(graph, node, 3, 0);
  CdfgSetAttrDouble(graph, node, 4, 0);
  CdfgSetAttrStr(graph, node, 5, "");
  CdfgSetAttrNode(graph, node, 6, 0);
  for (std::int32_t place = 1; place <= 6; ++place) {
    EXPECT_EQ(CdfgGetAttrTypeAt(graph, node, place), static_cast<std::uint32_t>(place));
  }
}

TEST_F(GraphAttributes, KeepTheEndsOfTheirRanges) {
  CdfgSetAttrChar(graph, node, 1, -128);
  CdfgSetAttrInt(graph, node, 2, std::numeric_limits<std::int32_t>::min());
  CdfgSetAttrInt64(graph, node, 3, std::numeric_limits<std::int64_t>::min());
  CdfgSetAttrDouble(graph, node, 4, -std::numeric_limits<double>::infinity());
  CdfgSetAttrNode(graph, node, 6, 4294967295U);
  EXPECT_EQ(CdfgGetAttrChar(graph, node, 1), -128);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 2), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 3), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(CdfgGetAttrDouble(graph, node, 4), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(CdfgGetAttr(graph, node, 6), 4294967295U);
}

TEST_F(GraphAttributes, KeepWhatIsNoNumber) {
  CdfgSetAttrDouble(graph, node, 1, std::nan(""));
  EXPECT_TRUE(std::isnan(CdfgGetAttrDouble(graph, node, 1)));
}

TEST_F(GraphAttributes, MayHaveAnyNumberAsId) {
  CdfgSetAttrInt(graph, node, 0, 1);
  CdfgSetAttrInt(graph, node, 4294967295U, 2);
  EXPECT_EQ(Attributes(graph, node), "0=1 4294967295=2");
}

TEST_F(GraphAttributes, SetAgainKeepOneRecord) {
  CdfgSetAttrInt(graph, node, 7, 1);
  CdfgSetAttrInt(graph, node, 7, 2);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 1);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 7), 2);
}

TEST_F(GraphAttributes, OfANewIdAreAppended) {
  CdfgSetAttrInt(graph, node, 7, 1);
  CdfgSetAttrInt(graph, node, 3, 2);
  CdfgSetAttrInt(graph, node, 5, 3);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 3);
  EXPECT_EQ(Attributes(graph, node), "7=1 3=2 5=3");
}

TEST_F(GraphAttributes, SetAgainKeepTheirPlace) {
  for (const std::uint32_t id : {7U, 3U, 5U}) CdfgSetAttrInt(graph, node, id, 1);
  CdfgSetAttrInt(graph, node, 7, 9);
  CdfgSetAttrNode(graph, node, 3, 8);
  EXPECT_EQ(Attributes(graph, node), "7=9 3->8 5=1");
}

TEST_F(GraphAttributes, OfOneNodeAreNotThoseOfAnother) {
  const NodeId other = Add(CFG_DECLARE);
  CdfgSetAttrInt(graph, node, 1, 1);
  CdfgSetAttrInt(graph, other, 1, 2);
  CdfgSetAttrInt(graph, node, 2, 3);
  EXPECT_EQ(Attributes(graph, node), "1=1 2=3");
  EXPECT_EQ(Attributes(graph, other), "1=2");
}

TEST_F(GraphAttributes, StandAtPlacesFromOne) {
  CdfgSetAttrInt(graph, node, 7, 1);
  CdfgSetAttrNode(graph, node, 3, 2);
  EXPECT_EQ(CdfgGetAttrIdAt(graph, node, 1), 7U);
  EXPECT_EQ(CdfgGetAttrTypeAt(graph, node, 1), 2U);
  EXPECT_EQ(CdfgGetAttrIdAt(graph, node, 2), 3U);
  EXPECT_EQ(CdfgGetAttrTypeAt(graph, node, 2), 6U);
}

TEST_F(GraphAttributes, StandAtNoOtherPlace) {
  CdfgSetAttrInt(graph, node, 7, 1);
  for (const std::int32_t place : {0, 2, 3, -1, std::numeric_limits<std::int32_t>::max(),
                                   std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ(CdfgGetAttrIdAt(graph, node, place), 0U) << place;
    EXPECT_EQ(CdfgGetAttrTypeAt(graph, node, place), 0U) << place;
  }
}

TEST_F(GraphAttributes, ThatAreAbsentReadAsNothing) {
  CdfgSetAttrInt(graph, node, 7, 1);
  EXPECT_EQ(CdfgGetAttr(graph, node, 8), 0U);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 8), 0);
  EXPECT_EQ(CdfgGetAttrStr(graph, node, 8), nullptr);
  EXPECT_EQ(CdfgGetAttrChar(graph, node, 8), 0);
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 8), 0);
  EXPECT_EQ(CdfgGetAttrDouble(graph, node, 8), 0.0);
}

TEST_F(GraphAttributes, AreNotMadeByReading) {
  CdfgGetAttrInt(graph, node, 8);
  CdfgGetAttrStr(graph, node, 8);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 0);
}

// --- Changing the type ---------------------------------------------------------------------------

TEST_F(GraphAttributes, TakeTheTypeOfTheLastSetter) {
  CdfgSetAttrInt(graph, node, 1, 5);
  CdfgSetAttrDouble(graph, node, 1, 2.5);
  EXPECT_EQ(Attributes(graph, node), "1=2.5d");
  CdfgSetAttrNode(graph, node, 1, 4);
  EXPECT_EQ(Attributes(graph, node), "1->4");
  CdfgSetAttrChar(graph, node, 1, 'x');
  EXPECT_EQ(Attributes(graph, node), "1=120c");
  CdfgSetAttrInt64(graph, node, 1, 6);
  EXPECT_EQ(Attributes(graph, node), "1=6L");
  CdfgSetAttrInt(graph, node, 1, 7);
  EXPECT_EQ(Attributes(graph, node), "1=7");
}

TEST_F(GraphAttributes, MayTurnFromStringsToNumbers) {
  CdfgSetAttrStr(graph, node, 1, "text");
  EXPECT_EQ(CdfgSetAttrInt(graph, node, 1, 5), 0);
  EXPECT_EQ(Attributes(graph, node), "1=5");
  EXPECT_EQ(CdfgGetAttrStr(graph, node, 1), nullptr);
}

TEST_F(GraphAttributes, NeverTurnFromNumbersToStrings) {
  CdfgSetAttrChar(graph, node, 1, 'a');
  CdfgSetAttrInt(graph, node, 2, 5);
  CdfgSetAttrInt64(graph, node, 3, 6);
  CdfgSetAttrDouble(graph, node, 4, 1.5);
  CdfgSetAttrNode(graph, node, 6, 7);
  for (const std::uint32_t id : {1U, 2U, 3U, 4U, 6U}) {
    EXPECT_EQ(CdfgSetAttrStr(graph, node, id, "text"), -1) << id;
    EXPECT_EQ(CdfgSetAttrStr(graph, node, id, nullptr), -1) << id;
  }
  EXPECT_EQ(Attributes(graph, node), "1=97c 2=5 3=6L 4=1.5d 6->7");
}

TEST_F(GraphAttributes, ThatOnceWereStringsAreNumbersToAStringSetter) {
  CdfgSetAttrStr(graph, node, 1, "text");
  CdfgSetAttrInt(graph, node, 1, 5);
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, "again"), -1);
  EXPECT_EQ(Attributes(graph, node), "1=5");
}

// --- Strings -------------------------------------------------------------------------------------

TEST_F(GraphAttributes, KeepACopyOfAString) {
  char text[] = "text";
  CdfgSetAttrStr(graph, node, 1, text);
  text[0] = 'n';
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 1), "text");
}

TEST_F(GraphAttributes, MayBeGivenAnotherString) {
  CdfgSetAttrStr(graph, node, 1, "short");
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, "something much longer"), 0);
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 1), "something much longer");
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, ""), 0);
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 1), "");
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, "back"), 0);
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 1), "back");
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 1);
}

TEST_F(GraphAttributes, MayBeGivenTheirOwnString) {
  CdfgSetAttrStr(graph, node, 1, "text");
  CdfgSetAttrStr(graph, node, 1, CdfgGetAttrStr(graph, node, 1) + 1);
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 1), "ext");
}

TEST_F(GraphAttributes, MayBeNullStrings) {
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, nullptr), 0);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 1);
  EXPECT_EQ(CdfgGetAttrTypeAt(graph, node, 1), 5U);
  EXPECT_EQ(CdfgGetAttrStr(graph, node, 1), nullptr);
}

TEST_F(GraphAttributes, ThatAreNullStringsStayNull) {
  CdfgSetAttrStr(graph, node, 1, nullptr);
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, "text"), 0);
  EXPECT_EQ(CdfgGetAttrStr(graph, node, 1), nullptr);
  EXPECT_EQ(CdfgGetAttrTypeAt(graph, node, 1), 5U);
}

TEST_F(GraphAttributes, ThatBecomeNullStringsStayNull) {
  CdfgSetAttrStr(graph, node, 1, "text");
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, nullptr), 0);
  EXPECT_EQ(CdfgGetAttrStr(graph, node, 1), nullptr);
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 1, "again"), 0);
  EXPECT_EQ(CdfgGetAttrStr(graph, node, 1), nullptr);
}

TEST_F(GraphAttributes, ThatAreEmptyStringsAreNotNull) {
  CdfgSetAttrStr(graph, node, 1, "");
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 1), "");
  CdfgSetAttrStr(graph, node, 1, "text");
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 1), "text");
}

TEST_F(GraphAttributes, ThatAreNullStringsMayTurnToNumbers) {
  CdfgSetAttrStr(graph, node, 1, nullptr);
  EXPECT_EQ(CdfgSetAttrInt(graph, node, 1, 3), 0);
  EXPECT_EQ(Attributes(graph, node), "1=3");
}

TEST_F(GraphAttributes, KeepLongStrings) {
  const std::string text(1000000, 'x');
  CdfgSetAttrStr(graph, node, 1, text.c_str());
  EXPECT_EQ(CdfgGetAttrStr(graph, node, 1), text);
}

TEST_F(GraphAttributes, KeepStringsOfEveryLengthApart) {
  std::vector<NodeId> nodes;
  for (std::size_t length = 0; length < 2000; ++length) {
    nodes.push_back(Add(CFG_DECLARE));
    CdfgSetAttrStr(graph, nodes.back(), 1, std::string(length, 'a').c_str());
  }
  for (std::size_t length = 0; length < 2000; ++length) {
    ASSERT_EQ(std::string(CdfgGetAttrStr(graph, nodes[length], 1)), std::string(length, 'a'));
  }
}

// --- One value read in several ways --------------------------------------------------------------

TEST_F(GraphAttributes, ReadTheSameNumberAsIntAndAsNode) {
  CdfgSetAttrNode(graph, node, 1, 4000000000U);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 1), -294967296);
  CdfgSetAttrInt(graph, node, 2, -1);
  EXPECT_EQ(CdfgGetAttr(graph, node, 2), 4294967295U);
}

TEST_F(GraphAttributes, ReadAStringAsZero) {
  CdfgSetAttrStr(graph, node, 1, "text");
  EXPECT_EQ(CdfgGetAttr(graph, node, 1), 0U);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 1), 0);
  EXPECT_EQ(CdfgGetAttrChar(graph, node, 1), 0);
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 1), 0);
  EXPECT_EQ(CdfgGetAttrDouble(graph, node, 1), 0.0);
}

TEST_F(GraphAttributes, ReadANumberAsNoString) {
  CdfgSetAttrChar(graph, node, 1, 1);
  CdfgSetAttrInt(graph, node, 2, 1);
  CdfgSetAttrInt64(graph, node, 3, 1);
  CdfgSetAttrDouble(graph, node, 4, 1);
  CdfgSetAttrNode(graph, node, 6, 1);
  for (const std::uint32_t id : {1U, 2U, 3U, 4U, 6U}) {
    EXPECT_EQ(CdfgGetAttrStr(graph, node, id), nullptr) << id;
  }
}

TEST_F(GraphAttributes, ReadACharAsItsByteWithoutASign) {
  CdfgSetAttrChar(graph, node, 1, -1);
  EXPECT_EQ(CdfgGetAttrChar(graph, node, 1), -1);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 1), 255);
  EXPECT_EQ(CdfgGetAttr(graph, node, 1), 255U);
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 1), 255);
}

TEST_F(GraphAttributes, ReadAnIntAsItsLowestByte) {
  CdfgSetAttrInt(graph, node, 1, 0x12345680);
  EXPECT_EQ(CdfgGetAttrChar(graph, node, 1), -128);
}

TEST_F(GraphAttributes, ReadALongIntegerAsItsLowerHalf) {
  CdfgSetAttrInt64(graph, node, 1, 0x1122334455667788);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 1), 0x55667788);
  EXPECT_EQ(CdfgGetAttrChar(graph, node, 1), -120);
}

TEST_F(GraphAttributes, ReadADoubleAsItsBits) {
  CdfgSetAttrDouble(graph, node, 1, 1.0);
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 1), 0x3FF0000000000000);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 1), 0);
  CdfgSetAttrInt64(graph, node, 2, 0x4000000000000000);
  EXPECT_EQ(CdfgGetAttrDouble(graph, node, 2), 2.0);
}

TEST_F(GraphAttributes, KeepTheBytesThatANarrowerValueLeaves) {
  CdfgSetAttrInt64(graph, node, 1, 0x1122334455667788);
  CdfgSetAttrInt(graph, node, 1, 0x01020304);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 1), 0x01020304);
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 1), 0x1122334401020304);
  CdfgSetAttrChar(graph, node, 1, 0x7F);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 1), 0x0102037F);
}

TEST_F(GraphAttributes, ShowNothingOfAStringThatANumberReplaced) {
  CdfgSetAttrStr(graph, node, 1, "text");
  CdfgSetAttrInt(graph, node, 1, 5);
  EXPECT_EQ(CdfgGetAttrInt64(graph, node, 1), 5);
}

// --- Wide nodes ----------------------------------------------------------------------------------

// Ids in an order that is neither ascending nor descending; each of 0 to 9972 once.
std::uint32_t ScrambledId(std::uint32_t number) { return number * 3571 % 9973; }

TEST_F(GraphAttributes, KeepOrderAndValuesHoweverManyTheyAre) {
  for (std::uint32_t count = 1; count <= 9000; ++count) {
    const std::uint32_t id = ScrambledId(count);
    ASSERT_EQ(CdfgSetAttrInt(graph, node, id, static_cast<std::int32_t>(count)), 0);
    ASSERT_EQ(CdfgGetAttrCount(graph, node), static_cast<std::int32_t>(count));
    ASSERT_EQ(CdfgGetAttrInt(graph, node, id), static_cast<std::int32_t>(count));
  }
  for (std::uint32_t number = 1; number <= 9000; ++number) {
    const auto place = static_cast<std::int32_t>(number);
    ASSERT_EQ(CdfgGetAttrIdAt(graph, node, place), ScrambledId(number));
    ASSERT_EQ(CdfgGetAttrInt(graph, node, ScrambledId(number)), place);
  }
  EXPECT_EQ(CdfgGetAttrInt(graph, node, ScrambledId(9001)), 0);
  EXPECT_EQ(CdfgGetAttrIdAt(graph, node, 9001), 0U);
}

TEST_F(GraphAttributes, AreOverwrittenInPlaceHoweverManyTheyAre) {
  constexpr std::uint32_t kCount = 3000;
  for (std::uint32_t number = 1; number <= kCount; ++number) {
    CdfgSetAttrInt(graph, node, ScrambledId(number), 0);
  }
  for (std::uint32_t number = kCount; number >= 1; --number) {
    ASSERT_EQ(CdfgSetAttrNode(graph, node, ScrambledId(number), number), 0);
  }
  EXPECT_EQ(CdfgGetAttrCount(graph, node), static_cast<std::int32_t>(kCount));
  for (std::uint32_t number = 1; number <= kCount; ++number) {
    const auto place = static_cast<std::int32_t>(number);
    ASSERT_EQ(CdfgGetAttrIdAt(graph, node, place), ScrambledId(number));
    ASSERT_EQ(CdfgGetAttrTypeAt(graph, node, place), 6U);
    ASSERT_EQ(CdfgGetAttr(graph, node, ScrambledId(number)), number);
  }
}

TEST_F(GraphAttributes, AroundTheWidthWhereTheSearchChangesAreTheSame) {
  for (std::uint32_t width = 28; width <= 68; ++width) {
    const NodeId wide = Add(CFG_DECLARE);
    for (std::uint32_t id = 1; id <= width; ++id) CdfgSetAttrInt(graph, wide, id * 10, 1);
    CdfgSetAttrInt(graph, wide, 10, 2);
    CdfgSetAttrInt(graph, wide, width * 10, 3);
    EXPECT_EQ(CdfgGetAttrCount(graph, wide), static_cast<std::int32_t>(width));
    EXPECT_EQ(CdfgGetAttrInt(graph, wide, 10), 2);
    EXPECT_EQ(CdfgGetAttrInt(graph, wide, width * 10), 3);
    EXPECT_EQ(CdfgGetAttrInt(graph, wide, 20), 1);
    EXPECT_EQ(CdfgGetAttrInt(graph, wide, 15), 0);
    EXPECT_EQ(CdfgGetAttrIdAt(graph, wide, 1), 10U);
  }
}

TEST_F(GraphAttributes, OfTwoWideNodesAreSeparate) {
  const NodeId other = Add(CFG_DECLARE);
  for (std::uint32_t id = 1; id <= 500; ++id) {
    CdfgSetAttrInt(graph, node, id, 1);
    CdfgSetAttrInt(graph, other, id, 2);
  }
  CdfgSetAttrInt(graph, other, 501, 2);
  for (std::uint32_t id = 1; id <= 500; ++id) {
    ASSERT_EQ(CdfgGetAttrInt(graph, node, id), 1);
    ASSERT_EQ(CdfgGetAttrInt(graph, other, id), 2);
  }
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 501), 0);
}

TEST_F(GraphAttributes, MayBeStringsInWideNodes) {
  for (std::uint32_t id = 1; id <= 200; ++id) {
    CdfgSetAttrStr(graph, node, id, std::to_string(id).c_str());
  }
  CdfgSetAttrStr(graph, node, 100, "changed");
  CdfgSetAttrInt(graph, node, 101, 5);
  EXPECT_EQ(CdfgSetAttrStr(graph, node, 101, "text"), -1);
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 99), "99");
  EXPECT_STREQ(CdfgGetAttrStr(graph, node, 100), "changed");
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 101), 5);
}

TEST_F(GraphAttributes, OfAFreedWideNodeAreNotThoseOfItsSuccessor) {
  for (std::uint32_t id = 1; id <= 100; ++id) CdfgSetAttrInt(graph, node, id, 1);
  CdfgFreeNode(graph, node);
  CdfgAddNodeWithId(graph, node);
  EXPECT_EQ(CdfgGetAttrCount(graph, node), 0);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 50), 0);
  for (std::uint32_t id = 1; id <= 100; ++id) CdfgSetAttrInt(graph, node, id, 2);
  EXPECT_EQ(CdfgGetAttrInt(graph, node, 50), 2);
}

// --- Against a plain model -----------------------------------------------------------------------

TEST_F(GraphAttributes, AgreeWithPlainMapsUnderManyOperations) {
  constexpr NodeId kNodes = 60;
  std::mt19937 random(2);
  std::map<std::pair<NodeId, std::uint32_t>, std::int32_t> values;
  std::vector<std::vector<std::uint32_t>> orders(kNodes + 1);
  while (CdfgNodeCount(graph) < kNodes) Add(CFG_DECLARE);
  for (int i = 0; i < 40000; ++i) {
    const NodeId id = 1 + static_cast<NodeId>(random()) % kNodes;
    // Low nodes stay narrow, high ones become wide.
    const std::uint32_t attribute = static_cast<std::uint32_t>(random()) % (1 + id * 3);
    if (values.find({id, attribute}) == values.end()) orders[id].push_back(attribute);
    values[{id, attribute}] = i;
    ASSERT_EQ(CdfgSetAttrInt(graph, id, attribute, i), 0);
  }
  for (const auto& [key, value] : values) {
    ASSERT_EQ(CdfgGetAttrInt(graph, key.first, key.second), value);
  }
  for (NodeId id = 1; id <= kNodes; ++id) {
    ASSERT_EQ(CdfgGetAttrCount(graph, id), static_cast<std::int32_t>(orders[id].size()));
    for (std::size_t i = 0; i < orders[id].size(); ++i) {
      ASSERT_EQ(CdfgGetAttrIdAt(graph, id, static_cast<std::int32_t>(i) + 1), orders[id][i]);
    }
  }
}

// What a node's attribute holds, said plainly: eight bytes or a text, and the type set last.
struct PlainValue {
  std::uint32_t id = 0;
  std::uint32_t type = 0;
  std::uint64_t bits = 0;
  std::optional<std::string> text = {};
};

class PlainAttributes {
 public:
  // As the setters of numbers do: `width` bytes are replaced, those of a text are not kept.
  void SetNumber(std::uint32_t id, std::uint32_t type, std::uint64_t bits, unsigned width) {
    PlainValue& value = FindOrAdd(id, type);
    if (value.type == ATTR_STRING) value.bits = 0;
    std::memcpy(&value.bits, &bits, width);
    value.type = type;
    value.text.reset();
  }
  int SetText(std::uint32_t id, const std::string& text) {
    const std::size_t count = values.size();
    PlainValue& value = FindOrAdd(id, ATTR_STRING);
    if (value.type != ATTR_STRING) return -1;
    if (values.size() == count && !value.text.has_value()) return 0;
    value.text = text;
    return 0;
  }

  std::vector<PlainValue> values;

 private:
  PlainValue& FindOrAdd(std::uint32_t id, std::uint32_t type) {
    for (PlainValue& value : values) {
      if (value.id == id) return value;
    }
    return values.emplace_back(PlainValue{id, type});
  }
};

void ExpectSame(const CdfgGraph* graph, NodeId node, const PlainAttributes& plain) {
  ASSERT_EQ(CdfgGetAttrCount(graph, node), static_cast<std::int32_t>(plain.values.size()));
  std::int32_t place = 0;
  for (const PlainValue& value : plain.values) {
    ++place;
    ASSERT_EQ(CdfgGetAttrIdAt(graph, node, place), value.id);
    ASSERT_EQ(CdfgGetAttrTypeAt(graph, node, place), value.type) << value.id;
    const std::uint64_t bits = value.type == ATTR_STRING ? 0 : value.bits;
    ASSERT_EQ(static_cast<std::uint64_t>(CdfgGetAttrInt64(graph, node, value.id)), bits)
        << value.id;
    ASSERT_EQ(CdfgGetAttr(graph, node, value.id), static_cast<std::uint32_t>(bits));
    ASSERT_EQ(std::bit_cast<std::uint64_t>(CdfgGetAttrDouble(graph, node, value.id)), bits);
    const char* text = CdfgGetAttrStr(graph, node, value.id);
    ASSERT_EQ(text != nullptr, value.text.has_value()) << value.id;
    ASSERT_EQ(std::string(text == nullptr ? "" : text), value.text.value_or(""));
  }
}

// Ids on both sides of what fits into a record, and values of all widths, narrower ones over wider.
TEST_F(GraphAttributes, OfAllTypesAndIdsAgreeWithAPlainListUnderManyOperations) {
  constexpr std::uint32_t kIds[] = {0,     1,      2,       3,          4,         5,
                                    65533, 65534,  65535,   65536,      65537,     131071,
                                    70000, 100000, 4000000, 4294967294, 4294967295};
  std::mt19937_64 random(5);
  for (int round = 0; round < 300; ++round) {
    const NodeId id = Add(CFG_DECLARE);
    PlainAttributes plain;
    // Up to three attributes lie in the record, more in a run, many in a table too.
    const std::size_t ids = 1 + random() % 60;
    for (int i = 0; i < 150; ++i) {
      const std::size_t chosen = random() % ids;
      const std::uint32_t attribute = chosen < std::size(kIds)
                                          ? kIds[(chosen * 7) % std::size(kIds)]
                                          : static_cast<std::uint32_t>(65500 + chosen);
      const std::uint64_t bits = random() % 2 == 0 ? random() : random() % 1000;
      switch (random() % 6) {
        case 0:
          plain.SetNumber(attribute, ATTR_CHAR, bits, 1);
          CdfgSetAttrChar(graph, id, attribute, static_cast<std::int8_t>(bits));
          break;
        case 1:
          plain.SetNumber(attribute, ATTR_INT, bits, 4);
          CdfgSetAttrInt(graph, id, attribute, static_cast<std::int32_t>(bits));
          break;
        case 2:
          plain.SetNumber(attribute, ATTR_LONGLONG, bits, 8);
          CdfgSetAttrInt64(graph, id, attribute, static_cast<std::int64_t>(bits));
          break;
        case 3:
          plain.SetNumber(attribute, ATTR_FLOAT, bits, 8);
          CdfgSetAttrDouble(graph, id, attribute, std::bit_cast<double>(bits));
          break;
        case 4:
          plain.SetNumber(attribute, ATTR_NODE, bits, 4);
          CdfgSetAttrNode(graph, id, attribute, static_cast<NodeId>(bits));
          break;
        default: {
          const std::string text(bits % 40, 'x');
          ASSERT_EQ(CdfgSetAttrStr(graph, id, attribute, text.c_str()),
                    plain.SetText(attribute, text));
        }
      }
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSame(graph, id, plain));
    if (round % 3 == 0) CdfgFreeNode(graph, id);
  }
}

TEST_F(GraphAttributes, MayBeTextsLongerThanAnyBlockOfMemory) {
  const std::string longest(5000000, 'l');
  const std::string long_text(300000, 'm');
  for (std::uint32_t id = 1; id <= 3; ++id) {
    CdfgSetAttrStr(graph, node, 3 * id, longest.c_str());
    CdfgSetAttrStr(graph, node, 3 * id + 1, long_text.c_str());
    CdfgSetAttrStr(graph, node, 3 * id + 2, "short");
  }
  for (std::uint32_t id = 1; id <= 3; ++id) {
    EXPECT_EQ(CdfgGetAttrStr(graph, node, 3 * id), longest);
    EXPECT_EQ(CdfgGetAttrStr(graph, node, 3 * id + 1), long_text);
    EXPECT_STREQ(CdfgGetAttrStr(graph, node, 3 * id + 2), "short");
  }
}

// Wide enough for a block of attributes of its own, which others lie beside.
TEST_F(GraphAttributes, OfAVeryWideNodeAreKept) {
  constexpr std::uint32_t kCount = 200000;
  const NodeId other = Add(CFG_DECLARE);
  for (std::uint32_t i = 0; i < kCount; ++i) {
    CdfgSetAttrInt(graph, node, i, static_cast<std::int32_t>(i));
    if (i % 1000 == 0) CdfgSetAttrInt(graph, other, i, 7);
  }
  ASSERT_EQ(CdfgGetAttrCount(graph, node), static_cast<std::int32_t>(kCount));
  for (std::uint32_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(CdfgGetAttrInt(graph, node, i), static_cast<std::int32_t>(i));
    ASSERT_EQ(CdfgGetAttrIdAt(graph, node, static_cast<std::int32_t>(i) + 1), i);
  }
  EXPECT_EQ(CdfgGetAttrCount(graph, other), 200);
  EXPECT_EQ(CdfgGetAttrInt(graph, other, 199000), 7);
}

// The table of wide nodes grows while some of those in it are gone.
TEST_F(GraphAttributes, OfWideNodesAreFoundWhenOthersAreFreed) {
  std::vector<NodeId> wide;
  for (int i = 0; i < 200; ++i) {
    const NodeId id = Add(CFG_DECLARE);
    for (std::uint32_t attribute = 1; attribute <= 40; ++attribute) {
      CdfgSetAttrInt(graph, id, attribute, static_cast<std::int32_t>(id * attribute));
    }
    wide.push_back(id);
    if (i % 3 == 1) CdfgFreeNode(graph, id);
  }
  for (std::size_t i = 0; i < wide.size(); ++i) {
    for (std::uint32_t attribute = 1; attribute <= 40; ++attribute) {
      const auto wanted = i % 3 == 1 ? 0 : static_cast<std::int32_t>(wide[i] * attribute);
      ASSERT_EQ(CdfgGetAttrInt(graph, wide[i], attribute), wanted);
    }
  }
}

}  // namespace
