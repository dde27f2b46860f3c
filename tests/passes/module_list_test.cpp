// The module function list and the questions it answers.
#include "passes/module_list.h"

#include <string>

#include "tests/support/graphs.h"

namespace {

class ModuleLists : public support::GraphTest {
 protected:
  ~ModuleLists() override { FreeModuleFunctions(); }

  ModuleFunctionRecord* AddModule(const char* name) {
    const NodeId function = Add(CFG_FUNCTION);
    Place(function, "top.c", 0, 0);
    CdfgSetAttrStr(graph, function, CfgFunc_NAME, name);
    return AddModuleFunction(graph, function, nullptr);
  }
};

TEST_F(ModuleLists, AnswerNothingWhileEmpty) {
  EXPECT_EQ(IsModuleFunction("f", "top.c"), 0);
  EXPECT_EQ(FindModuleInstance(nullptr, 1, "f", "top.c"), nullptr);
  EXPECT_EQ(AddModuleInstance(1, 1, "f", "top.c"), 0);
}

TEST_F(ModuleLists, KnowModulesAndInstancesByNameAndFile) {
  AddModule("f");
  EXPECT_EQ(AddModuleInstance(100, 100, "g", "sub.c"), 1);
  EXPECT_EQ(IsModuleFunction("f", "top.c"), 1);
  EXPECT_EQ(IsModuleFunction("g", "sub.c"), 1);
  EXPECT_EQ(IsModuleFunction("g", "top.c"), 0);
  EXPECT_EQ(IsModuleFunction("f", "sub.c"), 0);
  EXPECT_EQ(IsModuleFunction("sub.c", "g"), 0);
  EXPECT_EQ(IsModuleFunction("c", "top."), 0) << "a name is no part of a file";
  EXPECT_EQ(IsModuleFunction(nullptr, "top.c"), 0);
  EXPECT_EQ(IsModuleFunction("f", nullptr), 0);
}

TEST_F(ModuleLists, TakeAFunctionOnce) {
  ModuleFunctionRecord* f = AddModule("f");
  EXPECT_EQ(AddModuleFunction(graph, f->function, nullptr), nullptr);
  ModuleFunctionRecord* g = AddModule("g");
  EXPECT_EQ(ModuleFunctionList, g);
  EXPECT_EQ(g->next, f);
  EXPECT_STREQ(g->name, "g");
  EXPECT_STREQ(g->file, "top.c");
  EXPECT_EQ(g->prefix, nullptr);
}

TEST_F(ModuleLists, FindTheNewestInstanceOfAModuleAndTheOldestOfAll) {
  ModuleFunctionRecord* f = AddModule("f");
  ModuleFunctionRecord* g = AddModule("g");
  ModuleInstanceRecord* oldest = PushModuleInstance(f, 101, 7, "h", "top.c");
  ModuleInstanceRecord* other = PushModuleInstance(g, 102, 7, "h", "top.c");
  EXPECT_EQ(FindModuleInstance(f, 7, "h", "top.c"), oldest);
  ModuleInstanceRecord* newest = PushModuleInstance(f, 103, 7, "h", "top.c");
  EXPECT_EQ(FindModuleInstance(f, 7, "h", "top.c"), newest);
  EXPECT_EQ(FindModuleInstance(g, 7, "h", "top.c"), other);
  EXPECT_EQ(FindModuleInstance(nullptr, 7, "h", "top.c"), oldest);
  EXPECT_EQ(f->instances, newest);
  EXPECT_EQ(newest->next, oldest);
}

TEST_F(ModuleLists, TellInstancesApartByBaseNameAndFile) {
  ModuleFunctionRecord* f = AddModule("f");
  ModuleInstanceRecord* plain = PushModuleInstance(f, 101, 7, "h", "top.c");
  ModuleInstanceRecord* nowhere = PushModuleInstance(f, 102, 7, "h", nullptr);
  ModuleInstanceRecord* nameless = PushModuleInstance(f, 103, 7, nullptr, "top.c");
  EXPECT_EQ(FindModuleInstance(f, 7, "h", "top.c"), plain);
  EXPECT_EQ(FindModuleInstance(f, 7, "h", nullptr), nowhere);
  EXPECT_EQ(FindModuleInstance(f, 7, nullptr, "top.c"), nameless);
  EXPECT_EQ(FindModuleInstance(f, 7, nullptr, nullptr), nullptr);
  EXPECT_EQ(FindModuleInstance(f, 7, "", "top.c"), nullptr) << "an empty name is a name";
  EXPECT_EQ(FindModuleInstance(f, 8, "h", "top.c"), nullptr);
  EXPECT_EQ(nowhere->file, nullptr);
  EXPECT_EQ(nameless->name, nullptr);
}

TEST_F(ModuleLists, KeepCopiesOfTexts) {
  ModuleFunctionRecord* f = AddModule("f");
  std::string name = "h";
  std::string file = "sub.c";
  const ModuleInstanceRecord* instance = PushModuleInstance(f, 101, 7, name.c_str(), file.c_str());
  name = "x";
  file = "other";
  EXPECT_STREQ(instance->name, "h");
  EXPECT_STREQ(instance->file, "sub.c");
  EXPECT_STREQ(PushModuleInstance(f, 102, 8, "h", "top.c")->file, "top.c");
}

TEST_F(ModuleLists, HoldMany) {
  ModuleFunctionRecord* f = AddModule("f");
  constexpr NodeId kCount = 20000;
  const auto name = [](NodeId i) { return "h" + std::to_string(i); };
  for (NodeId i = 1; i <= kCount; ++i) PushModuleInstance(f, i, i, name(i).c_str(), "top.c");
  for (NodeId i = 1; i <= kCount; ++i) {
    const ModuleInstanceRecord* found = FindModuleInstance(f, i, name(i).c_str(), "top.c");
    ASSERT_NE(found, nullptr);
    ASSERT_EQ(found->function, i);
    ASSERT_EQ(IsModuleFunction(name(i).c_str(), "top.c"), 1);
  }
  FreeModuleFunctions();
  EXPECT_EQ(ModuleFunctionList, nullptr);
  EXPECT_EQ(FindModuleInstance(nullptr, 1, "h1", "top.c"), nullptr);
  EXPECT_EQ(IsModuleFunction("h1", "top.c"), 0);
}

}  // namespace
