// Tags as long as a file can hold, which a case cannot show.
#include <string>

#include "cdfg/name_set.h"
#include "driver/pipeline.h"
#include "passes/modify_structure.h"
#include "tests/support/graphs.h"

namespace {

const std::string kLong(65534, 't');

// A file with definitions of one nested structure each.
class LongTags : public support::GraphTest {
 protected:
  LongTags() {
    NameSetInit();
    const NodeId root = Add(CFG_ROOT);
    file_ = Add(CFG_FILEINFO);
    Own(root, CfgRoot_ELEMENT, file_);
  }
  ~LongTags() override { FreePassState(); }

  // struct TAG { struct { } member; }; answers the nested structure.
  NodeId AddDefinition(const std::string& tag) {
    const NodeId definition = Add(CFG_STRUCT_DEF);
    if (last_ == 0) {
      Own(file_, CfgFileinfo_ELEMENT, definition);
    } else {
      Chain({last_, definition});
    }
    last_ = definition;
    const NodeId structure = Add(CFG_STRUCT);
    const NodeId member = Add(CFG_DECLARE);
    const NodeId nested_definition = Add(CFG_STRUCT_DEF);
    const NodeId nested = Add(CFG_STRUCT);
    Own(definition, CfgStructDef_STRUCT, structure);
    CdfgSetAttrStr(graph, structure, CfgStruct_TAGNAME, tag.c_str());
    Own(structure, CfgStruct_MEMBER, member);
    CdfgSetAttrInt(graph, member, CfgDecl_VALTYPE, DECL_VALTYPE_STRUCT);
    CdfgSetAttrNode(graph, member, CfgDecl_STRUCTORGNODE, nested_definition);
    Own(nested_definition, CfgStructDef_STRUCT, nested);
    return nested;
  }
  std::string TagOf(NodeId structure) const {
    const char* tag = CdfgGetAttrStr(graph, structure, CfgStruct_TAGNAME);
    return tag == nullptr ? "(none)" : tag;
  }

 private:
  NodeId file_ = 0;
  NodeId last_ = 0;
};

TEST_F(LongTags, EqualOnesAreOneTag) {
  const NodeId first = AddDefinition(kLong + "a");
  const NodeId second = AddDefinition(kLong + "a");
  ModifyStructures(graph);
  EXPECT_EQ(TagOf(first), "__ss_tag_1");
  EXPECT_EQ(TagOf(second), "__ss_tag_1");
}

TEST_F(LongTags, OnesThatDifferInTheLastByteAreTwo) {
  const NodeId first = AddDefinition(kLong + "a");
  const NodeId second = AddDefinition(kLong + "b");
  ModifyStructures(graph);
  EXPECT_EQ(TagOf(first), "__ss_tag_2");
  EXPECT_EQ(TagOf(second), "__ss_tag_1");
}

}  // namespace
