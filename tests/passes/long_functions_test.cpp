// Names of functions and files as long as a file can hold, which a case cannot show.
#include <cstddef>
#include <string>

#include "driver/pipeline.h"
#include "passes/function_roll.h"
#include "passes/module_list.h"
#include "passes/statement_to_block.h"
#include "tests/support/graphs.h"

namespace {

constexpr std::size_t kLongest = 65535;  // bytes of a string in a file

// Two functions of one file: g, and f which has a loop without a body and two marked calls of g.
class LongFunctions : public support::GraphTest {
 protected:
  LongFunctions() {
    const NodeId root = Add(CFG_ROOT);
    file_ = Add(CFG_FILEINFO);
    callee_ = Add(CFG_FUNCTION);
    function_ = Add(CFG_FUNCTION);
    Own(root, CfgRoot_ELEMENT, file_);
    Own(file_, CfgFileinfo_ELEMENT, callee_);
    Chain({callee_, function_});
    AddBody();
  }
  ~LongFunctions() override { FreePassState(); }

  void NameFile(const std::string& name) {
    CdfgSetAttrStr(graph, file_, CfgFileinfo_NAME, name.c_str());
  }
  void NameFunction(NodeId function, const std::string& name, const std::string& file) {
    Place(function, file.c_str(), 0, 0);
    CdfgSetAttrStr(graph, function, CfgFunc_NAME, name.c_str());
  }
  void MarkCalls(const std::string& text) {
    for (const NodeId directive : {first_mark_, second_mark_}) {
      CdfgSetAttrStr(graph, directive, DfgDirective_STR, text.c_str());
    }
  }
  bool IsLoopBodyWrapped() const {
    return CdfgGetKind(graph, CdfgGetAttr(graph, loop_body_, CfgLoopStat_CFG)) == CFG_STATE_BEGIN;
  }
  std::string Text(NodeId node, std::uint32_t attribute) const {
    const char* text = CdfgGetAttrStr(graph, node, attribute);
    return text == nullptr ? "(none)" : text;
  }

  NodeId callee_ = 0;
  NodeId function_ = 0;
  NodeId first_call_ = 0;
  NodeId second_call_ = 0;

 private:
  void AddBody() {
    const NodeId loop = Add(CFG_LOOP_BEGIN);
    loop_body_ = Add(CFG_LOOP_STAT);
    const NodeId datapath = Add(CFG_STATE_DATAPATH);
    const NodeId first = AddCall(&first_call_, &first_mark_);
    const NodeId second = AddCall(&second_call_, &second_mark_);
    Own(function_, CfgFunc_STARTCFG, loop);
    Own(loop, CfgLoopBegin_CFG, loop_body_);
    Chain({loop, datapath});
    Own(datapath, CfgDatapath_OPELIST, first);
    Chain({first, second});
  }

  NodeId AddCall(NodeId* call, NodeId* mark) {
    const NodeId operation = Add(DFG_MANAGE_OPERATION);
    *call = Add(DFG_FUNC_CALL);
    *mark = Add(INFO_DIRECTIVE);
    Own(operation, DfgOpeman_OPE, *call);
    Own(*call, DfgFuncCall_DIRECTIVE, *mark);
    CdfgSetJump(graph, *call, callee_);
    return operation;
  }

  NodeId file_ = 0;
  NodeId loop_body_ = 0;
  NodeId first_mark_ = 0;
  NodeId second_mark_ = 0;
};

TEST_F(LongFunctions, FunctionAndFileWithLongNamesAreModuleCode) {
  const std::string file(kLongest, 'c');
  NameFile(file);
  NameFunction(function_, std::string(kLongest, 'f'), file);
  AddModuleFunction(graph, function_, nullptr);
  StatementsToBlocks(graph);
  EXPECT_TRUE(IsLoopBodyWrapped());
}

TEST_F(LongFunctions, FilesThatDifferInTheLastByteAreTwo) {
  const std::string file(kLongest - 1, 'c');
  NameFile(file + "a");
  NameFunction(function_, "f", file + "b");
  AddModuleFunction(graph, function_, nullptr);
  StatementsToBlocks(graph);
  EXPECT_FALSE(IsLoopBodyWrapped());
}

TEST_F(LongFunctions, CopyOfALongNameIsNamedAfterAllOfIt) {
  const std::string name(kLongest, 'g');
  NameFile("top.c");
  NameFunction(callee_, name, "top.c");
  NameFunction(function_, "f", "top.c");
  AddModuleFunction(graph, function_, nullptr);
  MarkCalls("roll");
  RollFunctions(graph);
  const NodeId copy = CdfgGetJump(graph, second_call_);
  EXPECT_EQ(CdfgGetJump(graph, first_call_), callee_);
  EXPECT_NE(copy, callee_);
  EXPECT_EQ(Text(copy, CfgFunc_NAME), name + "_roll_0001");
  EXPECT_EQ(Text(second_call_, DfgFuncCall_NAME), name + "_roll_0001");
  EXPECT_EQ(Text(callee_, CfgFunc_NAME), name);
}

TEST_F(LongFunctions, LongDirectiveThatBeginsWithRollIsNoMark) {
  NameFile("top.c");
  NameFunction(callee_, "g", "top.c");
  NameFunction(function_, "f", "top.c");
  AddModuleFunction(graph, function_, nullptr);
  MarkCalls("roll" + std::string(kLongest - 4, ' '));
  RollFunctions(graph);
  EXPECT_EQ(CdfgGetJump(graph, second_call_), callee_);
  EXPECT_EQ(CdfgGetNext(graph, callee_), function_);
}

}  // namespace
