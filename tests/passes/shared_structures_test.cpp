// Structures that many declarations share: the work follows the graph, or the run is stopped.
#include <string>

#include "cdfg/name_set.h"
#include "driver/pipeline.h"
#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

class SharedStructures : public support::GraphTest {
 protected:
  SharedStructures() {
    NameSetInit();
    const NodeId root = Add(CFG_ROOT);
    file_ = Add(CFG_FILEINFO);
    Own(root, CfgRoot_ELEMENT, file_);
  }
  ~SharedStructures() override { FreePassState(); }

  NodeId AddStructureMember(NodeId origin) {
    const NodeId member = Add(CFG_DECLARE);
    CdfgSetAttrInt(graph, member, CfgDecl_VALTYPE, DECL_VALTYPE_STRUCT);
    CdfgSetAttrNode(graph, member, CfgDecl_STRUCTORGNODE, origin);
    return member;
  }
  support::Outcome RunNamed(const std::string& name) {
    return support::RunCatchingStop([&] {
      for (const PipelineStep& step : Pipeline()) {
        if (step.name == name) RunStep(step, graph);
      }
    });
  }

  NodeId file_;
};

// float on each of n variables, and one structure node for all: its member gets n directives. With
// a list walked to its end for each, these would use up what a step is granted.
TEST_F(SharedStructures, OfManyVariablesTakeADirectiveOfEach) {
  constexpr int kVariables = 200000;
  const NodeId structure = Add(CFG_STRUCT);
  const NodeId member = Add(CFG_DECLARE);
  Own(structure, CfgStruct_MEMBER, member);
  CdfgSetAttrInt(graph, member, CfgDecl_VALTYPE, DECL_VALTYPE_DOUBLE);
  const NodeId definitions = Add(CFG_DECLARE_DEF);
  Own(file_, CfgFileinfo_ELEMENT, definitions);
  NodeId last = 0;
  for (int i = 0; i < kVariables; ++i) {
    const NodeId variable = AddStructureMember(0);
    CdfgSetAttrNode(graph, variable, CfgDecl_STRUCTNODE, structure);
    const NodeId directive = Add(INFO_DIRECTIVE);
    CdfgSetAttrStr(graph, directive, DfgDirective_STR, "float");
    CdfgSetAttrNode(graph, variable, CfgDecl_DIRECTIVE, directive);
    if (last == 0) {
      Own(definitions, CfgDeclDef_DECL, variable);
    } else {
      Chain({last, variable});
    }
    last = variable;
  }
  EXPECT_EQ(RunNamed("inout-directives"), support::Quiet());
  int directives = 0;
  for (NodeId node = CdfgGetAttr(graph, member, CfgDecl_DIRECTIVE); node != 0;
       node = CdfgGetNext(graph, node)) {
    ++directives;
  }
  EXPECT_EQ(directives, kVariables);
}

// Each definition nests the next one twice: 2^40 nested definitions.
TEST_F(SharedStructures, ThatDoubleWithEveryLevelStopTheRun) {
  NodeId inner = 0;
  for (int level = 0; level < 40; ++level) {
    const NodeId definition = Add(CFG_STRUCT_DEF);
    const NodeId structure = Add(CFG_STRUCT);
    CdfgSetAttrStr(graph, structure, CfgStruct_TAGNAME, ("s" + std::to_string(level)).c_str());
    Own(definition, CfgStructDef_STRUCT, structure);
    if (inner != 0) {
      const NodeId first = AddStructureMember(inner);
      Own(structure, CfgStruct_MEMBER, first);
      Chain({first, AddStructureMember(inner)});
    }
    inner = definition;
  }
  Own(file_, CfgFileinfo_ELEMENT, inner);
  const support::Outcome outcome = RunNamed("modify-structure");
  EXPECT_EQ(outcome.status, 255);
  EXPECT_EQ(outcome.output.substr(0, outcome.output.rfind(' ')),
            "kelvo : Error : Endless graph : node");
}

}  // namespace
