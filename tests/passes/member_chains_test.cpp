// Structure accesses of many members as an index: v[s.m[0].m[0]. .. .m[0]].
#include <string>

#include "driver/pipeline.h"
#include "passes/module_list.h"
#include "tests/support/graphs.h"
#include "tests/support/sanitizers.h"
#include "tests/support/stop.h"

namespace {

class MemberChains : public support::GraphTest {
 protected:
  ~MemberChains() override { FreePassState(); }

  NodeId AddReferenceTo(NodeId node) {
    const NodeId edge = Add(DFG_EDGE_PRESEDE);
    Chain({edge, node});
    return edge;
  }
  // A variable with the index 0.
  NodeId AddElement(const char* name) {
    const NodeId port = Add(DFG_INPUT_VAR);
    CdfgSetAttrStr(graph, port, DfgPort_NAME, name);
    const NodeId index = Add(DFG_DIMENSION);
    Own(port, DfgPort_DIMNODE, index);
    CdfgSetAttrNode(graph, index, DfgDim_NODE, AddReferenceTo(Add(DFG_INPUT_CONST)));
    return port;
  }
  // void f() { v[s.m[0]. ..]; } with `count` elements in the index, f being a module.
  void AddModule(int count) {
    const NodeId root = Add(CFG_ROOT);
    const NodeId file = Add(CFG_FILEINFO);
    const NodeId function = Add(CFG_FUNCTION);
    const NodeId datapath = Add(CFG_STATE_DATAPATH);
    const NodeId statement = Add(DFG_MANAGE_OPERATION);
    Own(root, CfgRoot_ELEMENT, file);
    CdfgSetAttrStr(graph, file, CfgFileinfo_NAME, "top.c");
    Own(file, CfgFileinfo_ELEMENT, function);
    CdfgSetFileName(graph, function, "top.c");
    CdfgSetAttrStr(graph, function, CfgFunc_NAME, "f");
    Own(function, CfgFunc_STARTCFG, datapath);
    Own(datapath, CfgDatapath_OPELIST, statement);
    const NodeId array = AddElement("v");
    Own(statement, DfgOpeman_OPE, AddReferenceTo(array));
    const NodeId first = AddElement("s");
    CdfgSetAttrNode(graph, CdfgGetAttr(graph, array, DfgPort_DIMNODE), DfgDim_NODE,
                    AddReferenceTo(first));
    for (NodeId last = first; --count > 0;) {
      const NodeId member = AddElement("m");
      CdfgSetAttrNode(graph, last, DfgPort_STRSON, member);
      last = member;
    }
    AddModuleFunction(graph, function, nullptr);
  }
  support::Outcome Elaborated() {
    return support::RunCatchingStop([this] {
      for (const PipelineStep& step : Pipeline()) {
        if (std::string(step.name) != "module-functions") RunStep(step, graph);
      }
    });
  }
};

TEST_F(MemberChains, GiveAStatementForEveryElement) {
  AddModule(3);
  const std::size_t before = CdfgNodeCount(graph);
  EXPECT_EQ(Elaborated(), support::Quiet());
  // A declaration, an edge, a target, a statement and a reference of two nodes for each of the
  // three elements, and the datapaths of three statements.
  EXPECT_EQ(CdfgNodeCount(graph), before + 3 * 6 + 3);
}

// With work that grows with the square of their number, these would use up what a step is granted.
TEST_F(MemberChains, CostInProportionToTheirNumber) {
  const int count = support::kAddressSanitizer ? 200000 : 400000;
  AddModule(count);
  EXPECT_EQ(Elaborated(), support::Quiet());
}

}  // namespace
