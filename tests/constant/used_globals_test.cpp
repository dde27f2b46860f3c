// Which globals count as used is shown by the cases of the pass; here is what no case can show: the
// order of the answer, and that nothing is left behind.
#include "constant/used_globals.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

int IsAny(const char*, const char*) { return 1; }
int IsNone(const char*, const char*) { return 0; }

// A design with three globals and a function whose statement is one expression.
class UsedGlobals : public support::GraphTest {
 protected:
  UsedGlobals() {
    Own(root, CfgRoot_ELEMENT, file);
    Own(file, CfgFileinfo_ELEMENT, group);
    Own(group, CfgDeclDef_DECL, globals[0]);
    Chain({globals[0], globals[1], globals[2]});
    Chain({group, function});
    Own(function, CfgFunc_STARTCFG, statement);
    Own(statement, CfgDatapath_OPELIST, operation);
  }

  NodeId AddReference(NodeId declaration) {
    const NodeId variable = Add(DFG_INPUT_VAR);
    CdfgSetAttrNode(graph, variable, DfgPort_DECL, declaration);
    return variable;
  }

  int CountUserData() const {
    int count = 0;
    for (std::size_t place = 0; place < CdfgNodeCount(graph); ++place) {
      if (CdfgGetUserData(graph, CdfgNodeIdAt(graph, place)) != nullptr) ++count;
    }
    return count;
  }

  const NodeId root = Add(CFG_ROOT);
  const NodeId file = Add(CFG_FILEINFO);
  const NodeId group = Add(CFG_DECLARE_DEF);
  const NodeId globals[3] = {Add(CFG_DECLARE), Add(CFG_DECLARE), Add(CFG_DECLARE)};
  const NodeId function = Add(CFG_FUNCTION);
  const NodeId statement = Add(CFG_STATE_DATAPATH);
  const NodeId operation = Add(DFG_MANAGE_OPERATION);
};

TEST_F(UsedGlobals, AreAnsweredLastFirstAndOnce) {
  const NodeId first = AddReference(globals[0]);
  Chain({first, AddReference(globals[2]), AddReference(globals[0])});
  CdfgSetAttrNode(graph, operation, DfgOpeman_OPE, first);
  EXPECT_EQ(FindUsedGlobals(graph, IsAny), (std::vector<NodeId>{globals[2], globals[0]}));
  EXPECT_EQ(CountUserData(), 0);
}

TEST_F(UsedGlobals, AreNoneWithoutModuleCode) {
  CdfgSetAttrNode(graph, operation, DfgOpeman_OPE, AddReference(globals[0]));
  EXPECT_EQ(FindUsedGlobals(graph, IsNone), std::vector<NodeId>{});
}

TEST_F(UsedGlobals, DoNotIncludeLocals) {
  const NodeId local = Add(CFG_DECLARE);
  Own(function, CfgFunc_DECLARE, local);
  CdfgSetAttrNode(graph, operation, DfgOpeman_OPE, AddReference(local));
  EXPECT_EQ(FindUsedGlobals(graph, IsAny), std::vector<NodeId>{});
}

TEST_F(UsedGlobals, MayBeListedTwice) {
  const NodeId second_group = Add(CFG_DECLARE_DEF);
  CdfgSetAttrNode(graph, second_group, CfgDeclDef_DECL, globals[1]);
  Chain({function, second_group});
  CdfgSetAttrNode(graph, operation, DfgOpeman_OPE, AddReference(globals[2]));
  EXPECT_EQ(FindUsedGlobals(graph, IsAny), std::vector<NodeId>{globals[2]});
  EXPECT_EQ(CountUserData(), 0);
}

TEST_F(UsedGlobals, LeaveNothingBehindWhenTheWalkIsStopped) {
  const NodeId reference = AddReference(globals[0]);
  CdfgSetNext(graph, reference, reference);
  CdfgSetAttrNode(graph, operation, DfgOpeman_OPE, reference);
  EXPECT_EQ(support::RunCatchingStop([&] { FindUsedGlobals(graph, IsAny); }),
            support::Endless(reference));
  EXPECT_EQ(CountUserData(), 0);
}

}  // namespace
