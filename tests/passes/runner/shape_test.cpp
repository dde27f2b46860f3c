// The rules of shape that a step brings about: each is broken once, and has to be found.
#include "tests/passes/runner/shape.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "cdfg/file.h"
#include "passes/module_list.h"
#include "tests/passes/runner/case_graph.h"
#include "tests/passes/runner/state.h"
#include "tests/support/files.h"
#include "tests/support/graphs.h"

namespace {

// --- A function f with a body --------------------------------------------------------------------

std::string Function(const std::string& body) {
  return R"(file "top.c"
CFG_ROOT { ELEMENT = CFG_FILEINFO { NAME = "top.c" ELEMENT = f: CFG_FUNCTION { NAME = "f" STARTCFG = )" +
         body + "}}}\n";
}

std::string Datapath(const std::string& root) {
  return "CFG_STATE_DATAPATH { OPELIST = DFG_MANAGE_OPERATION { OPE = " + root + " }}";
}

// x = value
std::string Assigned(const std::string& value) {
  return Datapath("[ DFG_OUTPUT_VAR { NAME = \"x\" } *DFG_EDGE_BLOCKING " + value + " ]");
}

const std::string kRead = "DFG_EDGE_PRESEDE DFG_INPUT_VAR { NAME = \"a\" }";
const std::string kSum = "DFG_OPERATION { TYPE = CALC_Add LEFT = [ " + kRead + " ] }";
const std::string kCall = "DFG_FUNC_CALL { NAME = \"g\" }";

std::string Indexed(const std::string& index) {
  return "DFG_INPUT_VAR { NAME = \"v\" DIMNODE = DFG_DIMENSION { NODE = [ " + index + " ] } }";
}

support::OwnedGraph GraphOf(const std::string& text) {
  std::string bytes;
  CaseNames names;
  TextError error;
  EXPECT_TRUE(ReadBefore(text, &bytes, &names, &error)) << error.message << "\n" << text;
  const support::Stream stream(std::tmpfile());
  std::fwrite(bytes.data(), 1, bytes.size(), stream.get());
  std::rewind(stream.get());
  support::OwnedGraph graph(CdfgReadStream(stream.get()));
  AddModuleFunction(graph.get(), names.labels.at("f"), nullptr);
  return graph;
}

// What is found after the pipeline up to and with this step.
std::vector<std::string> Problems(const std::string& text, const std::string& last_step,
                                  ShapeRules rules = ShapeRules::All) {
  const support::OwnedGraph graph = GraphOf(text);
  std::vector<const PipelineStep*> steps;
  for (const PipelineStep& step : Pipeline()) {
    steps.push_back(&step);
    if (step.name == last_step) break;
  }
  std::vector<std::string> problems = FindShapeProblems(graph.get(), steps, rules);
  ResetProgramState(graph.get());
  return problems;
}

struct Broken {
  const char* name;
  std::string body;
  const char* step;
  const char* found;  // the end of the one problem; null: nothing is wrong
};

void PrintTo(const Broken& broken, std::ostream* out) { *out << broken.name; }

class Shape : public testing::TestWithParam<Broken> {};

TEST_P(Shape, IsJudged) {
  const Broken& broken = GetParam();
  const std::vector<std::string> problems = Problems(Function(broken.body), broken.step);
  if (broken.found == nullptr) {
    EXPECT_EQ(problems, std::vector<std::string>());
    return;
  }
  ASSERT_EQ(problems.size(), 1U);
  const std::string found = broken.found;
  EXPECT_EQ(problems[0].substr(problems[0].size() - std::min(found.size(), problems[0].size())),
            found);
}

// A statement that stands alone breaks nothing else, and the links are those of well-made text.
const char kDivided[] = "division-expression";
const char kRemade[] = "remake-dfg";
const char kSplit[] = "split-datapaths";

const Broken kFlat[] = {
    {"reference", Assigned(kRead), kDivided, nullptr},
    {"port", Assigned("DFG_INPUT_VAR"), kDivided, nullptr},
    {"operation", Assigned(kSum), kDivided, nullptr},
    {"call", Assigned(kCall), kDivided, nullptr},
    {"cast", Assigned("DFG_SPEC " + kRead), kDivided, nullptr},
    {"index", Assigned("DFG_EDGE_PRESEDE " + Indexed(kRead)), kDivided, nullptr},
    {"allocation",
     Assigned("DFG_OPERATION { TYPE = CALC_Add LEFT = [ DFG_EDGE_PRESEDE DFG_SPEC "
              "DFG_FUNC_CALL { NAME = \"malloc\" } ] }"),
     kDivided, nullptr},
    {"bare_call", Datapath(kCall), kDivided, nullptr},
    {"cast_of_a_call", Datapath("[ DFG_SPEC DFG_EDGE_PRESEDE " + kCall + " ]"), kDivided, nullptr},
    {"comparison",
     "CFG_STATE_IF { CONDOPE = DFG_MANAGE_OPERATION { OPE = DFG_OPERATION { TYPE = CALC_Les } } }",
     kDivided, nullptr},
};

const Broken kBroken[] = {
    {"operation_in_an_operation",
     Assigned("DFG_OPERATION { TYPE = CALC_Add RIGHT = " + kSum + " }"), kDivided,
     "(DFG_OPERATION) is nested"},
    {"operation_as_condition_operand",
     Assigned("DFG_OPERATION { TYPE = CALC_LogCond COND = " + kSum + " }"), kDivided,
     "(DFG_OPERATION) is nested"},
    {"call_in_an_operation",
     Assigned("DFG_OPERATION { TYPE = CALC_Add LEFT = [ DFG_EDGE_PRESEDE " + kCall + " ] }"),
     kDivided, "(DFG_FUNC_CALL) is nested"},
    {"cast_in_an_operation",
     Assigned("DFG_OPERATION { TYPE = CALC_Add LEFT = [ DFG_EDGE_PRESEDE DFG_SPEC " + kRead +
              " ] }"),
     kDivided, "(DFG_SPEC) is a cast as an operand"},
    {"operation_as_argument",
     Assigned("DFG_FUNC_CALL { ARGLIST = DFG_PORT_INFO { SIGNAL = " + kSum + " } }"), kDivided,
     "(DFG_OPERATION) is nested"},
    {"operation_under_a_cast", Assigned("DFG_SPEC " + kSum), kDivided, "(DFG_OPERATION) is nested"},
    {"operation_as_index", Assigned("DFG_EDGE_PRESEDE " + Indexed(kSum)), kDivided,
     "(DFG_OPERATION) is nested"},
    {"index_in_an_index",
     Assigned("DFG_EDGE_PRESEDE " + Indexed("DFG_EDGE_PRESEDE " + Indexed(kRead))), kDivided,
     "(DFG_INPUT_VAR) is indexed inside an index"},
    {"index_of_a_member",
     Assigned("DFG_EDGE_PRESEDE DFG_INPUT_VAR { STRSON = " + Indexed(kSum) + " }"), kDivided,
     "(DFG_OPERATION) is nested"},
    {"index_of_a_target", Datapath("[ " + Indexed(kSum) + " *DFG_EDGE_BLOCKING " + kRead + " ]"),
     kDivided, "(DFG_OPERATION) is nested"},
    {"compound", Assigned("DFG_OPERATION { TYPE = 53 LEFT = [ " + kRead + " ] }"), kDivided,
     "(DFG_OPERATION) is an assignment operator"},
    {"step", Assigned("DFG_OPERATION { TYPE = 63 LEFT = [ " + kRead + " ] }"), kDivided,
     "(DFG_OPERATION) is an assignment operator"},
    {"dereference", Assigned("DFG_OPERATION { TYPE = CALC_Add POINNUM = 1 }"), kDivided,
     "(DFG_OPERATION) is dereferenced"},
    {"bare_operation", Datapath(kSum), kDivided, "(DFG_OPERATION) has no target"},
    {"bare_comparison_as_a_statement", Datapath("DFG_OPERATION { TYPE = CALC_Les }"), kDivided,
     "(DFG_OPERATION) has no target"},
    {"sum_as_condition",
     "CFG_STATE_IF { CONDOPE = DFG_MANAGE_OPERATION { OPE = DFG_OPERATION { TYPE = CALC_Add } } }",
     kDivided, "(DFG_OPERATION) has no target"},
    {"call_as_condition",
     "CFG_STATE_CASE { CONDOPE = DFG_MANAGE_OPERATION { OPE = " + kCall + " } }", kDivided,
     "(DFG_FUNC_CALL) is a call as a condition"},
    {"call_as_loop_condition",
     "CFG_LOOP_BEGIN { CFG = CFG_LOOP_COND { CONDOPE = DFG_MANAGE_OPERATION { OPE = " + kCall +
         " } } }",
     kDivided, "(DFG_FUNC_CALL) is a call as a condition"},
    {"call_returned", "CFG_RETURN { EXP = DFG_MANAGE_OPERATION { OPE = " + kCall + " } }", kDivided,
     "(DFG_FUNC_CALL) is a call as a condition"},
    {"computed_target",
     Datapath("[ DFG_OPERATION { TYPE = CALC_Add } *DFG_EDGE_BLOCKING " + kRead + " ]"), kDivided,
     "(DFG_OPERATION) is a computed target"},
    {"in_a_branch", "CFG_STATE_IF { STATOPE = CFG_IF_ELSE { CFG = " + Datapath(kSum) + " } }",
     kDivided, "(DFG_OPERATION) has no target"},
    {"in_a_loop_step",
     "CFG_LOOP_BEGIN { CFG = CFG_LOOP_STEP { OPELIST = DFG_MANAGE_OPERATION { OPE = " + kSum +
         " } } }",
     kDivided, "(DFG_OPERATION) has no target"},
    {"assigned_input", Datapath("[ DFG_INPUT_VAR *DFG_EDGE_BLOCKING " + kRead + " ]"), kRemade,
     "(DFG_INPUT_VAR) is assigned"},
    {"two_statements",
     "CFG_STATE_DATAPATH { OPELIST = [ DFG_MANAGE_OPERATION { OPE = " + kCall +
         " } DFG_MANAGE_OPERATION { OPE = " + kCall + " } ] }",
     kSplit, "(DFG_MANAGE_OPERATION) is not the only statement of its datapath"},
    {"no_way_back_to_the_datapath",
     "CFG_STATE_DATAPATH { OPELIST = DFG_MANAGE_OPERATION prev @0 { OPE = " + kCall + " } }",
     kSplit, "(DFG_MANAGE_OPERATION) does not lead back"},
    {"no_way_from_the_target",
     Datapath("[ DFG_OUTPUT_VAR next @0 *DFG_EDGE_BLOCKING " + kRead + " ]"), kSplit,
     "(DFG_OUTPUT_VAR) does not lead to its edge"},
    {"no_way_back_between_statements", "[ CFG_BREAK CFG_CONTINUE prev @0 ]", kSplit,
     "(CFG_CONTINUE) does not lead back to the statement in front of it"},
};

const auto kNameOf = [](const testing::TestParamInfo<Broken>& info) {
  return std::string(info.param.name);
};

INSTANTIATE_TEST_SUITE_P(Flat, Shape, testing::ValuesIn(kFlat), kNameOf);
INSTANTIATE_TEST_SUITE_P(Broken, Shape, testing::ValuesIn(kBroken), kNameOf);

// --- When a rule holds ---------------------------------------------------------------------------

const std::string kChained = Function(
    Datapath("[ DFG_OUTPUT_VAR *DFG_EDGE_BLOCKING edge: DFG_EDGE_BLOCKING " + kRead + " ]"));

TEST(ShapeRules, ChainedAssignmentsAreLeftUntilTheRemake) {
  EXPECT_EQ(Problems(kChained, kDivided).size(), 0U);
  EXPECT_EQ(Problems(kChained, kRemade).size(), 1U);
}

TEST(ShapeRules, NothingIsFlatBeforeTheDivision) {
  EXPECT_EQ(Problems(Function(Datapath(kSum)), "function-roll").size(), 0U);
  EXPECT_EQ(Problems(Function(Datapath(kSum)), kDivided).size(), 1U);
}

TEST(ShapeRules, OfStepsAreLeftOutWhenLoose) {
  EXPECT_EQ(Problems(Function(Datapath(kSum)), kDivided, ShapeRules::Loose).size(), 0U);
}

TEST(ShapeRules, LookAtModuleCodeOnly) {
  const std::string other =
      "CFG_ROOT { ELEMENT = CFG_FILEINFO { ELEMENT = [ f: CFG_FUNCTION "
      "CFG_FUNCTION { NAME = \"g\" STARTCFG = " +
      Datapath(kSum) + " } ] } }";
  EXPECT_EQ(Problems(other, kDivided).size(), 0U);
}

}  // namespace
