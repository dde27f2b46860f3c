// The debug listing, byte for byte.
#include "cdfg/dump.h"

#include <filesystem>
#include <string>

#include "tests/support/files.h"
#include "tests/support/graphs.h"

namespace {

using support::GraphTest;
using support::Stream;
using support::TempDir;

class Dump : public GraphTest {
 protected:
  std::string NodeText(NodeId id) {
    const Stream stream(std::tmpfile());
    CdfgDumpNode(graph, id, stream.get());
    return support::ReadStream(stream.get());
  }
  // The one attribute line of a node.
  std::string AttributeLine(NodeId id) {
    const std::string text = NodeText(id);
    const std::size_t begin = text.find("  AttrId");
    const std::size_t end = text.find("FileInfo");
    EXPECT_NE(begin, std::string::npos);
    return text.substr(begin, end - begin);
  }
  std::string GraphText() {
    const std::string path = dir.Path("dump.txt");
    EXPECT_EQ(CdfgDumpText(graph, path.c_str()), 0);
    return support::ReadFile(path);
  }

  TempDir dir;
};

// --- Whole graphs --------------------------------------------------------------------------------

TEST_F(Dump, OfAnEmptyGraphIsTheHeader) {
  const std::string text = GraphText();
  EXPECT_EQ(text, "tavrex ver. 0.08\n\n");
  EXPECT_EQ(text.size(), 18U);
}

TEST_F(Dump, ShowsEveryPartOfANode) {
  CdfgAddNodeWithId(graph, 12);
  CdfgSetKind(graph, 12, CFG_LOOP_BEGIN);
  CdfgSetPrev(graph, 12, 3);
  CdfgSetNext(graph, 12, 4);
  CdfgSetJump(graph, 12, 5);
  CdfgSetAttrInt(graph, 12, CfgLoopBegin_LOOPCNT, 8);
  CdfgSetAttrStr(graph, 12, CfgLoopBegin_LABEL, "outer");
  Place(12, "fir.c", 31, 5);
  EXPECT_EQ(NodeText(12),
            "NodeId  : 12\n"
            "Cnst    : 279(CFG_LOOP_BEGIN)\n"
            "PrevId  : 3\n"
            "NextId  : 4\n"
            "JumpId  : 5\n"
            "AttrCnt : 2\n"
            "  AttrId/Kind/value : 7(CfgLoopBegin_LOOPCNT)/2(ATTR_INT)/8\n"
            "  AttrId/Kind/value : 5(CfgLoopBegin_LABEL)/5(ATTR_STRING)/outer\n"
            "FileInfo.FileName/Line/Column  : fir.c/31/5\n"
            "\n");
}

TEST_F(Dump, ShowsNodesInTheOrderOfTheirMaking) {
  CdfgAddNodeWithId(graph, 2);
  CdfgAddNodeWithId(graph, 1);
  CdfgSetKind(graph, 1, CFG_ROOT);
  EXPECT_EQ(GraphText(),
            "tavrex ver. 0.08\n"
            "\n"
            "NodeId  : 2\n"
            "Cnst    : 0()\n"
            "PrevId  : 0\n"
            "NextId  : 0\n"
            "JumpId  : 0\n"
            "AttrCnt : 0\n"
            "FileInfo.FileName/Line/Column  : (null)/0/0\n"
            "\n"
            "NodeId  : 1\n"
            "Cnst    : 16(CFG_ROOT)\n"
            "PrevId  : 0\n"
            "NextId  : 0\n"
            "JumpId  : 0\n"
            "AttrCnt : 0\n"
            "FileInfo.FileName/Line/Column  : (null)/0/0\n"
            "\n");
}

TEST_F(Dump, PassesOverFreedNodes) {
  Add(CFG_ROOT);
  Add(CFG_FILEINFO);
  CdfgFreeNode(graph, 1);
  EXPECT_EQ(GraphText(), "tavrex ver. 0.08\n\n" + NodeText(2));
}

TEST_F(Dump, ShowsANodeThatNoLookupFinds) {
  CdfgAddNodeWithId(graph, 0);
  EXPECT_NE(GraphText().find("NodeId  : 0\n"), std::string::npos);
}

TEST_F(Dump, GoesToAnOpenStreamToo) {
  Add(CFG_ROOT);
  const Stream stream(std::tmpfile());
  EXPECT_EQ(CdfgDumpStream(graph, stream.get()), 0);
  EXPECT_EQ(support::ReadStream(stream.get()), GraphText());
}

// --- Values --------------------------------------------------------------------------------------

TEST_F(Dump, ShowsACharAsItself) {
  CdfgSetAttrChar(graph, Add(CFG_DECLARE), CfgDecl_STATE, 'A');
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 2(CfgDecl_STATE)/1(ATTR_CHAR)/A\n");
}

TEST_F(Dump, ShowsACharThatCannotBePrintedAsItsByte) {
  CdfgSetAttrChar(graph, Add(CFG_DECLARE), CfgDecl_STATE, -1);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 2(CfgDecl_STATE)/1(ATTR_CHAR)/\xFF\n");
  CdfgSetAttrChar(graph, 1, CfgDecl_STATE, 0);
  EXPECT_EQ(AttributeLine(1),
            std::string("  AttrId/Kind/value : 2(CfgDecl_STATE)/1(ATTR_CHAR)/\0\n", 54));
}

TEST_F(Dump, ShowsAnIntWithItsSign) {
  CdfgSetAttrInt(graph, Add(CFG_DECLARE), CfgDecl_DIMCNT, -7);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 14(CfgDecl_DIMCNT)/2(ATTR_INT)/-7\n");
}

TEST_F(Dump, ShowsALongIntegerWhole) {
  CdfgSetAttrInt64(graph, Add(CFG_DECLARE), CfgDecl_VALUE, -1234567890123);
  EXPECT_EQ(AttributeLine(1),
            "  AttrId/Kind/value : 7(CfgDecl_VALUE)/3(ATTR_LONGLONG)/-1234567890123\n");
}

TEST_F(Dump, ShowsADoubleWithAnExponent) {
  CdfgSetAttrDouble(graph, Add(CFG_DECLARE), CfgDecl_VALUE, 1234.5);
  EXPECT_EQ(AttributeLine(1),
            "  AttrId/Kind/value : 7(CfgDecl_VALUE)/4(ATTR_FLOAT)/1.234500e+03\n");
}

TEST_F(Dump, ShowsAStringWithoutQuotes) {
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), CfgDecl_NAME, "a b");
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 3(CfgDecl_NAME)/5(ATTR_STRING)/a b\n");
}

TEST_F(Dump, ShowsAnEmptyStringAsNothing) {
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), CfgDecl_NAME, "");
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 3(CfgDecl_NAME)/5(ATTR_STRING)/\n");
}

TEST_F(Dump, ShowsANullStringAsNull) {
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), CfgDecl_NAME, nullptr);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 3(CfgDecl_NAME)/5(ATTR_STRING)/(null)\n");
}

TEST_F(Dump, ShowsALongStringWhole) {
  const std::string text(100000, 'x');
  CdfgSetAttrStr(graph, Add(CFG_DECLARE), CfgDecl_NAME, text.c_str());
  EXPECT_TRUE(AttributeLine(1) ==
              "  AttrId/Kind/value : 3(CfgDecl_NAME)/5(ATTR_STRING)/" + text + "\n");
}

TEST_F(Dump, ShowsANodeReferenceAsItsId) {
  CdfgSetAttrNode(graph, Add(CFG_DECLARE), CfgDecl_INIT, 77);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 22(CfgDecl_INIT)/6(ATTR_NODE)/77\n");
}

TEST_F(Dump, ShowsTheNameOfAnEnumeratedValue) {
  CdfgSetAttrInt(graph, Add(DFG_OPERATION), DfgOpe_TYPE, 12);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 1(DfgOpe_TYPE)/2(ATTR_INT)/12(CALC_Div)\n");
}

TEST_F(Dump, ShowsNoNameForAValueThatHasNone) {
  CdfgSetAttrInt(graph, Add(DFG_OPERATION), DfgOpe_TYPE, 50);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 1(DfgOpe_TYPE)/2(ATTR_INT)/50\n");
  CdfgSetAttrInt(graph, 1, DfgOpe_TYPE, -12);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 1(DfgOpe_TYPE)/2(ATTR_INT)/-12\n");
}

TEST_F(Dump, ShowsTheNameOfAnEnumeratedValueThatIsAReference) {
  CdfgSetAttrNode(graph, Add(DFG_OPERATION), DfgOpe_TYPE, 12);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 1(DfgOpe_TYPE)/6(ATTR_NODE)/12(CALC_Div)\n");
}

TEST_F(Dump, ShowsNoNameForAnEnumeratedValueOfAnotherWidth) {
  CdfgSetAttrInt64(graph, Add(DFG_OPERATION), DfgOpe_TYPE, 12);
  EXPECT_EQ(AttributeLine(1), "  AttrId/Kind/value : 1(DfgOpe_TYPE)/3(ATTR_LONGLONG)/12\n");
}

TEST_F(Dump, ShowsEachOfTheSixEnumerations) {
  CdfgSetAttrInt(graph, Add(CFG_FUNCTION), CfgFunc_RETTYPE, 9);
  EXPECT_EQ(AttributeLine(1),
            "  AttrId/Kind/value : 7(CfgFunc_RETTYPE)/2(ATTR_INT)/9(DECL_VALTYPE_DOUBLE)\n");
  CdfgSetAttrInt(graph, Add(CFG_DECLARE), CfgDecl_KIND, 16);
  EXPECT_EQ(AttributeLine(2), "  AttrId/Kind/value : 1(CfgDecl_KIND)/2(ATTR_INT)/16(DECL_REG)\n");
  CdfgSetAttrInt(graph, Add(CFG_DECLARE), CfgDecl_SIGNED, 2);
  EXPECT_EQ(AttributeLine(3),
            "  AttrId/Kind/value : 6(CfgDecl_SIGNED)/2(ATTR_INT)/2(DECL_UNSIGNED)\n");
  CdfgSetAttrInt(graph, Add(CFG_DECLARE), CfgDecl_VALTYPE, 0);
  EXPECT_EQ(AttributeLine(4),
            "  AttrId/Kind/value : 18(CfgDecl_VALTYPE)/2(ATTR_INT)/0(DECL_VALTYPE_NONE)\n");
  CdfgSetAttrInt(graph, Add(CFG_LOOP_BEGIN), CfgLoopBegin_LOOPTYPE, 5);
  EXPECT_EQ(AttributeLine(5),
            "  AttrId/Kind/value : 4(CfgLoopBegin_LOOPTYPE)/2(ATTR_INT)/5(LOOP_FOR)\n");
  CdfgSetAttrInt(graph, Add(DFG_OPERATION), DfgOpe_TYPE, 14);
  EXPECT_EQ(AttributeLine(6), "  AttrId/Kind/value : 1(DfgOpe_TYPE)/2(ATTR_INT)/14(CALC_Add)\n");
}

// --- Numbers without a name, and large ones ------------------------------------------------------

TEST_F(Dump, ShowsNoNameForAnUnknownKindOrAttribute) {
  const NodeId node = Add(52);
  CdfgSetAttrInt(graph, node, 3, 1);
  const std::string text = NodeText(node);
  EXPECT_NE(text.find("Cnst    : 52()\n"), std::string::npos);
  EXPECT_EQ(AttributeLine(node), "  AttrId/Kind/value : 3()/2(ATTR_INT)/1\n");
}

TEST_F(Dump, ShowsLargeNumbersAsNegative) {
  CdfgAddNodeWithId(graph, 4294967295U);
  CdfgSetKind(graph, 4294967295U, 4294967294U);
  CdfgSetPrev(graph, 4294967295U, 4000000000U);
  CdfgSetNext(graph, 4294967295U, 2147483648U);
  CdfgSetJump(graph, 4294967295U, 2147483647U);
  CdfgSetAttrNode(graph, 4294967295U, 4294967293U, 4294967292U);
  Place(4294967295U, "a.c", -1, -2);
  EXPECT_EQ(NodeText(4294967295U),
            "NodeId  : -1\n"
            "Cnst    : -2()\n"
            "PrevId  : -294967296\n"
            "NextId  : -2147483648\n"
            "JumpId  : 2147483647\n"
            "AttrCnt : 1\n"
            "  AttrId/Kind/value : -3()/6(ATTR_NODE)/-4\n"
            "FileInfo.FileName/Line/Column  : a.c/-1/-2\n"
            "\n");
}

// --- Where nothing is shown ----------------------------------------------------------------------

TEST_F(Dump, OfAnUnknownNodeIsNothing) {
  Add(CFG_ROOT);
  EXPECT_EQ(NodeText(0), "");
  EXPECT_EQ(NodeText(2), "");
}

TEST_F(Dump, OfNoGraphFailsAndMakesNoFile) {
  const std::string path = dir.Path("none.txt");
  EXPECT_EQ(CdfgDumpText(nullptr, path.c_str()), -1);
  EXPECT_FALSE(std::filesystem::exists(path));
  const Stream stream(std::tmpfile());
  EXPECT_EQ(CdfgDumpStream(nullptr, stream.get()), -1);
  CdfgDumpNode(nullptr, 1, stream.get());
  EXPECT_EQ(support::ReadStream(stream.get()), "");
}

TEST_F(Dump, FailsWhereNoFileCanBeMade) {
  EXPECT_EQ(CdfgDumpText(graph, dir.Path("missing/dump.txt").c_str()), -1);
}

TEST_F(Dump, ReplacesWhatIsThere) {
  const std::string path = dir.File("dump.txt", std::string(1000, 'o'));
  EXPECT_EQ(CdfgDumpText(graph, path.c_str()), 0);
  EXPECT_EQ(support::ReadFile(path).size(), 18U);
}

}  // namespace
