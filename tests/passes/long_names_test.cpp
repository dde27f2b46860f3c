// Names that are longer, or more, than a case can show.
#include <string>

#include "driver/pipeline.h"
#include "passes/module_list.h"
#include "passes/rename_locals.h"
#include "tests/support/graphs.h"

namespace {

// A module function with arguments and one block with variables.
class LongNames : public support::GraphTest {
 protected:
  LongNames() {
    const NodeId root = Add(CFG_ROOT);
    const NodeId file = Add(CFG_FILEINFO);
    function_ = Add(CFG_FUNCTION);
    Own(root, CfgRoot_ELEMENT, file);
    Own(file, CfgFileinfo_ELEMENT, function_);
    Place(function_, "top.c", 0, 0);
    CdfgSetAttrStr(graph, file, CfgFileinfo_NAME, "top.c");
    CdfgSetAttrStr(graph, function_, CfgFunc_NAME, "f");
    AddModuleFunction(graph, function_, nullptr);
    AddBlock();
  }
  ~LongNames() override { FreePassState(); }

  NodeId AddArgument(const std::string& name) {
    return AddDeclaration(function_, CfgFunc_ARGLIST, last_argument_, name);
  }
  NodeId AddVariable(const std::string& name) {
    return AddDeclaration(group_, CfgDeclDef_DECL, last_variable_, name);
  }
  std::string NameOf(NodeId declaration) const {
    const char* name = CdfgGetAttrStr(graph, declaration, CfgDecl_NAME);
    return name == nullptr ? "(none)" : name;
  }

 private:
  void AddBlock() {
    const NodeId loop = Add(CFG_LOOP_BEGIN);
    const NodeId body = Add(CFG_LOOP_STAT);
    group_ = Add(CFG_DECLARE_DEF);
    Own(function_, CfgFunc_STARTCFG, loop);
    Own(loop, CfgLoopBegin_CFG, body);
    Own(body, CfgLoopStat_CFG, group_);
  }

  NodeId AddDeclaration(NodeId owner, std::uint32_t attribute, NodeId& last,
                        const std::string& name) {
    const NodeId declaration = Add(CFG_DECLARE);
    CdfgSetAttrStr(graph, declaration, CfgDecl_NAME, name.c_str());
    if (last == 0) {
      Own(owner, attribute, declaration);
    } else {
      Chain({last, declaration});
    }
    last = declaration;
    return declaration;
  }

  NodeId function_ = 0;
  NodeId group_ = 0;
  NodeId last_argument_ = 0;
  NodeId last_variable_ = 0;
};

TEST_F(LongNames, NumbersGrowBeyondThreeDigits) {
  AddArgument("x");
  for (int number = 0; number < 1000; ++number) {
    const std::string digits = std::to_string(number);
    AddArgument("x" + std::string(3 - digits.size(), '0') + digits);
  }
  const NodeId first = AddVariable("x");
  const NodeId second = AddVariable("x");
  RenameBlockLocals(graph);
  EXPECT_EQ(NameOf(first), "x1000");
  EXPECT_EQ(NameOf(second), "x1001");
}

TEST_F(LongNames, NumberOfOneNameMeetsAnotherName) {
  AddArgument("x");
  for (int number = 0; number < 1000; ++number) AddVariable("x");
  AddArgument("x1");
  const NodeId other = AddVariable("x1");
  const NodeId last = AddVariable("x");
  RenameBlockLocals(graph);
  EXPECT_EQ(NameOf(other), "x1000");
  EXPECT_EQ(NameOf(last), "x1001");
}

TEST_F(LongNames, NameOfSixtyFourKibibytesIsRenamed) {
  const std::string name(65535, 'x');
  AddArgument(name);
  const NodeId first = AddVariable(name);
  const NodeId second = AddVariable(name);
  RenameBlockLocals(graph);
  EXPECT_EQ(NameOf(first), name + "000");
  EXPECT_EQ(NameOf(second), name + "001");
}

TEST_F(LongNames, NamesThatDifferInTheLastByteDoNotClash) {
  const std::string name(65534, 'x');
  AddArgument(name + "a");
  const NodeId variable = AddVariable(name + "b");
  RenameBlockLocals(graph);
  EXPECT_EQ(NameOf(variable), name + "b");
}

}  // namespace
