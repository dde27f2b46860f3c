// Binary to text and back: the same bytes, whatever they are; and the text of those, the same text.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/bytes.h"
#include "tools/raw_file.h"
#include "tools/text_form.h"

namespace {

// Answers what went wrong, or nothing.
std::string TroubleOf(const std::string& bytes, bool flat) {
  TextStyle style;
  style.flat = flat;
  const RawFile file = ParseRaw(bytes);
  if (RawBytes(file) != bytes) return "the records are not the bytes";
  const std::string text = TextOf(file, style);
  RawFile back;
  TextError error;
  if (!ParseText(text, &back, nullptr, &error)) return DescribeError("text", text, error);
  if (RawBytes(back) != bytes) return "other bytes came back from\n" + text.substr(0, 10000);
  if (TextOf(back, style) != text) return "another text came back from\n" + text.substr(0, 10000);
  return "";
}

void ExpectRoundTrip(const std::string& bytes) {
  EXPECT_EQ(TroubleOf(bytes, false), "");
  EXPECT_EQ(TroubleOf(bytes, true), "");
}

// A small design with all that nests: chains, an edge behind its target, an assignment in an
// assignment, members, jumps, two files.
constexpr std::string_view kDesign = R"(
file "a.c"
CFG_ROOT {
  ELEMENT = [
    CFG_FILEINFO at "a.h":1:1 {
      ELEMENT = CFG_DECLARE_DEF at 1:2 { DECL = g: CFG_DECLARE { NAME = "g" INIT =
        CFG_MEMBER_LIST { MEMBER = [ CFG_MEMBER { SIGNAL = DFG_EDGE_PRESEDE }  CFG_MEMBER ] } } }
      NAME = "a.h"
    }
    CFG_FILEINFO at "a.c":1:1 {
      ELEMENT = f: CFG_FUNCTION at 3:5 {
        STARTCFG = [
          loop: CFG_LOOP_BEGIN at 4:3 jump @end { CFG = [
            CFG_LOOP_COND { CONDOPE = DFG_MANAGE_OPERATION {
              OPE = DFG_OPERATION { TYPE = CALC_Les LEFT = [ DFG_EDGE_PRESEDE DFG_INPUT_VAR { DECL = @g } ]
                                    RIGHT = DFG_FUNC_CALL jump @f { NAME = "f" } } } }
            CFG_LOOP_STAT { CFG = CFG_STATE_DATAPATH { OPELIST = [
              DFG_MANAGE_OPERATION { OPE = [ DFG_OUTPUT_VAR { STRSON = *DFG_OUTPUT_VAR }
                *DFG_EDGE_BLOCKING next [ DFG_OUTPUT_VAR *DFG_EDGE_BLOCKING DFG_INPUT_CONST ] ] }
              DFG_MANAGE_OPERATION { OPE = DFG_FUNC_CALL jump @f { ARGLIST = DFG_PORT_INFO } }
            ] } }
          ] }
          end: CFG_LOOP_END jump @loop
        ]
      }
    }
  ]
})";

RawFile Parsed(std::string_view text) {
  RawFile file;
  TextError error;
  if (!ParseText(text, &file, nullptr, &error)) ADD_FAILURE() << DescribeError("", text, error);
  return file;
}

std::string DesignBytes() { return RawBytes(Parsed(kDesign)); }

TEST(RoundTrip, ADesign) { ExpectRoundTrip(DesignBytes()); }

TEST(RoundTrip, Nothing) { ExpectRoundTrip(""); }

TEST(RoundTrip, TruncationAtEveryByte) {
  for (const std::string& whole : {SmallFile(), DesignBytes()}) {
    for (std::size_t size = 0; size <= whole.size(); ++size) ExpectRoundTrip(whole.substr(0, size));
  }
}

TEST(RoundTrip, UnknownKindsAttributesAndTypes) {
  ExpectRoundTrip(Bytes().Head(1, 999, 3).Words(0, 0, 77, 7, 0xffffffff, 0xffffffff).Foot().Get());
  ExpectRoundTrip(
      Bytes().Head(1, 0, 1).Words(1, 6, 2).Foot().Words(2, 999, 1, 0, 0, 0).Foot().Get());
}

TEST(RoundTrip, RepeatedAttributes) {
  ExpectRoundTrip(Bytes()
                      .Head(1, 16, 4)
                      .Words(1, 6, 2, 1, 6, 2, 1, 2, 2)
                      .Words(1, 5)
                      .String("")
                      .Foot()
                      .Words(2, 17, 1, 0, 0, 0)
                      .Foot()
                      .Get());
}

TEST(RoundTrip, OddIds) {
  for (const std::uint32_t first : {0u, 1u, 2u, 0xfffffffeu, 0xffffffffu}) {
    for (const std::uint32_t second : {0u, 1u, 2u, 0xfffffffeu, 0xffffffffu}) {
      ExpectRoundTrip(Bytes()
                          .Words(first, 305, second, second, first, 2)
                          .Words(2, 6, second, 3, 6, first)
                          .Foot()
                          .Words(second, 305, first, first, second, 2)
                          .Words(2, 6, first, 3, 6, second)
                          .Foot()
                          .Get());
    }
  }
}

TEST(RoundTrip, NegativeCounts) {
  ExpectRoundTrip(Bytes().Head(1, 16, -1).Foot().Head(2, 16, INT32_MIN).Foot("x", -1, -1).Get());
}

TEST(RoundTrip, EveryKindOfDouble) {
  for (const std::uint64_t bits :
       {0x0ull, 0x8000000000000000ull, 0x1ull, 0x000fffffffffffffull, 0x0010000000000000ull,
        0x3ff0000000000001ull, 0x7fefffffffffffffull, 0x7ff0000000000000ull, 0xfff0000000000000ull,
        0x7ff0000000000001ull, 0x7ff8000000000000ull, 0xffffffffffffffffull}) {
    ExpectRoundTrip(Bytes().Head(1, 16, 1).Words(1, 4).Number(bits, 8).Foot().Get());
  }
}

TEST(RoundTrip, EveryByteAsCharAndInStrings) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) {
    all += static_cast<char>(byte);
    ExpectRoundTrip(
        Bytes().Head(1, 16, 1).Words(1, 1).Number(static_cast<unsigned>(byte), 1).Foot().Get());
  }
  ExpectRoundTrip(Bytes().Head(1, 16, 1).Words(1, 5).String(all).Foot(all, 1, 1).Get());
}

// --- Random files --------------------------------------------------------------------------------

using Random = std::mt19937;

std::uint32_t Below(Random* random, std::size_t limit) {
  return static_cast<std::uint32_t>((*random)() % limit);
}

// Changes one thing about a node, mostly so that links and references cross and close circles.
void Distort(Random* random, RawFile* file) {
  RawNode& node = file->nodes[Below(random, file->nodes.size())];
  const std::uint32_t id = Below(random, file->nodes.size() + 3);
  switch (Below(random, 8)) {
    case 0:
      node.prev = id;
      break;
    case 1:
      node.next = id;
      break;
    case 2:
      node.prev = node.next = id;
      break;
    case 3:
      node.kind = Below(random, 400);
      break;
    case 4:
      if (Below(random, 6) == 0) node.id = id;
      break;
    case 5:
      node.file = Below(random, 2) == 0 ? "" : "b.c";
      break;
    default:
      if (node.count > 0) {
        RawAttribute& attribute = file->attributes[node.first_attribute];
        attribute = {attribute.id, 6, id, nullptr};
      }
  }
}

TEST(RoundTrip, DistortedDesigns) {
  Random random(1);
  for (int round = 0; round < 3000; ++round) {
    RawFile file = Parsed(kDesign);
    const std::uint32_t changes = 1 + Below(&random, 12);
    for (std::uint32_t i = 0; i < changes; ++i) Distort(&random, &file);
    ExpectRoundTrip(RawBytes(file));
    if (HasFailure()) return;
  }
}

TEST(RoundTrip, RandomBytes) {
  Random random(2);
  for (int round = 0; round < 3000; ++round) {
    std::string bytes = Below(&random, 2) == 0 ? SmallFile() : std::string(Below(&random, 200), 0);
    const std::uint32_t limit = Below(&random, 2) == 0 ? 256 : 4;
    for (std::uint32_t i = Below(&random, 40); i > 0 && !bytes.empty(); --i) {
      bytes[Below(&random, bytes.size())] = static_cast<char>(Below(&random, limit));
    }
    ExpectRoundTrip(bytes);
    if (HasFailure()) return;
  }
}

// Texts with slips of all kinds are refused or read, and what is read goes round.
TEST(RoundTrip, DistortedTexts) {
  constexpr std::string_view kPieces[] = {"{", "}",    "[",     "]",      "*",       "@",  "=",
                                          ":", "\"",   "'",     "\\",     "#",       "\n", "5",
                                          "x", "next", "at",    "type 9", "double:", "1e", "0x",
                                          "-", "tail", "count", "sorted", "@1",      "7:"};
  Random random(3);
  int read = 0;
  for (int round = 0; round < 6000; ++round) {
    std::string text = TextOf(Parsed(kDesign));
    const std::size_t place = Below(&random, text.size());
    const std::string_view piece = kPieces[Below(&random, std::size(kPieces))];
    text.replace(place, Below(&random, 4), piece);
    RawFile file;
    TextError error;
    if (ParseText(text, &file, nullptr, &error)) {
      ++read;
      ExpectRoundTrip(RawBytes(file));
    } else {
      EXPECT_LE(error.offset, text.size());
      EXPECT_EQ(error.message.rfind("expected ", 0), 0u) << error.message;
    }
    if (HasFailure()) return;
  }
  EXPECT_GT(read, 100);
}

// --- The reference -------------------------------------------------------------------------------

// Everything that docs/text-form.md shows as text of the form is just that.
TEST(RoundTrip, TheExamplesOfTheReference) {
  std::ifstream stream(std::string(CDFG_SOURCE_DIR) + "/docs/text-form.md");
  std::stringstream document;
  document << stream.rdbuf();
  const std::string text = document.str();
  constexpr std::string_view kOpen = "```cdfg\n";
  int examples = 0;
  for (std::size_t at = text.find(kOpen); at != text.npos; at = text.find(kOpen, at + 1)) {
    const std::size_t start = at + kOpen.size();
    const std::string example = text.substr(start, text.find("```", start) - start);
    const RawFile file = Parsed(example);
    EXPECT_FALSE(file.nodes.empty()) << example;
    if (examples == 0) {
      EXPECT_EQ(file.nodes.size(), 11u);
    }
    ExpectRoundTrip(RawBytes(file));
    ++examples;
  }
  EXPECT_EQ(examples, 9);
}

}  // namespace
