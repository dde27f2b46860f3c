// A whole run of the program: what it reads, what it writes and how it ends.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "cdfg/file.h"
#include "tests/driver/kelvo_run.h"
#include "tests/driver/module_design.h"

namespace {

using support::Head;
using support::IntAttribute;
using support::NodeAttribute;
using support::PlainNode;
using support::ReadFile;
using support::StringAttribute;
using support::Tail;

class Elaborate : public KelvoRun {
 protected:
  // Runs over a file of these bytes.
  support::ProcessResult RunBytes(const std::string& bytes) const {
    return Run({dir.File("bytes.cdfg", bytes), info, output});
  }
};

// --- Input ---------------------------------------------------------------------------------------

TEST_F(Elaborate, OfAMissingInputSaysSo) {
  const std::string missing = dir.Path("missing.cdfg");
  const auto result = Run({missing, info, output});
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(result.output, "kelvo : Error : Cat't open '" + missing + "'\n");
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(Elaborate, OfAMissingInputSaysSoBehindTheProgressLine) {
  const std::string missing = dir.Path("missing.cdfg");
  const auto result = Run({"-debug", missing, info, output});
  EXPECT_EQ(result.status, 255);
  const std::string end = "\n\n--- Reading of '" + missing +
                          "' file ...\nkelvo : Error : Cat't open '" + missing + "'\n";
  ASSERT_GT(result.output.size(), end.size());
  EXPECT_EQ(result.output.substr(result.output.size() - end.size()), end);
}

TEST_F(Elaborate, OfAMissingInputLeavesTheOutputAlone) {
  const std::string kept = dir.File("kept.cdfg", "kept");
  EXPECT_EQ(Run({dir.Path("missing.cdfg"), info, kept}).status, 255);
  EXPECT_EQ(ReadFile(kept), "kept");
}

TEST_F(Elaborate, OfAnEmptyInputGivesAnEmptyOutput) {
  const auto result = RunBytes("");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(ReadFile(output), "");
}

TEST_F(Elaborate, OfADirectoryGivesAnEmptyOutput) {
  const auto result = Run({dir.Path(""), info, output});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(ReadFile(output), "");
}

TEST_F(Elaborate, OfAFifoTakesWhatComesThroughIt) {
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  std::thread writer([&] { std::ofstream(fifo, std::ios::binary) << SmallDesign(); });
  EXPECT_EQ(Run({fifo, info, output}).status, 0);
  writer.join();
  EXPECT_EQ(ReadFile(output), SmallDesign());
}

TEST_F(Elaborate, OfACutInputGoesOnWithWhatIsThere) {
  const std::string whole = SmallDesign();
  for (std::size_t size = 0; size <= whole.size(); size += 3) {
    const auto result = RunBytes(whole.substr(0, size));
    EXPECT_EQ(result.status, 0) << size;
    EXPECT_EQ(result.output, "") << size;
  }
}

TEST_F(Elaborate, OfAnInputCutInAValueKeepsTheAttributesInFront) {
  const std::string node = Head(1, CFG_COMMENT, {}, 2) + IntAttribute(1, 5);
  EXPECT_EQ(RunBytes(node + IntAttribute(2, 6).substr(0, 10)).status, 0);
  EXPECT_EQ(ReadFile(output), Head(1, CFG_COMMENT, {}, 1) + IntAttribute(1, 5) + Tail());
}

TEST_F(Elaborate, OfAnInputWithoutARootKeepsIt) {
  const std::string file = PlainNode(7, CFG_COMMENT) + PlainNode(0, 999) + PlainNode(7, CFG_BREAK);
  EXPECT_EQ(RunBytes(file).status, 0);
  EXPECT_EQ(ReadFile(output), file);
}

TEST_F(Elaborate, OfAnInputWithoutModulesKeepsIt) {
  EXPECT_EQ(RunDesign().status, 0);
  EXPECT_EQ(ReadFile(output), SmallDesign());
}

// --- The info file -------------------------------------------------------------------------------

TEST_F(Elaborate, NeverOpensTheInfoFile) {
  // Whoever opens this one to read waits for ever.
  const std::string fifo = dir.Path("fifo");
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  EXPECT_EQ(Run({input, fifo, output}).status, 0);
}

TEST_F(Elaborate, NeedsNoInfoFile) {
  const auto result = Run({input, dir.Path("missing/info"), output});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

// --- Output --------------------------------------------------------------------------------------

TEST_F(Elaborate, EndsWellWhenTheOutputCannotBeMade) {
  for (const std::string& path : {dir.Path("missing/out.cdfg"), dir.Path(""), std::string()}) {
    const auto result = Run({input, info, path});
    EXPECT_EQ(result.status, 0) << path;
    EXPECT_EQ(result.output, "") << path;
  }
}

TEST_F(Elaborate, ReplacesAnOldOutput) {
  const std::string old = dir.File("old.cdfg", std::string(10000, 'o'));
  EXPECT_EQ(Run({input, info, old}).status, 0);
  EXPECT_EQ(ReadFile(old), SmallDesign());
}

TEST_F(Elaborate, MayWriteWhereItReads) {
  EXPECT_EQ(Run({input, info, input}).status, 0);
  EXPECT_EQ(ReadFile(input), SmallDesign());
}

TEST_F(Elaborate, GivesTheSameOutputAgainAndAgain) {
  const std::string design = dir.Path("module.cdfg");
  WriteModuleDesign(design);
  EXPECT_EQ(Run({design, info, output}).status, 0);
  const std::string first = ReadFile(output);
  EXPECT_EQ(Run({design, info, output}).status, 0);
  EXPECT_EQ(ReadFile(output), first);
}

TEST_F(Elaborate, GivesTheSameOutputWithOptionsThatOnlyPrint) {
  const std::string design = dir.Path("module.cdfg");
  WriteModuleDesign(design);
  EXPECT_EQ(Run({design, info, output}).status, 0);
  const std::string plain = ReadFile(output);
  EXPECT_EQ(Run({"-debug", "-title", "-module", design, info, output}).status, 0);
  EXPECT_EQ(ReadFile(output), plain);
}

TEST_F(Elaborate, GivesTheSameOutputWhateverTheCastPrefix) {
  const std::string design = dir.Path("module.cdfg");
  WriteModuleDesign(design);
  EXPECT_EQ(Run({design, info, output}).status, 0);
  const std::string plain = ReadFile(output);
  const auto result = Run({"-p_cvar", "other_", design, info, output});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(ReadFile(output), plain);
}

// --- Endless inputs ------------------------------------------------------------------------------

// A root whose one file stands behind itself.
std::string EndlessDesign() {
  return Head(1, CFG_ROOT, {}, 1) + NodeAttribute(CfgRoot_ELEMENT, 2) + Tail() +
         Head(2, CFG_FILEINFO, {.prev = 1, .next = 2}, 1) +
         StringAttribute(CfgFileinfo_NAME, "a.c") + Tail();
}

TEST_F(Elaborate, OfAnEndlessInputStopsNamingANodeOfTheCircle) {
  const auto result = RunBytes(EndlessDesign());
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(result.output, "kelvo : Error : Endless graph : node 2\n");
}

TEST_F(Elaborate, OfAnEndlessInputMakesNoOutput) {
  RunBytes(EndlessDesign());
  EXPECT_FALSE(std::filesystem::exists(output));
}

TEST_F(Elaborate, OfAnEndlessInputLeavesTheOutputAlone) {
  const std::string kept = dir.File("kept.cdfg", "kept");
  const auto time = std::filesystem::last_write_time(kept);
  EXPECT_EQ(Run({dir.File("endless.cdfg", EndlessDesign()), info, kept}).status, 255);
  EXPECT_EQ(ReadFile(kept), "kept");
  EXPECT_EQ(std::filesystem::last_write_time(kept), time);
}

TEST_F(Elaborate, OfACircleThatNobodyWalksKeepsIt) {
  const std::string file =
      SmallDesign() + PlainNode(3, CFG_BREAK, {.prev = 3, .next = 3, .jump = 3});
  const auto result = RunBytes(file);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(ReadFile(output), file);
}

}  // namespace
