// A whole run of the program: what it reads, what it writes and how it ends.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include "cdfg/file.h"
#include "tests/driver/kelvo_run.h"
#include "tests/driver/module_design.h"
#include "tests/support/stack.h"

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
  // What a run over the module design with these options in front writes.
  std::string RunModuleDesign(std::vector<std::string> options) const {
    const std::string design = dir.Path("module.cdfg");
    WriteModuleDesign(design);
    options.insert(options.end(), {design, info, output});
    const auto result = Run(options);
    EXPECT_EQ(result.status, 0);
    return ReadFile(output);
  }
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
  EXPECT_EQ(RunModuleDesign({}), RunModuleDesign({}));
}

TEST_F(Elaborate, GivesTheSameOutputWithOptionsThatOnlyPrint) {
  EXPECT_EQ(RunModuleDesign({"-debug", "-title", "-module"}), RunModuleDesign({}));
}

TEST_F(Elaborate, NamesTemporariesItself) {
  const std::string plain = RunModuleDesign({});
  EXPECT_NE(plain.find("__fpfix_tmp_000000"), std::string::npos);
  EXPECT_NE(plain.find("__fpfix_cast_000000"), std::string::npos);
  EXPECT_EQ(plain.find("__fpfix_cast_000001"), std::string::npos);
}

TEST_F(Elaborate, NamesTemporariesByTheirPrefix) {
  const std::string prefixed = RunModuleDesign({"-p_tvar", "mine_"});
  EXPECT_NE(prefixed.find("mine_0"), std::string::npos);
  EXPECT_NE(prefixed.find("mine_1"), std::string::npos);
  EXPECT_EQ(prefixed.find("__fpfix_tmp_"), std::string::npos);
  EXPECT_NE(prefixed.find("__fpfix_cast_000000"), std::string::npos);
}

TEST_F(Elaborate, GivesTheSameOutputWhateverTheCastPrefix) {
  EXPECT_EQ(RunModuleDesign({"-p_cvar", "other_"}), RunModuleDesign({}));
  EXPECT_EQ(RunModuleDesign({"-p_cvar", "other_", "-p_tvar", "mine_"}),
            RunModuleDesign({"-p_tvar", "mine_"}));
}

// --- Deep inputs ---------------------------------------------------------------------------------

// Limits the stack of the programs run to the usual size, for the length of a scope.
class UsualStack {
 public:
  UsualStack() {
    getrlimit(RLIMIT_STACK, &before_);
    rlimit limit = before_;
    limit.rlim_cur = support::kDefaultStack;
    EXPECT_EQ(setrlimit(RLIMIT_STACK, &limit), 0);
  }
  ~UsualStack() { setrlimit(RLIMIT_STACK, &before_); }
  UsualStack(const UsualStack&) = delete;
  UsualStack& operator=(const UsualStack&) = delete;

 private:
  rlimit before_{};
};

TEST_F(Elaborate, OfDeeplyNestedOperationsNeedsNoDeepStack) {
  const std::string design = dir.Path("deep.cdfg");
  WriteDeepDesign(design, 100000);
  const UsualStack stack;
  const auto result = Run({design, info, output});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  // All operations but the outermost one are taken out into temporaries.
  const std::string bytes = ReadFile(output);
  EXPECT_NE(bytes.find("__fpfix_tmp_099998"), std::string::npos);
  EXPECT_EQ(bytes.find("__fpfix_tmp_099999"), std::string::npos);
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
