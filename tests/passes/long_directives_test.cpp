// Directives and paths as long as a file can hold, and longer ones, which a case cannot show.
#include <cstddef>
#include <string>

#include "cdfg/chain.h"
#include "passes/inout_directives.h"
#include "tests/support/graphs.h"

namespace {

constexpr std::size_t kLongest = 65535;  // bytes of a string in a file

const std::string kPathWords = "input varname s.";
const std::string kLong(kLongest - kPathWords.size(), 'm');

// A global structure variable s with one member.
class LongDirectives : public support::GraphTest {
 protected:
  LongDirectives() {
    const NodeId root = Add(CFG_ROOT);
    const NodeId file = Add(CFG_FILEINFO);
    const NodeId group = Add(CFG_DECLARE_DEF);
    variable_ = Add(CFG_DECLARE);
    const NodeId structure = Add(CFG_STRUCT);
    member_ = Add(CFG_DECLARE);
    Own(root, CfgRoot_ELEMENT, file);
    Own(file, CfgFileinfo_ELEMENT, group);
    Own(group, CfgDeclDef_DECL, variable_);
    CdfgSetAttrStr(graph, variable_, CfgDecl_NAME, "s");
    CdfgSetAttrInt(graph, variable_, CfgDecl_VALTYPE, DECL_VALTYPE_STRUCT);
    Own(variable_, CfgDecl_STRUCTNODE, structure);
    Own(structure, CfgStruct_MEMBER, member_);
    CdfgSetAttrInt(graph, member_, CfgDecl_VALTYPE, DECL_VALTYPE_DOUBLE);
  }

  void NameMember(const std::string& name) {
    CdfgSetAttrStr(graph, member_, CfgDecl_NAME, name.c_str());
  }
  void Direct(const std::string& text) {
    const NodeId directive = Add(INFO_DIRECTIVE);
    Own(variable_, CfgDecl_DIRECTIVE, directive);
    CdfgSetAttrStr(graph, directive, DfgDirective_STR, text.c_str());
  }
  // The texts of the member's directives, each with a semicolon behind it.
  std::string Got() const {
    std::string texts;
    for (const NodeId node : NextChain(graph, CdfgGetAttr(graph, member_, CfgDecl_DIRECTIVE))) {
      const char* text = CdfgGetAttrStr(graph, node, DfgDirective_STR);
      texts.append(text == nullptr ? "(none)" : text).append(";");
    }
    return texts;
  }

 private:
  NodeId variable_ = 0;
  NodeId member_ = 0;
};

TEST_F(LongDirectives, LongPathIsFound) {
  NameMember(kLong);
  Direct(kPathWords + kLong);
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), kPathWords + kLong + ";");
}

TEST_F(LongDirectives, LongPathThatDiffersInTheLastByteIsNot) {
  NameMember(kLong + "a");
  Direct(kPathWords + kLong + "b");
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), "");
}

TEST_F(LongDirectives, LongTextIsCopiedWhole) {
  NameMember("m");
  const std::string text = "input varname s.m " + kLong;
  Direct(text);
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), text + ";");
}

TEST_F(LongDirectives, PathThatGoesOnBehindTheMemberIsNotFound) {
  NameMember("m");
  Direct(kPathWords + kLong);
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), "");
}

TEST_F(LongDirectives, MemberWithALongNameIsNotFoundByAShortPath) {
  NameMember(kLong);
  Direct(kPathWords + "m");
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), "");
}

TEST_F(LongDirectives, WordsBehindTheThirtiethAreNotSeen) {
  NameMember("m");
  std::string text = "input";
  for (int word = 0; word < 30000; ++word) text += " w";
  Direct(text + " varname s.m");
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), "");
}

TEST_F(LongDirectives, DelimitersAloneAreNoWords) {
  NameMember("m");
  Direct(std::string(kLongest, ':'));
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), "");
}

TEST_F(LongDirectives, FloatWithALongRestGoesOutTwice) {
  NameMember("m");
  Direct("float " + kLong + " 8");
  DivideInoutDirectives(graph);
  EXPECT_EQ(Got(), "float;float;");
}

}  // namespace
