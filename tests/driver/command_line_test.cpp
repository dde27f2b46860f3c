// What the arguments of kelvo say.
#include "driver/command_line.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/capture.h"

namespace {

class Arguments : public testing::Test {
 protected:
  // Reads these arguments, the program name in front of them.
  const CommandLine& Parse(const std::vector<std::string>& arguments) {
    strings_ = {"kelvo"};
    strings_.insert(strings_.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& string : strings_) pointers.push_back(string.data());
    pointers.push_back(nullptr);
    output = support::CaptureOutput(
        [&] { command = ParseCommandLine(static_cast<int>(strings_.size()), pointers.data()); });
    return command;
  }

  CommandLine command;
  std::string output;

 private:
  std::vector<std::string> strings_;
};

TEST_F(Arguments, GiveThreePathsInOrder) {
  Parse({"in", "info", "out"});
  EXPECT_FALSE(command.failed);
  EXPECT_STREQ(command.input_path, "in");
  EXPECT_STREQ(command.info_path, "info");
  EXPECT_STREQ(command.output_path, "out");
  EXPECT_EQ(output, "");
}

TEST_F(Arguments, GiveNoSettingByThemselves) {
  Parse({"in", "info", "out"});
  EXPECT_EQ(command.title, 0);
  EXPECT_EQ(command.debug, 0);
  EXPECT_EQ(command.module, 0);
  EXPECT_EQ(command.temp_prefix, nullptr);
  EXPECT_EQ(command.cast_prefix, nullptr);
}

TEST_F(Arguments, FailWhenAPathIsMissing) {
  EXPECT_TRUE(Parse({}).failed);
  EXPECT_TRUE(Parse({"in"}).failed);
  EXPECT_TRUE(Parse({"in", "info"}).failed);
  EXPECT_TRUE(Parse({"-title", "-debug", "-module"}).failed);
  EXPECT_EQ(output, "");
}

TEST_F(Arguments, MayHaveAFourthPathAndMoreThatAreIgnored) {
  Parse({"in", "info", "out", "flg", "more"});
  EXPECT_FALSE(command.failed);
  EXPECT_STREQ(command.input_path, "in");
  EXPECT_STREQ(command.info_path, "info");
  EXPECT_STREQ(command.output_path, "out");
}

TEST_F(Arguments, MayBeEmptyPaths) {
  Parse({"", "", ""});
  EXPECT_FALSE(command.failed);
  EXPECT_STREQ(command.input_path, "");
  EXPECT_STREQ(command.output_path, "");
}

TEST_F(Arguments, TurnOnFlags) {
  EXPECT_EQ(Parse({"-title"}).title, 1);
  EXPECT_EQ(Parse({"-debug"}).debug, 1);
  EXPECT_EQ(Parse({"-module"}).module, 1);
}

TEST_F(Arguments, TurnOnNoOtherFlag) {
  Parse({"-title"});
  EXPECT_EQ(command.debug, 0);
  EXPECT_EQ(command.module, 0);
}

TEST_F(Arguments, MayStandInAnyOrder) {
  Parse({"-debug", "in", "-p_tvar", "t_", "info", "-title", "out", "-p_cvar", "c_", "-module"});
  EXPECT_FALSE(command.failed);
  EXPECT_STREQ(command.input_path, "in");
  EXPECT_STREQ(command.info_path, "info");
  EXPECT_STREQ(command.output_path, "out");
  EXPECT_STREQ(command.temp_prefix, "t_");
  EXPECT_STREQ(command.cast_prefix, "c_");
  EXPECT_EQ(command.title, 1);
  EXPECT_EQ(command.debug, 1);
  EXPECT_EQ(command.module, 1);
}

TEST_F(Arguments, MayRepeatAnOptionAndTheLastPrefixCounts) {
  Parse({"-title", "-title", "-p_tvar", "a", "-p_tvar", "b"});
  EXPECT_EQ(command.title, 1);
  EXPECT_STREQ(command.temp_prefix, "b");
}

TEST_F(Arguments, BehindAPrefixOptionAreThePrefixWhateverTheyLookLike) {
  Parse({"-p_tvar", "-debug", "-p_cvar", "-p_tvar", "in", "info", "out"});
  EXPECT_FALSE(command.failed);
  EXPECT_STREQ(command.temp_prefix, "-debug");
  EXPECT_STREQ(command.cast_prefix, "-p_tvar");
  EXPECT_EQ(command.debug, 0);
  EXPECT_STREQ(command.input_path, "in");
}

TEST_F(Arguments, ThatOnlyResembleOptionsArePaths) {
  for (const char* argument :
       {"-Title", "-TITLE", "-titles", "-titl", "title", "--title", "-debug=1", "-p_tvar=x",
        "-P_TVAR", "-p_tva", "-", "--", "-help", " -title"}) {
    Parse({argument, "info", "out"});
    EXPECT_STREQ(command.input_path, argument);
    EXPECT_FALSE(command.failed) << argument;
    EXPECT_EQ(command.title + command.debug + command.module, 0) << argument;
    EXPECT_EQ(command.temp_prefix, nullptr) << argument;
  }
}

TEST_F(Arguments, FailWhenAPrefixIsMissing) {
  Parse({"in", "info", "out", "-p_tvar"});
  EXPECT_TRUE(command.failed);
  EXPECT_EQ(output, "kelvo : Error Illegal option '-p_tvar <prifix>'\n");
  Parse({"-p_cvar"});
  EXPECT_TRUE(command.failed);
  EXPECT_EQ(output, "kelvo : Error Illegal option '-p_cvar <prifix>'\n");
}

TEST_F(Arguments, InFrontOfAMissingPrefixCount) {
  Parse({"-title", "in", "-debug", "-p_tvar"});
  EXPECT_EQ(command.title, 1);
  EXPECT_EQ(command.debug, 1);
  EXPECT_STREQ(command.input_path, "in");
}

TEST_F(Arguments, MayBeAnEmptyPrefix) {
  Parse({"-p_tvar", "", "in", "info", "out"});
  EXPECT_FALSE(command.failed);
  EXPECT_STREQ(command.temp_prefix, "");
}

TEST(ArgumentsOfNothing, Fail) {
  char* none[] = {nullptr};
  EXPECT_TRUE(ParseCommandLine(0, none).failed);
}

}  // namespace
