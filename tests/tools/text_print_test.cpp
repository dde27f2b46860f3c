#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "tests/support/sanitizers.h"
#include "tests/tools/bytes.h"
#include "tools/raw_file.h"
#include "tools/text_form.h"

namespace {

// What a file is printed as. The file is given as text too, but one node at a time with all its
// links, so that nothing is nested that the printer did not nest.
std::string Printed(std::string_view text, const TextStyle& style = {}) {
  RawFile file;
  TextError error;
  if (!ParseText(text, &file, nullptr, &error)) ADD_FAILURE() << DescribeError("", text, error);
  return TextOf(file, style);
}

std::string PrintedBytes(const std::string& bytes) { return TextOf(ParseRaw(bytes)); }

// How the one attribute of a node is printed.
std::string Value(std::uint32_t kind, std::uint32_t id, std::uint32_t type, std::uint64_t bits,
                  int size) {
  const std::string text =
      PrintedBytes(Bytes().Head(1, kind, 1).Words(id, type).Number(bits, size).Foot().Get());
  const std::size_t start = text.find(" = ") + 3;
  return text.substr(start, text.rfind(" }") - start);
}

std::string Double(std::uint64_t bits) { return Value(16, 1, 4, bits, 8); }

TextStyle Flat() {
  TextStyle style;
  style.flat = true;
  return style;
}

// --- One node ------------------------------------------------------------------------------------

TEST(TextPrint, NoNodesAreNoText) { EXPECT_EQ(PrintedBytes(""), ""); }

TEST(TextPrint, WhatIsZeroIsLeftOut) {
  EXPECT_EQ(PrintedBytes(Bytes().Head(7, 289).Foot().Get()), "7: CFG_BREAK\n");
}

TEST(TextPrint, EveryField) {
  EXPECT_EQ(PrintedBytes(Bytes()
                             .Words(7, 16, 1, 2, 3, 2)
                             .Words(2, 2, 5)
                             .Words(3, 5)
                             .String("x")
                             .Foot("a.c", 4, -5)
                             .Get()),
            "file \"a.c\"\n"
            "7: CFG_ROOT at 4:-5 prev @1 jump @3 next @2 { LANG = 5 ENVIRON = \"x\" }\n");
}

TEST(TextPrint, KindsAndAttributesWithoutANameAreNumbers) {
  EXPECT_EQ(PrintedBytes(Bytes().Head(1, 52, 1).Words(3, 2, 5).Foot().Get()), "1: 52 { 3 = 5 }\n");
  EXPECT_EQ(PrintedBytes(Bytes().Head(1, 16, 1).Words(5, 2, 5).Foot().Get()),
            "1: CFG_ROOT { 5 = 5 }\n");
  EXPECT_EQ(PrintedBytes(Bytes().Head(1, 0xffffffff).Foot().Get()), "1: 4294967295\n");
}

TEST(TextPrint, ANegativeCount) {
  EXPECT_EQ(PrintedBytes(Bytes().Head(1, 16, -1).Foot().Get()), "1: CFG_ROOT count -1\n");
}

TEST(TextPrint, Values) {
  EXPECT_EQ(Value(16, 1, 1, 'a', 1), "'a'");
  EXPECT_EQ(Value(16, 1, 1, '\'', 1), R"('\'')");
  EXPECT_EQ(Value(16, 1, 1, '"', 1), R"('"')");
  EXPECT_EQ(Value(16, 1, 1, 0, 1), R"('\x00')");
  EXPECT_EQ(Value(16, 1, 2, 5, 4), "5");
  EXPECT_EQ(Value(16, 1, 2, 0x80000000, 4), "-2147483648");
  EXPECT_EQ(Value(16, 1, 3, 5, 8), "5LL");
  EXPECT_EQ(Value(16, 1, 3, 0x8000000000000000, 8), "-9223372036854775808LL");
  EXPECT_EQ(Value(16, 1, 6, 0, 4), "@0");
  EXPECT_EQ(Value(16, 1, 6, 99, 4), "@99");
  EXPECT_EQ(Value(16, 1, 0, 0, 0), "type 0");
  EXPECT_EQ(Value(16, 1, 9, 0, 0), "type 9");
}

TEST(TextPrint, EnumeratorsOnlyWhereTheAttributeHasThem) {
  EXPECT_EQ(Value(305, 1, 2, 12, 4), "CALC_Div");
  EXPECT_EQ(Value(47, 18, 2, 10, 4), "DECL_VALTYPE_STRUCT");
  EXPECT_EQ(Value(305, 1, 2, 50, 4), "50");
  EXPECT_EQ(Value(305, 12, 2, 12, 4), "12");
  EXPECT_EQ(Value(305, 1, 3, 12, 8), "12LL");
}

TEST(TextPrint, DoublesAreAsShortAsTheyReadBack) {
  EXPECT_EQ(Double(0x3ff0000000000000), "1.0");
  EXPECT_EQ(Double(0xbff8000000000000), "-1.5");
  EXPECT_EQ(Double(0x3fb999999999999a), "0.1");
  EXPECT_EQ(Double(0x8000000000000000), "-0.0");
  EXPECT_EQ(Double(0x7e37e43c8800759c), "1e+300");
  EXPECT_EQ(Double(1), "5e-324");
}

TEST(TextPrint, InfinitiesAndNansAreTheirBits) {
  EXPECT_EQ(Double(0x7ff0000000000000), "double:0x7ff0000000000000");
  EXPECT_EQ(Double(0x7ff0000000000001), "double:0x7ff0000000000001");
  EXPECT_EQ(Double(0xfff8000000000000), "double:0xfff8000000000000");
}

TEST(TextPrint, StringsAreEscaped) {
  const std::string_view string("a\"'\\\n\t\r\0\x7f\xff", 10);
  EXPECT_EQ(PrintedBytes(Bytes().Head(1, 17, 1).Words(2, 5).String(string).Foot().Get()),
            R"(1: CFG_FILEINFO { NAME = "a\"'\\\n\t\x0d\x00\x7f\xff" })"
            "\n");
}

// --- Nesting -------------------------------------------------------------------------------------

TEST(TextPrint, AnOwnedNodeStandsInPlace) {
  EXPECT_EQ(Printed("1: CFG_ROOT { ELEMENT = @2 } 2: CFG_BREAK prev @1"),
            "1: CFG_ROOT { ELEMENT = 2: CFG_BREAK }\n");
}

TEST(TextPrint, AChainStandsInBrackets) {
  EXPECT_EQ(
      Printed("1: CFG_ROOT { ELEMENT = @2 } 2: CFG_BREAK prev @1 next @3 3: CFG_BREAK prev @2"),
      "1: CFG_ROOT { ELEMENT = [ 2: CFG_BREAK  3: CFG_BREAK ] }\n");
}

TEST(TextPrint, AnEdgeBringsItsTargetAlong) {
  EXPECT_EQ(Printed("1: DFG_MANAGE_OPERATION { OPE = @3 } "
                    "2: DFG_OUTPUT_VAR next @3  3: DFG_EDGE_BLOCKING prev @2 next @4 "
                    "4: DFG_INPUT_VAR prev @3"),
            "1: DFG_MANAGE_OPERATION {\n"
            "  OPE = [ 2: DFG_OUTPUT_VAR  *3: DFG_EDGE_BLOCKING  4: DFG_INPUT_VAR ]\n"
            "}\n");
}

TEST(TextPrint, AFirstNodeWithoutAWayBackIsStarred) {
  EXPECT_EQ(Printed("1: DFG_INPUT_VAR { STRSON = @2 } 2: DFG_INPUT_VAR { STRPARENT = @1 }"),
            "1: DFG_INPUT_VAR { STRSON = *2: DFG_INPUT_VAR { STRPARENT = @1 } }\n");
}

TEST(TextPrint, LinksThatNestingDoesNotSayArePrinted) {
  EXPECT_EQ(Printed("1: CFG_ROOT { ELEMENT = @2 } 2: CFG_BREAK prev @9 next @8"),
            "1: CFG_ROOT { ELEMENT = 2: CFG_BREAK prev @9 next @8 }\n");
  EXPECT_EQ(Printed("1: CFG_ROOT { ELEMENT = @3 } "
                    "2: CFG_BREAK prev @1 next @3 3: CFG_BREAK prev @2"),
            "1: CFG_ROOT { ELEMENT = [ 2: CFG_BREAK prev @1  *3: CFG_BREAK ] }\n");
}

TEST(TextPrint, NotUnderAReferenceThatOnlyPoints) {
  EXPECT_EQ(Printed("1: DFG_INPUT_VAR { DECL = @2 } 2: CFG_DECLARE"),
            "1: DFG_INPUT_VAR { DECL = @2 }\n2: CFG_DECLARE\n");
}

TEST(TextPrint, UnderAReferenceThatOnlyPointsWhenTheNodePointsBack) {
  EXPECT_EQ(Printed("1: CFG_MEMBER { SIGNAL = @2 } 2: DFG_EDGE_PRESEDE prev @1"),
            "1: CFG_MEMBER { SIGNAL = 2: DFG_EDGE_PRESEDE }\n");
}

TEST(TextPrint, OnlyTheFirstOfSeveralOwnersHasTheNodeInPlace) {
  EXPECT_EQ(Printed("1: DFG_OPERATION { LEFT = @2 RIGHT = @2 } 2: DFG_INPUT_VAR prev @1"),
            "1: DFG_OPERATION { LEFT = 2: DFG_INPUT_VAR RIGHT = @2 }\n");
}

TEST(TextPrint, ANodeInFrontOfItsOwnerInTheFileIsNestedAndTheTextSorted) {
  EXPECT_EQ(Printed("1: CFG_BREAK prev @2  2: CFG_ROOT { ELEMENT = @1 }"),
            "sorted\n2: CFG_ROOT { ELEMENT = 1: CFG_BREAK }\n");
}

TEST(TextPrint, ANextLinkOutOfAChainTakesWhatItLeadsTo) {
  EXPECT_EQ(Printed("1: DFG_MANAGE_OPERATION { OPE = @3 } "
                    "2: DFG_OUTPUT_VAR next @3  3: DFG_EDGE_BLOCKING prev @2 next @5 "
                    "4: DFG_OUTPUT_VAR next @5  5: DFG_EDGE_BLOCKING prev @4"),
            "1: DFG_MANAGE_OPERATION {\n"
            "  OPE = [\n"
            "    2: DFG_OUTPUT_VAR\n"
            "    *3: DFG_EDGE_BLOCKING next [ 4: DFG_OUTPUT_VAR  *5: DFG_EDGE_BLOCKING ]\n"
            "  ]\n"
            "}\n");
}

TEST(TextPrint, NotANextLinkToWhatAnAttributeOwns) {
  EXPECT_EQ(Printed("1: CFG_BREAK next @3  2: CFG_ROOT { ELEMENT = @3 }  3: CFG_ENUM prev @2"),
            "1: CFG_BREAK next @3\n2: CFG_ROOT { ELEMENT = 3: CFG_ENUM }\n");
}

// What stands behind the brackets belongs to the node with the next link.
TEST(TextPrint, ASingleNodeBehindANextLinkHasBrackets) {
  EXPECT_EQ(Printed("1: CFG_ROOT next @2 { LANG = 5 } 2: CFG_BREAK"),
            "1: CFG_ROOT next [ *2: CFG_BREAK ] { LANG = 5 }\n");
}

TEST(TextPrint, AnOwnerlessChainStandsAtTopLevel) {
  EXPECT_EQ(Printed("1: CFG_BREAK next @2  2: CFG_BREAK prev @1  3: CFG_BREAK jump @1"),
            "[ 1: CFG_BREAK  2: CFG_BREAK ]\n3: CFG_BREAK jump @1\n");
}

TEST(TextPrint, ARingIsCutAtItsLowestNode) {
  EXPECT_EQ(Printed("1: CFG_BREAK prev @3 next @2  2: CFG_BREAK prev @1 next @3 "
                    "3: CFG_BREAK prev @2 next @1"),
            "[ 1: CFG_BREAK prev @3  2: CFG_BREAK  3: CFG_BREAK next @1 ]\n");
}

TEST(TextPrint, ANodeMayLinkToItself) {
  EXPECT_EQ(Printed("1: CFG_ROOT prev @1 next @1 jump @1 { ELEMENT = @1 }"),
            "1: CFG_ROOT prev @1 jump @1 next @1 { ELEMENT = @1 }\n");
}

TEST(TextPrint, ACircleOfOwnersIsEnteredAtItsLowestNode) {
  EXPECT_EQ(Printed("1: CFG_ROOT prev @2 { ELEMENT = @2 }  2: CFG_ROOT prev @1 { ELEMENT = @1 }"),
            "1: CFG_ROOT prev @2 { ELEMENT = 2: CFG_ROOT { ELEMENT = @1 } }\n");
}

TEST(TextPrint, ReferencesToNoNodeArePrintedAsTheyAre) {
  EXPECT_EQ(Printed("1: CFG_ROOT next @6 { ELEMENT = @5 LANG = @0 }"),
            "1: CFG_ROOT next @6 { ELEMENT = @5 LANG = @0 }\n");
}

TEST(TextPrint, IdsWithGapsAreFound) {
  EXPECT_EQ(Printed("5: CFG_ROOT { ELEMENT = @4000000000 LANG = @3000000000 } "
                    "70: CFG_BREAK  4000000000: CFG_BREAK prev @5"),
            "sorted\n"
            "5: CFG_ROOT { ELEMENT = 4000000000: CFG_BREAK LANG = @3000000000 }\n"
            "70: CFG_BREAK\n");
}

TEST(TextPrint, IdZeroIsANodeThatNothingRefersTo) {
  EXPECT_EQ(Printed("0: CFG_ROOT next @1 { ELEMENT = @1 LANG = @0 }  1: CFG_BREAK"),
            "0: CFG_ROOT next @1 { ELEMENT = 1: CFG_BREAK LANG = @0 }\n");
}

// --- Files and positions -------------------------------------------------------------------------

TEST(TextPrint, FileNamesArePrintedWhereTheyChange) {
  EXPECT_EQ(Printed("1: CFG_BREAK at 1:1 "
                    "2: CFG_ROOT at \"a\":1:1 { ELEMENT = @3 } "
                    "3: CFG_BREAK at \"b\":0:0 prev @2 next @4  4: CFG_BREAK at 1:0 prev @3 "
                    "5: CFG_BREAK "
                    "6: CFG_BREAK at \"\":0:2"),
            "1: CFG_BREAK at 1:1\n"
            "file \"a\"\n"
            "2: CFG_ROOT at 1:1 { ELEMENT = [ 3: CFG_BREAK at \"b\":0:0  4: CFG_BREAK at 1:0 ] }\n"
            "5: CFG_BREAK\n"
            "file \"\"\n"
            "6: CFG_BREAK at 0:2\n");
}

// A try on one line that fails must not have said the file's name already.
TEST(TextPrint, AFileNameIsPrintedOnceAlsoWhereTheLineBreaks) {
  const std::string name(60, 'n');
  EXPECT_EQ(
      Printed("1: CFG_ROOT { ELEMENT = @2 } 2: CFG_FILEINFO at \"a.c\":1:1 prev @1 { NAME = \"" +
              name + "\" }"),
      "1: CFG_ROOT {\n"
      "  ELEMENT = 2: CFG_FILEINFO at \"a.c\":1:1 {\n"
      "    NAME = \"" +
          name +
          "\"\n"
          "  }\n"
          "}\n");
}

// --- Lines ---------------------------------------------------------------------------------------

TEST(TextPrint, ALineHoldsNinetyColumns) {
  const std::string head = "1: CFG_FILEINFO { NAME = \"";
  const std::string fits(90 - head.size() - 3, 'x');
  EXPECT_EQ(Printed(head + fits + "\" }"), head + fits + "\" }\n");
  EXPECT_EQ(Printed(head + fits + "x\" }"), "1: CFG_FILEINFO {\n  NAME = \"" + fits + "x\"\n}\n");
}

TEST(TextPrint, IndentationDoesNotCount) {
  const std::string name(60, 'x');
  const std::string inner = "3: CFG_FILEINFO { NAME = \"" + name + "\" }";
  EXPECT_EQ(Printed("1: CFG_ROOT { ELEMENT = @2 } 2: CFG_BREAK prev @1 next @3 "
                    "3: CFG_FILEINFO prev @2 { NAME = \"" +
                    name + "\" }"),
            "1: CFG_ROOT {\n  ELEMENT = [\n    2: CFG_BREAK\n    " + inner + "\n  ]\n}\n");
}

TEST(TextPrint, TheTailStandsLast) {
  EXPECT_EQ(PrintedBytes(Bytes().Head(1, 289).Foot().Get() + std::string("\0\x1f\xff", 3)),
            "1: CFG_BREAK\ntail 00 1f ff\n");
  EXPECT_EQ(PrintedBytes(std::string(31, '\x01')),
            "tail 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 01 "
            "01 01 01\n"
            "     01\n");
}

// --- Flat ----------------------------------------------------------------------------------------

TEST(TextPrint, FlatIsOneNodeALineInFileOrder) {
  EXPECT_EQ(Printed("file \"a\" 1: CFG_BREAK prev @2  2: CFG_ROOT { ELEMENT = @1 } "
                    "3: CFG_ROOT at \"b\":1:1",
                    Flat()),
            "file \"a\"\n"
            "1: CFG_BREAK prev @2\n"
            "2: CFG_ROOT { ELEMENT = @1 }\n"
            "file \"b\"\n"
            "3: CFG_ROOT at 1:1\n");
}

TEST(TextPrint, FlatLinesMayBeLong) {
  const std::string node = "1: CFG_FILEINFO { NAME = \"" + std::string(200, 'x') + "\" }\n";
  EXPECT_EQ(Printed(node, Flat()), node);
}

TEST(TextPrint, IdsThatDoNotAscendMakeTheTextFlat) {
  EXPECT_EQ(Printed("2: CFG_ROOT { ELEMENT = @1 }  1: CFG_BREAK prev @2"),
            "2: CFG_ROOT { ELEMENT = @1 }\n1: CFG_BREAK prev @2\n");
  EXPECT_EQ(Printed("1: CFG_ROOT { ELEMENT = @2 }  2: CFG_BREAK prev @1  2: CFG_BREAK"),
            "1: CFG_ROOT { ELEMENT = @2 }\n2: CFG_BREAK prev @1\n2: CFG_BREAK\n");
}

// --- Names ---------------------------------------------------------------------------------------

TEST(TextPrint, NamesStandForTheIdsTheyAreGivenTo) {
  const std::unordered_map<std::uint32_t, std::string> names = {{1, "root"}, {3, "x"}, {9, "gone"}};
  TextStyle style;
  style.names = &names;
  const char* const text =
      "1: CFG_ROOT jump @3 { ELEMENT = @2 LANG = @9 }  2: CFG_BREAK prev @1 next @3 "
      "3: CFG_BREAK prev @2";
  EXPECT_EQ(Printed(text, style),
            "root: CFG_ROOT jump @x { ELEMENT = [ 2: CFG_BREAK  x: CFG_BREAK ] LANG = @gone }\n");
  style.flat = true;
  EXPECT_EQ(Printed(text, style),
            "root: CFG_ROOT jump @x { ELEMENT = @2 LANG = @gone }\n"
            "2: CFG_BREAK prev @root next @x\n"
            "x: CFG_BREAK prev @2\n");
}

// --- Depth ---------------------------------------------------------------------------------------

// Operations nested `depth` deep: 1 owns 2, 2 owns 3, and so on.
std::string NestedOperations(std::uint32_t depth) {
  Bytes bytes;
  for (std::uint32_t id = 1; id < depth; ++id) {
    bytes.Words(id, 305, id - 1, 0, 0, 1).Words(2, 6, id + 1).Foot();
  }
  return bytes.Words(depth, 305, depth - 1, 0, 0, 0).Foot().Get();
}

TEST(TextPrint, NestingGoesOnAtTopLevelBehind32Levels) {
  const std::string text = PrintedBytes(NestedOperations(33));
  EXPECT_NE(text.find("32: DFG_OPERATION { LEFT = @33 }"), std::string::npos);
  EXPECT_NE(text.find("\n33: DFG_OPERATION prev @32\n"), std::string::npos);
  const std::string shallower = PrintedBytes(NestedOperations(32));
  EXPECT_NE(shallower.find("31: DFG_OPERATION { LEFT = 32: DFG_OPERATION }"), std::string::npos);
}

// Neither the stack nor the size of the text follows the depth. A tenth is deep enough for a
// sanitizer, under which a million take more than a minute.
TEST(TextPrint, AMillionNestedOperationsAreNoTrouble) {
  const int levels = support::kAddressSanitizer ? 100000 : 1000000;
  const std::string bytes = NestedOperations(levels);
  const std::string text = PrintedBytes(bytes);
  EXPECT_LT(text.size(), 12 * PrintedBytes(NestedOperations(levels / 10)).size());
  RawFile file;
  TextError error;
  ASSERT_TRUE(ParseText(text, &file, nullptr, &error));
  EXPECT_TRUE(RawBytes(file) == bytes);
}

}  // namespace
