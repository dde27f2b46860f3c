// The command line of the program: usage, options and banner.
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "tests/driver/kelvo_run.h"

namespace {

const std::string kUsage = "usage : kelvo <In-cdfg> <In-inffile> <Out-cdfg> <flg>\n\n\n";

class Main : public KelvoRun {};

std::string Lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// Takes the banner off the front of a text and looks at it.
std::string WithoutBanner(const std::string& text, const std::string& program = "kelvo") {
  std::istringstream stream(text);
  std::string title;
  std::string date;
  std::string rights;
  std::string empty = "not there";
  std::getline(stream, title);
  std::getline(stream, date);
  std::getline(stream, rights);
  std::getline(stream, empty);
  EXPECT_EQ(title, program + " [C Elabration] command (Ver. 0.01.22) started...");

  const std::time_t now = std::time(nullptr);
  std::tm then{};
  const char* date_end = strptime(date.c_str(), "%a %b %d %H:%M:%S %Y", &then);
  EXPECT_TRUE(date_end != nullptr && *date_end == '\0') << date;
  then.tm_isdst = -1;
  EXPECT_LE(std::difftime(now, std::mktime(&then)), 60) << date;
  EXPECT_GE(std::difftime(now, std::mktime(&then)), -1) << date;
  char as_written[32];
  EXPECT_EQ(date + "\n", asctime_r(&then, as_written));

  const std::string years = "2004 - " + std::to_string(then.tm_year + 1900);
  EXPECT_NE(rights.find(years), std::string::npos) << rights;
  EXPECT_NE(rights.find("the kelvo authors"), std::string::npos) << rights;
  const std::string end = " All Right Reserved.";
  EXPECT_EQ(rights.substr(rights.size() - std::min(rights.size(), end.size())), end);
  EXPECT_EQ(empty, "");
  std::ostringstream rest;
  rest << stream.rdbuf();
  return rest.str();
}

// --- Usage ---------------------------------------------------------------------------------------

TEST_F(Main, WithoutArgumentsPrintsTheUsage) {
  const auto result = Run({});
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(result.output, kUsage);
}

TEST_F(Main, WithTooFewPathsPrintsTheUsage) {
  for (const auto& arguments :
       {std::vector<std::string>{input}, {input, info}, {"-module", input, info}}) {
    const auto result = Run(arguments);
    EXPECT_EQ(result.status, 255);
    EXPECT_EQ(result.output, kUsage);
  }
}

TEST_F(Main, WithTitleAlonePrintsBannerAndUsage) {
  const auto result = Run({"-title"});
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(WithoutBanner(result.output), kUsage);
}

TEST_F(Main, WithDebugAlonePrintsBannerAndUsage) {
  const auto result = Run({"-debug"});
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(WithoutBanner(result.output), kUsage);
}

TEST_F(Main, WithoutThePrefixOfAnOptionSaysSoAndPrintsTheUsage) {
  for (const std::string option : {"-p_tvar", "-p_cvar"}) {
    const auto result = Run({input, info, output, option});
    EXPECT_EQ(result.status, 255);
    EXPECT_EQ(result.output, "kelvo : Error Illegal option '" + option + " <prifix>'\n" + kUsage);
    EXPECT_FALSE(std::filesystem::exists(output));
  }
}

TEST_F(Main, WithoutThePrefixOfAnOptionPrintsTheBannerBehindThat) {
  for (const std::string flag : {"-title", "-debug"}) {
    const auto result = Run({flag, input, info, output, "-p_tvar"});
    EXPECT_EQ(result.status, 255);
    const std::string message = "kelvo : Error Illegal option '-p_tvar <prifix>'\n";
    ASSERT_EQ(result.output.substr(0, message.size()), message);
    EXPECT_EQ(WithoutBanner(result.output.substr(message.size())), kUsage);
  }
}

TEST_F(Main, DoesNotReadOrWriteOnAUsageError) {
  const std::string kept = dir.File("kept.cdfg", "kept");
  Run({input, info, kept, "-p_tvar"});
  EXPECT_EQ(support::ReadFile(kept), "kept");
}

// --- The program's name --------------------------------------------------------------------------

TEST_F(Main, CallsItselfByTheLastPartOfItsPath) {
  const std::string link = dir.Path("another name");
  std::filesystem::create_symlink(KELVO_BINARY, link);
  const auto result = support::RunProgram(link, {});
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(result.output, "usage : another name <In-cdfg> <In-inffile> <Out-cdfg> <flg>\n\n\n");
  EXPECT_EQ(WithoutBanner(support::RunProgram(link, {"-title", input, info, output}).output,
                          "another name"),
            "");
}

TEST_F(Main, CallsItselfByANameWithoutAPath) {
  EXPECT_EQ(support::RunProgram(KELVO_BINARY, {}, {}, "elab").output,
            "usage : elab <In-cdfg> <In-inffile> <Out-cdfg> <flg>\n\n\n");
  EXPECT_EQ(support::RunProgram(KELVO_BINARY, {}, {}, "../bin/elab").output,
            "usage : elab <In-cdfg> <In-inffile> <Out-cdfg> <flg>\n\n\n");
}

TEST_F(Main, KeepsItsOwnNameInMessagesWhateverItIsCalled) {
  const auto result = support::RunProgram(KELVO_BINARY, {"-p_tvar"}, {}, "elab");
  EXPECT_EQ(result.output,
            "kelvo : Error Illegal option '-p_tvar <prifix>'\n"
            "usage : elab <In-cdfg> <In-inffile> <Out-cdfg> <flg>\n\n\n");
}

// --- Options -------------------------------------------------------------------------------------

TEST_F(Main, SaysNothingWithoutOptions) {
  const auto result = RunDesign();
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(support::ReadFile(output), SmallDesign());
}

TEST_F(Main, SaysNothingButTheBannerWithTitle) {
  const auto result = RunDesign({"-title"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(WithoutBanner(result.output), "");
}

TEST_F(Main, SaysNothingWithModuleOrPrefixes) {
  const auto result = RunDesign({"-module", "-p_tvar", "t_", "-p_cvar", "c_"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
}

TEST_F(Main, PrintsOneLinePerStepWithDebug) {
  const auto result = RunDesign({"-debug"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(
      WithoutBanner(result.output),
      Lines({"--- Reading of '" + input + "' file ...", "--- Makeing of module function list's ...",
             "--- Makeing of name's table ...", "--- Statement to block ...",
             "--- Modify structure ...", "--- Constant expression ...",
             "--- Function roll instance ...", "--- Divison  expression ...",
             "--- Remake dfg node ...", "--- Manage opration -> Datapath ...",
             "--- Mul | Div exp -> temporary variable ...", "--- Divison inout directive ...",
             "--- Writeing of '" + output + "' file ...", "--- Deleteing of used memory ..."}));
}

TEST_F(Main, PrintsTheBannerOnceWithTitleAndDebug) {
  EXPECT_EQ(RunDesign({"-title", "-debug"}).output.find("[C Elabration]"),
            RunDesign({"-title", "-debug"}).output.rfind("[C Elabration]"));
}

TEST_F(Main, PrintsPathsAsTheyAre) {
  const std::string odd = dir.File("100%d %s %n.cdfg", SmallDesign());
  const auto result = Run({"-debug", odd, info, output});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.output.find("--- Reading of '" + odd + "' file ...\n"), std::string::npos);
}

TEST_F(Main, TakesOptionsInAnyOrder) {
  const auto result = Run({input, "-title", info, "-p_tvar", "t_", output, "-module"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(WithoutBanner(result.output), "");
  EXPECT_EQ(support::ReadFile(output), SmallDesign());
}

TEST_F(Main, IgnoresAFourthPath) {
  const std::string fourth = dir.Path("fourth");
  const auto result = Run({input, info, output, fourth});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(support::ReadFile(output), SmallDesign());
  EXPECT_FALSE(std::filesystem::exists(fourth));
}

TEST_F(Main, TakesWhatOnlyResemblesAnOptionForAPath) {
  const auto result = Run({"-Title", info, output});
  EXPECT_EQ(result.status, 255);
  EXPECT_EQ(result.output, "kelvo : Error : Cat't open '-Title'\n");
}

}  // namespace
