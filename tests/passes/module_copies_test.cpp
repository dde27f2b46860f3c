// Copies for modules with a prefix in graphs where the walk and what it changes meet.
#include "passes/module_copies.h"

#include <cstdint>

#include "passes/module_functions.h"
#include "passes/module_list.h"
#include "tests/support/graphs.h"

namespace {

// A design in which main calls f as a module with the prefix m, and f calls g twice.
class ModuleCopies : public support::GraphTest {
 protected:
  enum Id : NodeId {
    kF = 3,
    kG,
    kMain,
    kFirst = 10,
    kFirstCall = 12,
    kSecond = 13,
    kSecondCall = 15
  };

  ~ModuleCopies() override { FreeModuleFunctions(); }

  NodeId AddAs(NodeId id, std::uint32_t kind) {
    CdfgAddNodeWithId(graph, id);
    CdfgSetKind(graph, id, kind);
    return id;
  }

  // A datapath with one call: `id` and the two ids behind it.
  NodeId AddCall(NodeId id, NodeId callee, const char* name) {
    AddAs(id, CFG_STATE_DATAPATH);
    CdfgSetAttrNode(graph, id, CfgDatapath_OPELIST, AddAs(id + 1, DFG_MANAGE_OPERATION));
    CdfgSetAttrNode(graph, id + 1, DfgOpeman_OPE, AddAs(id + 2, DFG_FUNC_CALL));
    CdfgSetJump(graph, id + 2, callee);
    CdfgSetAttrStr(graph, id + 2, DfgFuncCall_NAME, name);
    return id;
  }

  void AddFunction(NodeId id, const char* name, NodeId next, NodeId body) {
    CdfgSetAttrStr(graph, AddAs(id, CFG_FUNCTION), CfgFunc_NAME, name);
    CdfgSetFileName(graph, id, "top.c");
    CdfgSetNext(graph, id, next);
    CdfgSetAttrNode(graph, id, CfgFunc_STARTCFG, body);
  }

  // New nodes count on from `last_id`.
  void AddDesign(NodeId last_id) {
    CdfgSetAttrNode(graph, AddAs(1, CFG_ROOT), CfgRoot_ELEMENT, 2);
    CdfgSetAttrNode(graph, AddAs(2, CFG_FILEINFO), CfgFileinfo_ELEMENT, kF);
    AddFunction(kF, "f", kG, kFirst);
    AddFunction(kG, "g", kMain, 20);
    AddFunction(kMain, "main", 0, 30);
    CdfgSetNext(graph, AddCall(kFirst, kG, "g"), kSecond);
    AddCall(kSecond, kG, "g");
    AddCall(20, 0, "none");
    const NodeId marked = AddCall(30, kF, "f") + 2;
    CdfgSetAttrNode(graph, marked, DfgFuncCall_DIRECTIVE, AddAs(40, INFO_DIRECTIVE));
    CdfgSetAttrInt(graph, 40, DfgDirective_TYPE, 55);
    CdfgSetAttrStr(graph, 40, DfgDirective_STR, "module prefix=m");
    AddAs(last_id, CFG_COMMENT);
  }
};

TEST_F(ModuleCopies, AreWhatBothCallsGoTo) {
  AddDesign(100);
  CollectModuleFunctions(graph);
  const NodeId copy = CdfgGetNext(graph, kG);
  EXPECT_EQ(CdfgGetKind(graph, copy), std::uint32_t{CFG_FUNCTION});
  EXPECT_STREQ(CdfgGetAttrStr(graph, copy, CfgFunc_NAME), "m_g");
  for (const NodeId call : {kFirstCall, kSecondCall}) {
    EXPECT_EQ(CdfgGetJump(graph, call), copy);
    EXPECT_STREQ(CdfgGetAttrStr(graph, call, DfgFuncCall_NAME), "m_g");
  }
}

// The nodes of the copy get the ids 7, 8, 9 and 10. From then on id 10 is the copied call, so
// nothing stands behind the statement that the walk is at.
TEST_F(ModuleCopies, MayHideStatementsThatAreStillAhead) {
  AddDesign(6);
  CollectModuleFunctions(graph);
  EXPECT_EQ(CdfgGetJump(graph, kFirstCall), 7u);
  EXPECT_STREQ(CdfgGetAttrStr(graph, kFirstCall, DfgFuncCall_NAME), "m_g");
  EXPECT_EQ(CdfgGetKind(graph, kFirst), std::uint32_t{DFG_FUNC_CALL});
  EXPECT_EQ(CdfgGetJump(graph, kSecondCall), kG);
  EXPECT_STREQ(CdfgGetAttrStr(graph, kSecondCall, DfgFuncCall_NAME), "g");
}

}  // namespace
