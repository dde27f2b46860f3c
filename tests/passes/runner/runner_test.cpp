// The runner of the pass cases: that a case fails when it should, and says why.

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "cdfg/graph.h"
#include "tests/passes/runner/diff.h"
#include "tests/passes/runner/run_case.h"
#include "tests/passes/runner/shape.h"
#include "tests/support/graphs.h"

namespace {

// A module f with prefix p that calls g; the step copies g.
const std::string kBefore = R"(file "top.c"
CFG_ROOT {
  ELEMENT = CFG_FILEINFO {
    ELEMENT = [
      CFG_FUNCTION {
        STARTCFG = CFG_STATE_DATAPATH {
          OPELIST = DFG_MANAGE_OPERATION {
            OPE = DFG_FUNC_CALL jump @f { DIRECTIVE = INFO_DIRECTIVE { TYPE = 55 STR = "module prefix=p" } }
          }
        }
      }
      f: CFG_FUNCTION {
        STARTCFG = CFG_STATE_DATAPATH {
          OPELIST = DFG_MANAGE_OPERATION { OPE = DFG_FUNC_CALL jump @g { NAME = "g" } }
        }
        NAME = "f"
      }
      g: CFG_FUNCTION { NAME = "g" }
      last: CFG_COMMENT
    ]
    NAME = "top.c"
  }
}
)";

std::string Replaced(std::string text, std::string_view old_part, std::string_view new_part) {
  const std::size_t at = text.find(old_part);
  EXPECT_NE(at, text.npos) << old_part;
  return text.replace(at, old_part.size(), new_part);
}

const std::string kAfter =
    Replaced(Replaced(kBefore, R"(jump @g { NAME = "g" })", R"(jump @new1 { NAME = "p_g" })"),
             "      last:", "      new1: CFG_FUNCTION { NAME = \"p_g\" }\n      last:");

const std::string kHead = "# What f calls is copied.\npass: module-functions\n";

std::string Case(const std::string& after, const std::string& more = "") {
  return kHead + "-- before --\n" + kBefore + "-- after --\n" + after + more;
}

CaseRun Tried(const std::string& content) { return RunCase("x.case", content); }

// The graph of a case that stops: a chain that leads back to itself.
const std::string kEndless =
    "# A circle stops the run.\npass: module-functions\nshape: damaged\n-- before --\n"
    "CFG_ROOT { ELEMENT = CFG_FILEINFO { ELEMENT = loop: CFG_BREAK next @loop } }\n";

TEST(RunCaseTest, PassesWhenAllIsAsExpected) {
  const CaseRun run = Tried(Case(kAfter));
  EXPECT_TRUE(Passed(run)) << run.mistake << run.verdict.details;
  EXPECT_EQ(run.parsed.intent, "What f calls is copied.");
}

TEST(RunCaseTest, FailsWhenTheGraphDiffersAndShowsItInTheWordsOfTheCase) {
  const CaseRun run = Tried(Case("unchanged\n"));
  EXPECT_FALSE(Passed(run));
  EXPECT_FALSE(run.verdict.after);
  EXPECT_NE(run.verdict.details.find("-          OPELIST = DFG_MANAGE_OPERATION { OPE = "
                                     "DFG_FUNC_CALL jump @g { NAME = \"g\" } }\n"),
            std::string::npos)
      << run.verdict.details;
  EXPECT_NE(run.verdict.details.find("+      new1: CFG_FUNCTION { NAME = \"p_g\" }\n"),
            std::string::npos)
      << run.verdict.details;
}

TEST(RunCaseTest, FailsForEachByteOfTheGraph) {
  EXPECT_FALSE(Tried(Case(Replaced(kAfter, "\"p_g\" }\n      last", "\"p_h\" }\n      last")))
                   .verdict.after);
  EXPECT_FALSE(
      Tried(Case(Replaced(kAfter, "last: CFG_COMMENT", "last: CFG_COMMENT at 0:1"))).verdict.after);
  EXPECT_FALSE(Tried(Case(Replaced(kAfter, "new1: CFG", "new2: CFG"))).verdict.after);
}

TEST(RunCaseTest, FailsWhenSomethingIsPrinted) {
  const CaseRun run = Tried(kEndless + "-- status --\n255\n");
  EXPECT_FALSE(run.verdict.output);
  EXPECT_TRUE(run.verdict.status);
  EXPECT_NE(run.verdict.details.find("+kelvo : Error : Endless graph : node 3\n"),
            std::string::npos);
}

TEST(RunCaseTest, FailsWhenTheOutputIsMissingOrDiffers) {
  EXPECT_FALSE(Tried(Case(kAfter, "-- output --\nnothing\n")).verdict.output);
  const std::string output = "-- output --\nkelvo : Error : Endless graph : node ";
  EXPECT_TRUE(Passed(Tried(kEndless + output + "3\n-- status --\n255\n")));
  EXPECT_TRUE(Passed(Tried(kEndless + output + "<id>\n-- status --\n255\n")));
  EXPECT_FALSE(Tried(kEndless + output + "4\n-- status --\n255\n").verdict.output);
  EXPECT_FALSE(Tried(kEndless + output + "<id>0\n-- status --\n255\n").verdict.output);
  EXPECT_FALSE(Tried(kEndless + output + "3\n\n-- status --\n255\n").verdict.output);
}

TEST(RunCaseTest, FailsWhenTheRunStopsUnexpectedlyOrDoesNot) {
  EXPECT_FALSE(Tried(kEndless + "-- after --\nunchanged\n").verdict.status);
  EXPECT_FALSE(Tried(kEndless + "-- output --\n<id>\n-- status --\n1\n").verdict.status);
  EXPECT_FALSE(Tried(kHead + "-- before --\n" + kBefore + "-- status --\n255\n").verdict.status);
}

TEST(RunCaseTest, ComparesTheStateWhereTheCaseHasOne) {
  const std::string state = R"(-- state --
module @f "f" "top.c" prefix "p"
  @new1 of @g "p_g" "top.c"
code @f @new1
)";
  EXPECT_TRUE(Passed(Tried(Case(kAfter, state))));
  EXPECT_FALSE(Tried(Case(kAfter, Replaced(state, "@new1 of", "@g of"))).verdict.state);
  EXPECT_FALSE(Tried(Case(kAfter, Replaced(state, "code @f", "code"))).verdict.state);
  EXPECT_FALSE(Tried(Case(kAfter, "-- state --\n")).verdict.state);
}

TEST(RunCaseTest, BeginsEveryCaseWithFreshState) {
  Tried(Case(kAfter));
  const std::string other =
      "# Nothing is called.\npass: module-functions\n-- before --\nCFG_ROOT\n"
      "-- after --\nunchanged\n-- state --\n";
  EXPECT_TRUE(Passed(Tried(other)));
}

TEST(RunCaseTest, FailsWhenALooseCaseIsNot) {
  const CaseRun run = Tried(
      "# All is well.\npass: name-table\nshape: loose\n-- before --\n"
      "CFG_ROOT\n-- after --\nunchanged\n");
  EXPECT_FALSE(run.verdict.shape);
  EXPECT_EQ(run.verdict.details, "all rules of shape hold: 'shape: loose' is not needed\n");
}

TEST(RunCaseTest, ChecksShapesUnlessTheCaseIsDamaged) {
  const std::string graph = "-- before --\nCFG_BREAK next @9\n-- after --\nunchanged\n";
  const CaseRun run = Tried("# A link leads nowhere.\npass: name-table\n" + graph);
  EXPECT_FALSE(run.verdict.shape);
  EXPECT_EQ(run.verdict.details,
            "shape as read, links resolve: node 1 (CFG_BREAK): next names node 9, which does not "
            "exist\n");
  EXPECT_TRUE(Passed(Tried("# A link leads nowhere.\npass: name-table\nshape: damaged\n" + graph)));
}

TEST(RunCaseTest, SaysWhereATextHasAMistake) {
  EXPECT_EQ(Tried(kHead + "-- before --\nCFG_ROOT {\n  ELEMENT = ?\n}\n-- after --\nunchanged\n")
                .mistake.substr(0, 18),
            "x.case:5:13: error");
  const std::string wrong =
      "-- before --\nroot: CFG_ROOT\n-- after --\nroot: CFG_ROOT { NAME = @root ? }\n";
  EXPECT_EQ(Tried(kHead + wrong).mistake.substr(0, 18), "x.case:6:18: error");
  EXPECT_EQ(
      Tried(kHead + "-- before --\nnew1: CFG_ROOT\n-- after --\nunchanged\n").mistake.substr(0, 17),
      "x.case:4:1: error");
}

TEST(RunCaseTest, TakesOptionsOfTheCommandLineOnly) {
  const std::string rest = "\n-- before --\nCFG_ROOT\n-- after --\nunchanged\n";
  EXPECT_TRUE(Passed(Tried(kHead + "options: -p_tvar t_ -module" + rest)));
  EXPECT_FALSE(Tried(kHead + "options: -p_tvar" + rest).mistake.empty());
  EXPECT_FALSE(Tried(kHead + "options: -unknown" + rest).mistake.empty());
}

// --- The format of a case ------------------------------------------------------------------------

std::string MistakeOf(const std::string& content) { return Tried(content).mistake; }

TEST(ParseCaseTest, WantsAnIntentAStepAndItsSections) {
  const std::string graphs = "-- before --\nCFG_ROOT\n-- after --\nunchanged\n";
  EXPECT_EQ(MistakeOf("pass: name-table\n" + graphs),
            "x.case:1: error: expected '# ' and a sentence of intent\n");
  EXPECT_EQ(MistakeOf("# Intent.\n" + graphs),
            "x.case:5: error: expected 'pass: ' and the name of a step\n");
  EXPECT_EQ(MistakeOf("# Intent.\npass: none-such\n" + graphs),
            "x.case:2: error: no step is called 'none-such'\n");
  EXPECT_EQ(MistakeOf("# Intent.\npass: name-table\nwhat: ever\n" + graphs).substr(0, 15),
            "x.case:3: error");
  EXPECT_EQ(MistakeOf("# Intent.\npass: name-table\n-- before --\nCFG_ROOT\n"),
            "x.case:4: error: expected '-- after --'\n");
  EXPECT_EQ(MistakeOf("# Intent.\npass: name-table\n-- after --\nunchanged\n").substr(0, 15),
            "x.case:4: error");
  EXPECT_EQ(MistakeOf("# Intent.\npass: name-table\n" + graphs + "-- before --\n").substr(0, 15),
            "x.case:7: error");
  EXPECT_EQ(MistakeOf("# Intent.\npass: name-table\n" + graphs + "-- status --\n255\n"),
            "x.case:8: error: expected no '-- after --' where the run stops\n");
}

std::string StepsOf(const std::string& pass) {
  const CaseRun run =
      Tried("# Intent.\npass: " + pass + "\n-- before --\nCFG_ROOT\n-- after --\nunchanged\n");
  std::string names = run.mistake;
  for (const PipelineStep* step : run.parsed.steps) names += std::string(step->name) + " ";
  return names;
}

TEST(ParseCaseTest, TakesStepsListsAndRanges) {
  EXPECT_EQ(StepsOf("name-table"), "name-table ");
  EXPECT_EQ(StepsOf("name-table, module-functions,name-table"),
            "name-table module-functions name-table ");
  EXPECT_EQ(StepsOf("module-functions .. name-table"), "module-functions name-table ");
  EXPECT_EQ(StepsOf("name-table .. module-functions").substr(0, 16), "x.case:2: error:");
  std::string all;
  for (const PipelineStep& step : Pipeline()) all += std::string(step.name) + " ";
  EXPECT_EQ(StepsOf("pipeline"), all);
}

// --- Rewriting -----------------------------------------------------------------------------------

TEST(RewriteTest, MakesACaseThatPasses) {
  const CaseRun run = Tried(Case("unchanged\n", "-- state --\n"));
  const std::string rewritten = RewrittenCase(run);
  const CaseRun again = Tried(rewritten);
  EXPECT_TRUE(Passed(again)) << again.mistake << again.verdict.details;
  EXPECT_EQ(rewritten.substr(0, rewritten.find("-- after")),
            Case("").substr(0, Case("").find("-- after")));
  EXPECT_NE(rewritten.find("      new1: CFG_FUNCTION { NAME = \"p_g\" }\n"), std::string::npos);
  EXPECT_NE(rewritten.find("-- state --\nmodule @f"), std::string::npos);
}

TEST(RewriteTest, KeepsWhatHolds) {
  const std::string after = "# by hand\n" + kAfter;
  const std::string content = Case(after, "-- output --\nnothing\n");
  EXPECT_EQ(RewrittenCase(Tried(content)), Case(after));
}

TEST(RewriteTest, TakesTheGraphAwayWhereTheRunStops) {
  const std::string rewritten = RewrittenCase(Tried(kEndless + "-- after --\nunchanged\n"));
  EXPECT_EQ(rewritten, kEndless +
                           "-- output --\nkelvo : Error : Endless graph : node 3\n"
                           "-- status --\n255\n");
  EXPECT_TRUE(Passed(Tried(rewritten)));
}

TEST(RewriteTest, WritesUnchangedAndDropsAStatusThatIsNone) {
  const std::string head = "# Nothing happens.\npass: name-table\n-- before --\nCFG_ROOT\n";
  EXPECT_EQ(RewrittenCase(Tried(head + "-- after --\nCFG_BREAK\n")),
            head + "-- after --\nunchanged\n");
  EXPECT_EQ(RewrittenCase(Tried(head + "-- status --\n255\n")), head + "-- after --\nunchanged\n");
}

// --- Shapes and differences ----------------------------------------------------------------------

using ShapeTest = support::GraphTest;

std::vector<std::string> Problems(const CdfgGraph* graph) { return FindShapeProblems(graph, {}); }

TEST_F(ShapeTest, FindsNothingInASoundGraph) {
  const NodeId owner = Add(CFG_STATE_DATAPATH);
  const NodeId first = Add(DFG_MANAGE_OPERATION);
  const NodeId second = Add(DFG_MANAGE_OPERATION);
  Own(owner, CfgDatapath_OPELIST, first);
  Chain({first, second});
  CdfgSetAttrNode(graph, second, DfgOpeman_OPE, 0);
  EXPECT_TRUE(Problems(graph).empty());
}

TEST_F(ShapeTest, FindsEveryLinkThatLeadsNowhere) {
  const NodeId node = Add(DFG_OPERATION);
  CdfgSetPrev(graph, node, 7);
  CdfgSetNext(graph, node, 8);
  CdfgSetJump(graph, node, 9);
  CdfgSetAttrNode(graph, node, DfgOpe_LEFT, 10);
  CdfgSetAttrInt(graph, node, DfgOpe_TYPE, 11);
  EXPECT_EQ(Problems(graph).size(), 4U);
}

TEST_F(ShapeTest, FindsACircleOnce) {
  const NodeId lead = Add(CFG_BREAK);
  const NodeId first = Add(CFG_BREAK);
  const NodeId second = Add(CFG_BREAK);
  Chain({lead, first, second});
  CdfgSetNext(graph, second, first);
  const std::vector<std::string> problems = Problems(graph);
  ASSERT_EQ(problems.size(), 1U);
  EXPECT_EQ(problems[0],
            "as read, chains end: node 2 (CFG_BREAK): its next chain leads back to itself");
}

TEST(UnifiedDiffTest, ShowsWhatDiffersWithThreeLinesAround) {
  EXPECT_EQ(UnifiedDiff("a\nb\n", "a\nb\n"), "");
  EXPECT_EQ(UnifiedDiff("1\n2\n3\n4\n5\n6\n7\n8\n9\n", "1\n2\n3\n4\nx\n6\n7\n8\n9\n"),
            "@@ line 2 @@\n 2\n 3\n 4\n-5\n+x\n 6\n 7\n 8\n");
  EXPECT_EQ(UnifiedDiff("", "a\n"), "@@ line 1 @@\n+a\n");
  EXPECT_EQ(UnifiedDiff("1\n2\n3\n4\n5\n6\n7\n8\n9\n", "2\n3\n4\n5\n6\n7\n8\n"),
            "@@ line 1 @@\n-1\n 2\n 3\n 4\n@@ line 6 @@\n 6\n 7\n 8\n-9\n");
}

}  // namespace
