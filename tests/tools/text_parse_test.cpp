#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/bytes.h"
#include "tools/raw_file.h"
#include "tools/text_form.h"

namespace {

// A text read without a mistake. The file points into the text, so that they live together.
struct Read {
  explicit Read(std::string_view source) : text(source) {
    TextError error;
    is_read = ParseText(text, &file, &labels, &error);
    if (!is_read) ADD_FAILURE() << DescribeError("text", text, error);
  }
  std::string text;
  RawFile file;
  TextLabels labels;
  bool is_read = false;
};

std::string BytesOf(std::string_view text) { return RawBytes(Read(text).file); }

// The links of all nodes, "ID<PREV>NEXT" each.
std::string Links(std::string_view text) {
  const Read read(text);
  std::string links;
  for (const RawNode& node : read.file.nodes) {
    links += (links.empty() ? "" : " ") + std::to_string(node.id) + '<' +
             std::to_string(node.prev) + '>' + std::to_string(node.next);
  }
  return links;
}

std::vector<std::uint32_t> Ids(std::string_view text) {
  const Read read(text);
  std::vector<std::uint32_t> ids;
  for (const RawNode& node : read.file.nodes) ids.push_back(node.id);
  return ids;
}

// The value of `CFG_ROOT { 77 = VALUE }`.
RawAttribute Value(const std::string& value) {
  static std::vector<std::unique_ptr<Read>> kept;
  kept.push_back(std::make_unique<Read>("CFG_ROOT { 77 = " + value + " }"));
  const RawFile& file = kept.back()->file;
  if (file.attributes.empty()) return {};
  EXPECT_EQ(file.attributes.back().id, 77u);
  return file.attributes.back();
}

void ExpectValue(const std::string& value, std::uint32_t type, std::uint64_t bits) {
  const RawAttribute attribute = Value(value);
  EXPECT_EQ(attribute.type, type) << value;
  EXPECT_EQ(attribute.bits, bits) << value;
}

std::string StringValue(const std::string& value) {
  const RawAttribute attribute = Value(value);
  EXPECT_EQ(attribute.type, 5u);
  return std::string(RawText(attribute));
}

using Ids32 = std::vector<std::uint32_t>;

// --- Nodes ---------------------------------------------------------------------------------------

TEST(TextParse, NoTextIsNoFile) {
  EXPECT_EQ(BytesOf(""), "");
  EXPECT_EQ(BytesOf(" \n\t\r\n# only a comment"), "");
}

TEST(TextParse, AKindAloneIsANodeWithNothingElse) {
  EXPECT_EQ(BytesOf("CFG_ROOT"), Bytes().Head(1, 16).Foot().Get());
  EXPECT_EQ(BytesOf("CFG_ROOT {}"), Bytes().Head(1, 16).Foot().Get());
}

TEST(TextParse, AKindMayBeANumber) {
  EXPECT_EQ(BytesOf("4294967295"), Bytes().Head(1, 0xffffffff).Foot().Get());
  EXPECT_EQ(BytesOf("3: 16"), Bytes().Head(3, 16).Foot().Get());
}

TEST(TextParse, EveryFieldOfANode) {
  EXPECT_EQ(BytesOf("9: CFG_BREAK at \"a.c\":3:-4 prev @5 next @6 jump @7 { 8 = 1 }"),
            Bytes().Words(9, 289, 5, 6, 7, 1).Words(8, 2, 1).Foot("a.c", 3, -4).Get());
}

TEST(TextParse, HeaderItemsComeInAnyOrder) {
  EXPECT_EQ(BytesOf("CFG_BREAK jump @7 prev @5 at 3:4 next @6"),
            Bytes().Words(1, 289, 5, 6, 7, 0).Foot("", 3, 4).Get());
}

TEST(TextParse, ANegativeCountIsKept) {
  EXPECT_EQ(BytesOf("CFG_BREAK count -2147483648"), Bytes().Head(1, 289, INT32_MIN).Foot().Get());
}

TEST(TextParse, WhiteSpaceAndCommentsMeanNothing) {
  EXPECT_EQ(BytesOf("1:CFG_ROOT{LANG=5 3=\"#\"}"),
            BytesOf("1 : # one\n CFG_ROOT\n{\nLANG = 5\t3\n= "
                    "\"#\" # two\r\n}\n"));
}

// --- Ids and labels ------------------------------------------------------------------------------

TEST(TextParse, IdsCountOnInTextOrder) {
  EXPECT_EQ(Ids("CFG_ROOT { ELEMENT = [ CFG_FILEINFO { ELEMENT = CFG_ENUM } CFG_FILEINFO ] } 289"),
            (Ids32{1, 2, 3, 4, 5}));
}

TEST(TextParse, ANumberAsLabelIsTheIdAndCountingGoesOnFromIt) {
  EXPECT_EQ(Ids("CFG_BREAK 7: CFG_BREAK CFG_BREAK 0x10: CFG_BREAK CFG_BREAK"),
            (Ids32{1, 7, 8, 16, 17}));
  EXPECT_EQ(Ids("0: CFG_BREAK CFG_BREAK 4294967295: CFG_BREAK"), (Ids32{0, 1, 4294967295}));
}

TEST(TextParse, NumbersAsLabelsMayRepeat) {
  EXPECT_EQ(Ids("5: CFG_BREAK 5: CFG_BREAK 5: CFG_BREAK"), (Ids32{5, 5, 5}));
}

TEST(TextParse, NamesStandForIdsAlsoBeforeTheirNode) {
  const Read read(
      "CFG_BREAK prev @b next @a jump @b { 1 = @b 2 = @a }  a: CFG_BREAK  9: 289  b: CFG_BREAK");
  EXPECT_EQ(RawBytes(read.file), Bytes()
                                     .Words(1, 289, 10, 2, 10, 2)
                                     .Words(1, 6, 10)
                                     .Words(2, 6, 2)
                                     .Foot()
                                     .Head(2, 289)
                                     .Foot()
                                     .Head(9, 289)
                                     .Foot()
                                     .Head(10, 289)
                                     .Foot()
                                     .Get());
  EXPECT_EQ(read.labels, (TextLabels{{"a", 2}, {"b", 10}}));
}

TEST(TextParse, AKindsNameMayBeALabel) {
  EXPECT_EQ(BytesOf("CFG_ROOT: CFG_BREAK jump @CFG_ROOT"),
            Bytes().Words(1, 289, 0, 0, 1, 0).Foot().Get());
}

TEST(TextParse, LabelsTurnedRound) {
  const auto names = NamesById({{"a", 2}, {"b", 10}});
  EXPECT_EQ(names, (std::unordered_map<std::uint32_t, std::string>{{2, "a"}, {10, "b"}}));
}

TEST(TextParse, WhatCanBeALabel) {
  EXPECT_TRUE(IsLabel("a"));
  EXPECT_TRUE(IsLabel("_a9_Z"));
  for (const char* word : {"", "9a", "a-b", "a b", "\xc3\xa4", "file", "sorted", "tail", "prev",
                           "next", "jump", "at", "count", "type", "double"}) {
    EXPECT_FALSE(IsLabel(word)) << word;
  }
}

// --- Positions -----------------------------------------------------------------------------------

TEST(TextParse, AFileNameHoldsUntilTheNext) {
  const Read read(R"(
    CFG_BREAK at 1:1
    file "a"
    CFG_IF_THEN at 2:2 { CFG = [ CFG_BREAK at "b":3:3  CFG_BREAK ] }
    CFG_BREAK at 4:4
    file "c"
    file ""
    CFG_BREAK)");
  std::string positions;
  for (const RawNode& node : read.file.nodes) {
    positions += std::string(node.file) + ':' + std::to_string(node.line) + ':' +
                 std::to_string(node.column) + ' ';
  }
  EXPECT_EQ(positions, ":1:1 a:2:2 b:3:3 b:0:0 b:4:4 :0:0 ");
}

// --- Chains --------------------------------------------------------------------------------------

TEST(TextParse, ANodeInPlaceHasItsOwnerAsPrev) {
  EXPECT_EQ(BytesOf("5: CFG_ROOT { ELEMENT = CFG_BREAK }"),
            Bytes().Head(5, 16, 1).Words(1, 6, 6).Foot().Words(6, 289, 5, 0, 0, 0).Foot().Get());
  EXPECT_EQ(Links("5: CFG_ROOT { ELEMENT = [ CFG_BREAK ] }"), "5<0>0 6<5>0");
  EXPECT_EQ(Links("5: CFG_ROOT { ELEMENT = a: CFG_BREAK }"), "5<0>0 6<5>0");
  EXPECT_EQ(Links("5: CFG_ROOT { ELEMENT = 9: CFG_BREAK }"), "5<0>0 9<5>0");
}

TEST(TextParse, AChainIsLinkedBothWays) {
  EXPECT_EQ(Links("CFG_ROOT { ELEMENT = [ CFG_BREAK CFG_BREAK CFG_BREAK ] }"),
            "1<0>0 2<1>3 3<2>4 4<3>0");
}

TEST(TextParse, AStarIsWhatTheAttributeNamesAndTakesTheWayBackAway) {
  EXPECT_EQ(BytesOf("CFG_ROOT { 1 = [ 289  *289  289 ] }"), Bytes()
                                                                .Head(1, 16, 1)
                                                                .Words(1, 6, 3)
                                                                .Foot()
                                                                .Words(2, 289, 0, 3, 0, 0)
                                                                .Foot()
                                                                .Words(3, 289, 2, 4, 0, 0)
                                                                .Foot()
                                                                .Words(4, 289, 3, 0, 0, 0)
                                                                .Foot()
                                                                .Get());
  EXPECT_EQ(Links("CFG_ROOT { ELEMENT = *CFG_BREAK }"), "1<0>0 2<0>0");
  EXPECT_EQ(Links("CFG_ROOT { ELEMENT = [ *CFG_BREAK CFG_BREAK ] }"), "1<0>0 2<0>3 3<2>0");
}

TEST(TextParse, WrittenLinksGoBeforeThoseOfTheChain) {
  EXPECT_EQ(
      Links("CFG_ROOT { ELEMENT = [ CFG_BREAK prev @9 CFG_BREAK next @0 CFG_BREAK prev @0 ] }"),
      "1<0>0 2<9>3 3<2>0 4<0>0");
  EXPECT_EQ(Links("CFG_ROOT { ELEMENT = [ CFG_BREAK prev @9 *CFG_BREAK next @8 ] }"),
            "1<0>0 2<9>3 3<2>8");
}

TEST(TextParse, NextInPlaceFollowsWithoutBeingJoined) {
  EXPECT_EQ(Links("CFG_ROOT { ELEMENT = [ CFG_BREAK  *CFG_BREAK next [ 289 *289 289 ] ] }"),
            "1<0>0 2<0>3 3<2>5 4<0>5 5<4>6 6<5>0");
  EXPECT_EQ(Links("CFG_BREAK next [ CFG_BREAK ]"), "1<0>2 2<1>0");
}

TEST(TextParse, BracketsAtTopLevelLinkWithoutAnOwner) {
  EXPECT_EQ(Links("[ CFG_BREAK CFG_BREAK ] CFG_BREAK"), "1<0>2 2<1>0 3<0>0");
}

TEST(TextParse, AttributesOfANodeStayTogetherAroundNodesInPlace) {
  EXPECT_EQ(BytesOf("CFG_ROOT { 1 = 5 2 = CFG_ROOT { 3 = 6 4 = CFG_ROOT { 5 = 7 } } 6 = 8 }"),
            Bytes()
                .Head(1, 16, 3)
                .Words(1, 2, 5)
                .Words(2, 6, 2)
                .Words(6, 2, 8)
                .Foot()
                .Words(2, 16, 1, 0, 0, 2)
                .Words(3, 2, 6)
                .Words(4, 6, 3)
                .Foot()
                .Words(3, 16, 2, 0, 0, 1)
                .Words(5, 2, 7)
                .Foot()
                .Get());
}

// --- Attributes and values -----------------------------------------------------------------------

TEST(TextParse, AttributesByWordFullNameAndNumberMayRepeat) {
  EXPECT_EQ(BytesOf("CFG_ROOT { LANG = 5 CfgRoot_LANG = 6 2 = 7 CfgFunc_NAME = 8 0xffffffff = 9 }"),
            Bytes()
                .Head(1, 16, 5)
                .Words(2, 2, 5)
                .Words(2, 2, 6)
                .Words(2, 2, 7)
                .Words(4, 2, 8)
                .Words(0xffffffff, 2, 9)
                .Foot()
                .Get());
}

TEST(TextParse, Ints) {
  ExpectValue("5", 2, 5);
  ExpectValue("-3", 2, 0xfffffffd);
  ExpectValue("0x1F", 2, 31);
  ExpectValue("-0x1", 2, 0xffffffff);
  ExpectValue("2147483647", 2, 0x7fffffff);
  ExpectValue("-2147483648", 2, 0x80000000);
}

TEST(TextParse, EnumeratorsAreInts) {
  ExpectValue("CALC_Div", 2, 12);
  ExpectValue("DECL_VALTYPE_STRUCT", 2, 10);
  ExpectValue("LOOP_FOR", 2, 5);
}

TEST(TextParse, LongLongs) {
  ExpectValue("5LL", 3, 5);
  ExpectValue("-1LL", 3, 0xffffffffffffffff);
  ExpectValue("0x10LL", 3, 16);
  ExpectValue("9223372036854775807LL", 3, 0x7fffffffffffffff);
  ExpectValue("-9223372036854775808LL", 3, 0x8000000000000000);
}

TEST(TextParse, Doubles) {
  ExpectValue("1.0", 4, 0x3ff0000000000000);
  ExpectValue("1e0", 4, 0x3ff0000000000000);
  ExpectValue("-1.5E+0", 4, 0xbff8000000000000);
  ExpectValue("0x1.8p+0", 4, 0x3ff8000000000000);
  ExpectValue("0x1p-1074", 4, 1);
  ExpectValue("5e-324", 4, 1);
  ExpectValue("-0.0", 4, 0x8000000000000000);
  ExpectValue("1.7976931348623157e308", 4, 0x7fefffffffffffff);
  ExpectValue("double:0x7ff8000000000001", 4, 0x7ff8000000000001);
  ExpectValue("double : 0xfff0000000000000", 4, 0xfff0000000000000);
}

TEST(TextParse, Chars) {
  ExpectValue("'a'", 1, 'a');
  ExpectValue("' '", 1, ' ');
  ExpectValue("'\"'", 1, '"');
  ExpectValue(R"('\'')", 1, '\'');
  ExpectValue(R"('\\')", 1, '\\');
  ExpectValue(R"('\n')", 1, '\n');
  ExpectValue(R"('\xfF')", 1, 0xff);
  ExpectValue(R"('\x00')", 1, 0);
}

TEST(TextParse, Strings) {
  EXPECT_EQ(StringValue(R"("")"), "");
  EXPECT_EQ(StringValue(R"("a 'b' # c")"), "a 'b' # c");
  EXPECT_EQ(StringValue(R"("\n\t\"\'\\\x41\x00\xffz")"), std::string("\n\t\"'\\A\0\xffz", 9));
  EXPECT_EQ(StringValue("\"\xc3\xa4\x01\""), "\xc3\xa4\x01");
  EXPECT_EQ(StringValue('"' + std::string(65535, 'x') + '"'), std::string(65535, 'x'));
}

TEST(TextParse, References) {
  ExpectValue("@0", 6, 0);
  ExpectValue("@4294967295", 6, 4294967295);
}

TEST(TextParse, TypesWithoutAValue) {
  ExpectValue("type 9", 9, 0);
  ExpectValue("type 0", 0, 0);
  ExpectValue("type 4294967295", 4294967295, 0);
}

// --- The whole file ------------------------------------------------------------------------------

TEST(TextParse, SortedWritesNodesByIdAndKeepsTheOrderOfEqualOnes) {
  EXPECT_EQ(BytesOf("sorted 3: 10 1: 11 { 1 = 2: 12 } 3: 13 0: 14"), Bytes()
                                                                         .Head(0, 14)
                                                                         .Foot()
                                                                         .Head(1, 11, 1)
                                                                         .Words(1, 6, 2)
                                                                         .Foot()
                                                                         .Words(2, 12, 1, 0, 0, 0)
                                                                         .Foot()
                                                                         .Head(3, 10)
                                                                         .Foot()
                                                                         .Head(3, 13)
                                                                         .Foot()
                                                                         .Get());
}

TEST(TextParse, SortedKeepsTheOrderOfManyNodesOfOneId) {
  std::string text = "sorted 9: 0";
  for (int kind = 1; kind < 100; ++kind) text += " 5: " + std::to_string(kind);
  const Read read(text);
  ASSERT_EQ(read.file.nodes.size(), 100u);
  for (std::uint32_t i = 0; i < 99; ++i) EXPECT_EQ(read.file.nodes[i].kind, i + 1);
  EXPECT_EQ(read.file.nodes[99].id, 9u);
}

TEST(TextParse, SortedDoesNotChangeWhichFileHolds) {
  const Read read("sorted file \"a\" 2: 10 file \"b\" 1: 10");
  EXPECT_EQ(read.file.nodes[0].file, "b");
  EXPECT_EQ(read.file.nodes[1].file, "a");
}

TEST(TextParse, TailBytesStandBehindTheNodes) {
  EXPECT_EQ(BytesOf("16 tail 00 1f\n  Ff # three\n"),
            Bytes().Head(1, 16).Foot().Number(0x001fff, 3).Get());
  EXPECT_EQ(BytesOf("tail"), "");
}

TEST(TextParse, NestingAThousandDeepIsRead) {
  std::string text = "CFG_ROOT";
  for (int depth = 1; depth < 1000; ++depth) text += " { 1 = CFG_ROOT";
  text += std::string(999, '}');
  EXPECT_EQ(Ids(text).size(), 1000u);
}

// --- Mistakes ------------------------------------------------------------------------------------

struct Mistake {
  const char* text;
  int line;
  int column;
  const char* message;
};

const Mistake kMistakes[] = {
    // Nodes
    {"CFG_RUT", 1, 1, "expected a node kind, found 'CFG_RUT'"},
    {"CFG_ROOT }", 1, 10, "expected a node kind, found '}'"},
    {"*CFG_ROOT", 1, 1, "expected a node kind, found '*'"},
    {"[ *CFG_ROOT ]", 1, 3, "expected a node kind, found '*'"},
    {"a:", 1, 3, "expected a node kind, found the end of the text"},
    {"\"a\"", 1, 1, "expected a node kind, found \"a\""},
    {"4294967296", 1, 1, "expected a kind from 0 to 4294967295, found '4294967296'"},
    {"$", 1, 1, "expected a node kind, found '$'"},
    {"\x01", 1, 1, "expected a node kind, found '?'"},
    // Labels and ids
    {"4294967296: 16", 1, 1, "expected an id from 0 to 4294967295, found '4294967296'"},
    {"-1: 16", 1, 1, "expected an id from 0 to 4294967295, found '-1'"},
    {"12ab: 16", 1, 1, "expected an id from 0 to 4294967295, found '12ab'"},
    {"a: 16\n\n  a: 16", 3, 3, "expected a new label (line 1 has this one), found 'a'"},
    {"next: 16", 1, 1, "expected a label that is no word of the form, found 'next'"},
    {"file: 16", 1, 1, "expected a label that is no word of the form, found 'file'"},
    {"16 { 1 = type: 16 }", 1, 10, "expected a label that is no word of the form, found 'type'"},
    {"16 {\n 1 = @x }", 2, 7, "expected the label of a node, found 'x'"},
    {"16\n  jump @x", 2, 9, "expected the label of a node, found 'x'"},
    {"16 { 1 = @ }", 1, 12, "expected a label behind '@', found '}'"},
    {"16 jump @4294967296", 1, 10, "expected an id from 0 to 4294967295, found '4294967296'"},
    {"4294967295: 16 CFG_ROOT", 1, 16,
     "expected a number as label (the node before has the last id), found 'CFG_ROOT'"},
    {"CFG_ROOT CFG_BREAK 2: CFG_ROOT", 1, 10,
     "expected a free id for this node, found 2, which another node has"},
    {"2: CFG_ROOT\n1: CFG_ROOT CFG_BREAK", 2, 13,
     "expected a free id for this node, found 2, which another node has"},
    // Headers
    {"16 at 3", 1, 8, "expected ':', found the end of the text"},
    {"16 at x:3", 1, 7, "expected a line from -2147483648 to 2147483647, found 'x'"},
    {"16 at 3:2147483648", 1, 9,
     "expected a column from -2147483648 to 2147483647, found '2147483648'"},
    {"16 at \"a\" 3:4", 1, 11, "expected ':', found '3'"},
    {"16 prev 5", 1, 9, "expected '@' and a label, found '5'"},
    {"16 next CFG_ROOT", 1, 9, "expected '@' and a label, found 'CFG_ROOT'"},
    {"16 jump [ 16 ]", 1, 9, "expected '@' and a label, found '['"},
    {"16 at 1:1 at 2:2", 1, 11,
     "expected at, count, prev, next and jump only once each, found 'at'"},
    {"16 count 1", 1, 10, "expected a negative count (others are counted), found '1'"},
    {"16 count x", 1, 10, "expected a count from -2147483648 to 2147483647, found 'x'"},
    {"16 count -1 {}", 1, 13, "expected no attributes behind a negative count, found '{'"},
    // Attributes
    {"CFG_ROOT {\n  NAME = 5 }", 2, 3,
     "expected an attribute of CFG_ROOT (ELEMENT, LANG, ENVIRON, END) or '}', found 'NAME'"},
    {"CFG_ROOT {", 1, 11,
     "expected an attribute of CFG_ROOT (ELEMENT, LANG, ENVIRON, END) or '}', found the end of "
     "the text"},
    {"CFG_BREAK { NAME = 5 }", 1, 13, "expected the number of an attribute or '}', found 'NAME'"},
    {"16 { -1 = 5 }", 1, 6, "expected an attribute from 0 to 4294967295, found '-1'"},
    {"16 { 1 5 }", 1, 8, "expected '=', found '5'"},
    // Values
    {"16 { 1 = }", 1, 10, "expected a value, found '}'"},
    {"16 { 1 = CALC_Foo }", 1, 10, "expected a value, found 'CALC_Foo'"},
    {"16 { 1 = 2147483648 }", 1, 10,
     "expected an int from -2147483648 to 2147483647 (a long long ends in LL), found "
     "'2147483648'"},
    {"16 { 1 = -2147483649 }", 1, 10,
     "expected an int from -2147483648 to 2147483647 (a long long ends in LL), found "
     "'-2147483649'"},
    {"16 { 1 = 12x }", 1, 10,
     "expected an int from -2147483648 to 2147483647 (a long long ends in LL), found '12x'"},
    {"16 { 1 = 0x }", 1, 10,
     "expected an int from -2147483648 to 2147483647 (a long long ends in LL), found '0x'"},
    {"16 { 1 = 9223372036854775808LL }", 1, 10,
     "expected a long long from -9223372036854775808LL to 9223372036854775807LL, found "
     "'9223372036854775808LL'"},
    {"16 { 1 = 1e999 }", 1, 10, "expected a number that a double can hold, found '1e999'"},
    {"16 { 1 = 1.2.3 }", 1, 10, "expected a number that a double can hold, found '1.2.3'"},
    {"16 { 1 = double 5 }", 1, 17, "expected ':', found '5'"},
    {"16 { 1 = double:0x10000000000000000 }", 1, 17,
     "expected the bits of a double from 0 to 18446744073709551615, found "
     "'0x10000000000000000'"},
    {"16 { 1 = type 5 }", 1, 15, "expected a value type without a value (not 1 to 6), found '5'"},
    {"16 { 1 = type x }", 1, 15, "expected a value type from 0 to 4294967295, found 'x'"},
    {"16 { 1 = 'ab' }", 1, 10, "expected one character between single quotes, found ''ab''"},
    {"16 { 1 = '' }", 1, 10, "expected one character between single quotes, found ''''"},
    {"16 { 1 = 'a\n }", 1, 10, "expected a closing ' on the same line, found none"},
    {"16 { 1 = \"a\n\" }", 1, 10, "expected a closing \" on the same line, found none"},
    {"16 { 1 = \"a", 1, 10, "expected a closing \" on the same line, found none"},
    {"16 { 1 = \"a\\", 1, 10, "expected a closing \" on the same line, found none"},
    {"16 { 1 = \"ab\\qc\" }", 1, 13,
     R"(expected an escape \n, \t, \", \', \\ or \xHH, found '\q')"},
    {"16 { 1 = \"ab\\x4\" }", 1, 13,
     R"(expected an escape \n, \t, \", \', \\ or \xHH, found '\x4"')"},
    // Chains
    {"16 { 1 = [ ] }", 1, 12, "expected a node kind, found ']'"},
    {"16 { 1 = [ 16 *16 *16 ] }", 1, 19, "expected only one starred node in a chain, found '*'"},
    {"16 { 1 = [ 16 , 16 ] }", 1, 15, "expected a node kind, found ','"},
    {"16 { 1 = [ 16", 1, 14, "expected a node kind, found the end of the text"},
    {"16 { 1 = [ @5 ] }", 1, 12, "expected a node kind, found '@'"},
    // Top level
    {"file x", 1, 6, "expected a file name in double quotes, found 'x'"},
    {"tail 0", 1, 6, "expected two hexadecimal digits or the end of the text, found '0'"},
    {"tail 00 0g", 1, 9, "expected two hexadecimal digits or the end of the text, found '0g'"},
    {"tail 00\nCFG_ROOT", 2, 1,
     "expected two hexadecimal digits or the end of the text, found 'CFG_ROOT'"},
    {"tail 00 }", 1, 9, "expected two hexadecimal digits or the end of the text, found '}'"},
};

TEST(TextParseMistakes, AreShownWhereTheyStand) {
  for (const Mistake& mistake : kMistakes) {
    RawFile file;
    TextError error;
    EXPECT_FALSE(ParseText(mistake.text, &file, nullptr, &error)) << mistake.text;
    EXPECT_EQ(error.line, mistake.line) << mistake.text;
    EXPECT_EQ(error.column, mistake.column) << mistake.text;
    EXPECT_EQ(error.message, mistake.message) << mistake.text;
  }
}

TextError ErrorOf(std::string_view text) {
  RawFile file;
  TextError error;
  EXPECT_FALSE(ParseText(text, &file, nullptr, &error));
  return error;
}

TEST(TextParseMistakes, TooLongAString) {
  const TextError error = ErrorOf("16 { 1 = \"" + std::string(65536, 'x') + "\" }");
  EXPECT_EQ(error.column, 10);
  EXPECT_EQ(error.message, "expected a string of at most 65535 bytes, found 65536");
}

// What counts is the bytes, not the characters they are written with.
TEST(TextParseMistakes, NotAStringThatOnlyLooksTooLong) {
  std::string text = "16 { 1 = \"";
  for (int i = 0; i < 65535; ++i) text += "\\x00";
  const Read read(text + "\" }");
  EXPECT_EQ(RawText(read.file.attributes[0]), std::string(65535, '\0'));
}

TEST(TextParseMistakes, TooDeepANest) {
  std::string text;
  for (int depth = 1; depth <= 1000; ++depth) text += "16 { 1 = [\n";
  const TextError error = ErrorOf(text + "CFG_ROOT");
  EXPECT_EQ(error.line, 1001);
  EXPECT_EQ(error.column, 1);
  EXPECT_EQ(error.message, "expected nodes nested at most 1000 deep, found 'CFG_ROOT'");
}

TEST(TextParseMistakes, LongTokensAreCutInMessages) {
  EXPECT_EQ(ErrorOf(std::string(50, 'a')).message,
            "expected a node kind, found '" + std::string(40, 'a') + "...'");
}

TEST(TextParseMistakes, AreDescribedWithTheirLineAndACaret) {
  const std::string text = "CFG_ROOT {\n\tELEMENT = [ CFG_FOO ]\n}\n";
  EXPECT_EQ(DescribeError("dir/a.txt", text, ErrorOf(text)),
            "dir/a.txt:2:14: error: expected a node kind, found 'CFG_FOO'\n"
            "  \tELEMENT = [ CFG_FOO ]\n"
            "  \t            ^\n");
}

TEST(TextParseMistakes, AreDescribedAtTheEndOfTheText) {
  const std::string text = "a:";
  EXPECT_EQ(DescribeError("a", text, ErrorOf(text)),
            "a:1:3: error: expected a node kind, found the end of the text\n"
            "  a:\n"
            "    ^\n");
}

TEST(TextParseMistakes, AreDescribedWithAPieceOfALongLine) {
  const std::string text = std::string(500, ' ') + "CFG_FOO" + std::string(500, ' ');
  EXPECT_EQ(DescribeError("a", text, ErrorOf(text)),
            "a:1:501: error: expected a node kind, found 'CFG_FOO'\n  " + std::string(60, ' ') +
                "CFG_FOO" + std::string(53, ' ') + "\n  " + std::string(60, ' ') + "^\n");
}

}  // namespace
