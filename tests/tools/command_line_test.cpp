// The tool as a user calls it: what it prints, what it writes, its exit status.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/tools/bytes.h"

namespace {

namespace fs = std::filesystem;

struct Result {
  int status = -1;
  std::string output;
  std::string errors;
};

std::string Contents(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  std::stringstream contents;
  contents << stream.rdbuf();
  return contents.str();
}

class CommandLine : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (fs::temp_directory_path() / "cdfg_test.XXXXXX").string();
    ASSERT_NE(mkdtemp(pattern.data()), nullptr);
    directory_ = pattern;
  }
  void TearDown() override { fs::remove_all(directory_); }

  fs::path Path(const std::string& name) const { return directory_ / name; }

  void Write(const std::string& name, const std::string& contents) const {
    std::ofstream(Path(name), std::ios::binary) << contents;
  }

  // Runs the tool in the test's directory. `arguments` are for the shell.
  Result Run(const std::string& arguments) const {
    const std::string command =
        "cd '" + directory_.string() + "' && '" CDFG_TOOL "' " + arguments + " >.output 2>.errors";
    const int status = std::system(command.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, Contents(Path(".output")),
            Contents(Path(".errors"))};
  }

 private:
  fs::path directory_;
};

void ExpectFine(const Result& result) {
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.errors, "");
}

const std::string kText = "1: CFG_ROOT { ELEMENT = 2: CFG_FILEINFO { NAME = \"a.c\" } }\n";

std::string FileOfText() {
  return Bytes()
      .Head(1, 16, 1)
      .Words(1, 6, 2)
      .Foot()
      .Words(2, 17, 1, 0, 0, 1)
      .Words(2, 5)
      .String("a.c")
      .Foot()
      .Get();
}

TEST_F(CommandLine, AsMakesAFileFromText) {
  Write("a.txt", kText);
  const Result result = Run("as a.txt -o a.cdfg");
  ExpectFine(result);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(Contents(Path("a.cdfg")), FileOfText());
}

TEST_F(CommandLine, DisMakesTextFromAFile) {
  Write("a.cdfg", FileOfText());
  const Result result = Run("dis a.cdfg");
  ExpectFine(result);
  EXPECT_EQ(result.output, kText);
}

TEST_F(CommandLine, DisWritesToAFile) {
  Write("a.cdfg", FileOfText());
  const Result result = Run("dis a.cdfg -o a.txt");
  ExpectFine(result);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(Contents(Path("a.txt")), kText);
}

TEST_F(CommandLine, DisFlat) {
  Write("a.cdfg", FileOfText());
  EXPECT_EQ(Run("dis --flat a.cdfg").output,
            "1: CFG_ROOT { ELEMENT = @2 }\n2: CFG_FILEINFO prev @1 { NAME = \"a.c\" }\n");
}

TEST_F(CommandLine, ADashIsStandardInputAndOutput) {
  Write("a.txt", kText);
  const Result binary = Run("as - -o - <a.txt");
  ExpectFine(binary);
  EXPECT_EQ(binary.output, FileOfText());
  Write("a.cdfg", FileOfText());
  const Result text = Run("dis - -o - <a.cdfg");
  ExpectFine(text);
  EXPECT_EQ(text.output, kText);
  EXPECT_EQ(Run("dump - <a.cdfg").output, Run("dump a.cdfg").output);
}

// Sizes are not known beforehand there, so that the tool's buffer has to grow.
TEST_F(CommandLine, LargeInputFromAPipe) {
  std::string bytes;
  for (std::uint32_t id = 1; id <= 20000; ++id) bytes += Bytes().Head(id, 264).Foot().Get();
  Write("a.cdfg", bytes);
  const Result result = Run("dis - < a.cdfg | cat | '" CDFG_TOOL "' as - -o b.cdfg");
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(Contents(Path("b.cdfg")) == bytes);
}

TEST_F(CommandLine, AnEmptyFileIsAnEmptyText) {
  Write("a.cdfg", "");
  const Result result = Run("dis a.cdfg");
  ExpectFine(result);
  EXPECT_EQ(result.output, "");
  ExpectFine(Run("as a.cdfg -o b.cdfg"));
  EXPECT_TRUE(fs::exists(Path("b.cdfg")));
  EXPECT_EQ(Contents(Path("b.cdfg")), "");
}

TEST_F(CommandLine, DumpListsEveryNode) {
  Write("a.cdfg", FileOfText());
  const Result result = Run("dump a.cdfg");
  ExpectFine(result);
  EXPECT_NE(result.output.find("NodeId  : 1\nCnst    : 16(CFG_ROOT)\n"), std::string::npos);
  EXPECT_NE(result.output.find("NodeId  : 2\nCnst    : 17(CFG_FILEINFO)\n"), std::string::npos);
  EXPECT_NE(result.output.find("  AttrId/Kind/value : 2(CfgFileinfo_NAME)/5(ATTR_STRING)/a.c\n"),
            std::string::npos);
  ExpectFine(Run("dump a.cdfg -o a.lst"));
  EXPECT_EQ(Contents(Path("a.lst")), result.output);
}

// --- Files that cannot be read or written --------------------------------------------------------

TEST_F(CommandLine, AMissingFileIsNamed) {
  for (const std::string command : {"dis gone", "dump gone", "as gone -o b.cdfg"}) {
    const Result result = Run(command);
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_EQ(result.errors, "cdfg: cannot read gone: No such file or directory\n") << command;
    EXPECT_EQ(result.output, "") << command;
  }
  EXPECT_FALSE(fs::exists(Path("b.cdfg")));
}

TEST_F(CommandLine, ADirectoryIsNoFile) {
  fs::create_directory(Path("d"));
  for (const std::string command : {"dis d", "dump d", "as d -o b.cdfg"}) {
    const Result result = Run(command);
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_EQ(result.errors, "cdfg: cannot read d: Is a directory\n") << command;
  }
}

TEST_F(CommandLine, AnOutputThatCannotBeMadeIsNamed) {
  Write("a.cdfg", FileOfText());
  Write("a.txt", kText);
  for (const std::string command : {"dis a.cdfg", "dump a.cdfg", "as a.txt"}) {
    const Result result = Run(command + " -o gone/b");
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_EQ(result.errors, "cdfg: cannot write gone/b: No such file or directory\n") << command;
  }
}

TEST_F(CommandLine, AFullDeviceIsNoticed) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no device that is always full here";
  Write("a.cdfg", FileOfText());
  Write("a.txt", kText);
  for (const std::string command : {"dis a.cdfg", "dump a.cdfg", "as a.txt"}) {
    const Result result = Run(command + " -o /dev/full");
    EXPECT_EQ(result.status, 1) << command;
    EXPECT_EQ(result.errors, "cdfg: cannot write /dev/full: No space left on device\n") << command;
  }
}

// --- Mistakes ------------------------------------------------------------------------------------

TEST_F(CommandLine, AMistakeInATextIsShownAndNothingWritten) {
  Write("a.txt", "CFG_ROOT {\n  ELEMENT = CFG_FOO\n}\n");
  const Result result = Run("as a.txt -o b.cdfg");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "a.txt:2:13: error: expected a value, found 'CFG_FOO'\n"
            "    ELEMENT = CFG_FOO\n"
            "              ^\n");
  EXPECT_FALSE(fs::exists(Path("b.cdfg")));
}

TEST_F(CommandLine, AMistakeInATextLeavesAnOldOutputAlone) {
  Write("b.cdfg", "old");
  Write("a.txt", "CFG_FOO");
  EXPECT_EQ(Run("as - -o b.cdfg <a.txt").errors,
            "<stdin>:1:1: error: expected a node kind, found 'CFG_FOO'\n  CFG_FOO\n  ^\n");
  EXPECT_EQ(Contents(Path("b.cdfg")), "old");
}

TEST_F(CommandLine, AWrongCommandLineIsStatus2) {
  Write("a.txt", kText);
  for (const std::string command : {"", "frob", "dis", "dis a b", "dis --frob a", "as a.txt"}) {
    const Result result = Run(command);
    EXPECT_EQ(result.status, 2) << command;
    EXPECT_EQ(result.output, "") << command;
    EXPECT_NE(result.errors, "") << command;
  }
}

TEST_F(CommandLine, HelpShowsAnExampleOfEachCommand) {
  const Result help = Run("--help");
  ExpectFine(help);
  for (const std::string command : {"dump", "dis", "as"}) {
    EXPECT_NE(help.output.find("  " + command + " "), std::string::npos) << command;
    const Result result = Run(command + " --help");
    ExpectFine(result);
    EXPECT_NE(result.output.find("Example: cdfg " + command + " "), std::string::npos) << command;
  }
}

}  // namespace
