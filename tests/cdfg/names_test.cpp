// The names of kinds, attributes and values, and the numbers behind them.
#include "cdfg/names.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "cdfg/vocabulary.h"

namespace {

std::string KindName(std::uint32_t kind) {
  char buffer[kCdfgNameSize] = "left over";
  EXPECT_EQ(CdfgKindName(buffer, kind), 0);
  return buffer;
}

std::string AttrName(std::uint32_t kind, std::uint32_t attribute) {
  char buffer[kCdfgNameSize] = "left over";
  EXPECT_EQ(CdfgAttrName(buffer, kind, attribute), 0);
  return buffer;
}

std::string ValueName(std::uint32_t kind, std::uint32_t attribute, std::uint32_t value) {
  char buffer[kCdfgNameSize] = "left over";
  EXPECT_EQ(CdfgValueName(buffer, kind, attribute, value), 0);
  return buffer;
}

std::string ValueTypeName(std::uint32_t type) {
  char buffer[kCdfgNameSize] = "left over";
  EXPECT_EQ(CdfgValueTypeName(buffer, type), 0);
  return buffer;
}

// All the numbers looked at where a test says "no other": every number near the vocabulary, and
// some that would show an index out of bounds.
std::vector<std::uint32_t> ManyNumbers() {
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t number = 0; number < 1000; ++number) numbers.push_back(number);
  numbers.insert(numbers.end(), {65535, 65536 + 305, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF});
  return numbers;
}

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// The eight ranges of kinds.
constexpr Range kKindRanges[] = {{16, 17},   {32, 51},   {256, 290}, {304, 305},
                                 {320, 322}, {336, 345}, {352, 358}, {368, 378}};

bool IsKind(std::uint32_t number) {
  for (const Range& range : kKindRanges) {
    if (number >= range.first && number <= range.last) return true;
  }
  return false;
}

// One row per attribute list: the kinds that share it, its first id, the id and name of its end
// mark, and an id that is missing in between.
struct ListRow {
  std::vector<std::uint32_t> kinds;
  std::uint32_t first;
  std::uint32_t end;
  const char* end_name;
  std::uint32_t missing = 0;
};

const std::vector<ListRow>& Lists() {
  static const std::vector<ListRow> rows = {
      {{16}, 1, 4, "CfgRoot_END"},
      {{17}, 1, 3, "CfgFileinfo_END"},
      {{32}, 1, 10, "CfgModule_END"},
      {{33}, 1, 5, "CfgEnum_END"},
      {{34}, 1, 16, "CfgProc_END"},
      {{35}, 1, 9, "CfgTask_END"},
      {{36, 51}, 1, 18, "CfgFunc_END"},
      {{37}, 1, 2, "CfgAssign_END"},
      {{38}, 1, 7, "CfgInstance_END"},
      {{39}, 1, 3, "CfgTestbech_END"},
      {{40}, 1, 5, "CfgDefparam_END"},
      {{42}, 1, 2, "CfgDeclDef_END"},
      {{43}, 1, 2, "CfgStructDef_END"},
      {{44}, 1, 2, "CfgTypedefDef_END"},
      {{45}, 1, 4, "CfgStruct_END"},
      {{46}, 1, 7, "CfgTDef_END"},
      {{47}, 1, 32, "CfgDecl_END"},
      {{48}, 1, 2, "CfgMemberList_END"},
      {{49}, 1, 2, "CfgMember_END"},
      {{50}, 1, 3, "CfgEvent_END"},
      {{256}, 1, 4, "CfgClock_END"},
      {{257}, 0, 1, "CfgInitBegin_END"},
      {{259}, 0, 1, "CfgInitial_END"},
      {{260}, 1, 3, "CfgTimescale_END"},
      {{261}, 0, 9, "CfgDelay_END"},
      {{262}, 1, 6, "CfgStateBegin_END"},
      {{264}, 1, 3, "CfgDatapath_END"},
      {{265}, 1, 7, "CfgStateIf_END"},
      {{266}, 1, 3, "CfgIfThen_END"},
      {{267}, 1, 3, "CfgIfElse_END"},
      {{268}, 1, 2, "CfgStateEndif_END"},
      {{269, 270, 271}, 1, 8, "CfgStateCase_END"},
      {{272}, 1, 4, "CfgCaseItem_END"},
      {{273}, 1, 2, "CfgStateEndCase_END"},
      {{277}, 1, 4, "CfgPar_END"},
      {{279}, 1, 13, "CfgLoopBegin_END"},
      {{281}, 1, 3, "CfgLoopInit_END"},
      {{282}, 1, 4, "CfgLoopCond_END"},
      {{283}, 1, 3, "CfgLoopStat_END"},
      {{284}, 1, 3, "CfgLoopStep_END"},
      {{285}, 1, 3, "CfgStateLabel_END"},
      {{286}, 1, 6, "CfgDisable_END"},
      {{287}, 1, 3, "CfgGoto_END"},
      {{288}, 1, 3, "CfgReturn_END"},
      {{304}, 1, 4, "DfgOpeman_END", 3},
      {{305}, 1, 14, "DfgOpe_END"},
      {{320, 321, 322}, 1, 8, "DfgEdge_END"},
      {{336, 337, 338, 339, 340, 341, 342, 352, 353, 354, 355, 356, 357}, 1, 21, "DfgPort_END"},
      {{343, 358}, 1, 3, "DfgConcat_END"},
      {{344}, 1, 11, "DfgInputCnst_END"},
      {{345}, 1, 2, "DfgInputStr_END"},
      {{368}, 1, 21, "DfgFuncCall_END", 6},
      {{369}, 1, 7, "DfgTaskCall_END"},
      {{370}, 1, 2, "DfgSizeof_END"},
      {{371}, 1, 11, "DfgSpec_END"},
      {{372}, 1, 9, "DfgPostfix_END"},
      {{373}, 1, 5, "DfgDim_END"},
      {{374}, 1, 5, "DfgPortInfo_END"},
      {{375}, 1, 3, "DfgPortList_END"},
      {{376}, 1, 3, "DfgDirective_END"},
  };
  return rows;
}

// --- Kinds ---------------------------------------------------------------------------------------

TEST(KindNames, StandExactlyForTheNinetyKindsInTheirEightRanges) {
  std::set<std::string> names;
  for (const std::uint32_t number : ManyNumbers()) {
    const std::string name = KindName(number);
    EXPECT_EQ(!name.empty(), IsKind(number)) << number;
    if (!name.empty()) names.insert(name);
  }
  EXPECT_EQ(names.size(), 90U);
}

TEST(KindNames, AreTheSpellingsOfTheChain) {
  EXPECT_EQ(KindName(16), "CFG_ROOT");
  EXPECT_EQ(KindName(17), "CFG_FILEINFO");
  EXPECT_EQ(KindName(32), "CFG_MODULE");
  EXPECT_EQ(KindName(36), "CFG_FUNCTION");
  EXPECT_EQ(KindName(47), "CFG_DECLARE");
  EXPECT_EQ(KindName(51), "CFG_PROTO_FUNC");
  EXPECT_EQ(KindName(256), "CFG_STATE_CLOCK");
  EXPECT_EQ(KindName(264), "CFG_STATE_DATAPATH");
  EXPECT_EQ(KindName(270), "CFG_STATE_CASEX");
  EXPECT_EQ(KindName(279), "CFG_LOOP_BEGIN");
  EXPECT_EQ(KindName(290), "CFG_CONTINUE");
  EXPECT_EQ(KindName(304), "DFG_MANAGE_OPERATION");
  EXPECT_EQ(KindName(305), "DFG_OPERATION");
  EXPECT_EQ(KindName(322), "DFG_EDGE_PRESEDE");
  EXPECT_EQ(KindName(336), "DFG_INPUT_PORT");
  EXPECT_EQ(KindName(345), "DFG_INPUT_STRING");
  EXPECT_EQ(KindName(358), "DFG_OUTPUT_CONCAT");
  EXPECT_EQ(KindName(376), "INFO_DIRECTIVE");
  EXPECT_EQ(KindName(377), "CFG_COMMENT");
  EXPECT_EQ(KindName(378), "NODE_END");
}

TEST(KindNames, AreEmptyNextToTheRanges) {
  for (const std::uint32_t number : {0U, 15U, 18U, 31U, 52U, 255U, 291U, 303U, 306U, 319U, 323U,
                                     335U, 346U, 351U, 359U, 367U, 379U, 0xFFFFFFFFU}) {
    EXPECT_EQ(KindName(number), "") << number;
  }
}

TEST(KindConstants, HaveTheNumbersOfTheirNames) {
#define ROW(number, name, list)                     \
  EXPECT_EQ(static_cast<unsigned>(name), (number)); \
  EXPECT_EQ(KindName(number), #name);
  CDFG_KINDS(ROW)
#undef ROW
}

// --- Attributes ----------------------------------------------------------------------------------

TEST(AttributeNames, NumberThreeHundredAndSixtyNine) {
  std::set<std::string> names;
  for (const ListRow& list : Lists()) {
    for (std::uint32_t id = 0; id < 100; ++id) {
      const std::string name = AttrName(list.kinds.front(), id);
      if (name.empty()) continue;
      EXPECT_TRUE(names.insert(name).second) << name << " is in two lists";
    }
  }
  EXPECT_EQ(names.size(), 369U);
}

TEST(AttributeNames, RunFromTheFirstIdOfTheListToItsEndMark) {
  for (const ListRow& list : Lists()) {
    const std::uint32_t kind = list.kinds.front();
    for (const std::uint32_t id : ManyNumbers()) {
      const bool is_named =
          id >= list.first && id <= list.end && (list.missing == 0 || id != list.missing);
      EXPECT_EQ(!AttrName(kind, id).empty(), is_named) << kind << '/' << id;
    }
    EXPECT_EQ(AttrName(kind, list.end), list.end_name);
  }
}

TEST(AttributeNames, BeginWithThePrefixOfTheirList) {
  for (const ListRow& list : Lists()) {
    // The one list that spells its end mark another way than its names.
    std::string prefix(list.end_name, std::strlen(list.end_name) - 3);
    if (prefix == "CfgTestbech_") prefix = "CfgTestbench_";
    for (std::uint32_t id = list.first; id < list.end; ++id) {
      const std::string name = AttrName(list.kinds.front(), id);
      if (!name.empty()) {
        EXPECT_EQ(name.substr(0, prefix.size()), prefix);
      }
    }
  }
}

TEST(AttributeNames, AreSharedByTheKindsOfOneList) {
  for (const ListRow& list : Lists()) {
    for (const std::uint32_t kind : list.kinds) {
      for (std::uint32_t id = 0; id < 100; ++id) {
        EXPECT_EQ(AttrName(kind, id), AttrName(list.kinds.front(), id)) << kind << '/' << id;
      }
    }
  }
}

TEST(AttributeNames, AreEmptyForKindsWithoutAttributes) {
  for (const std::uint32_t kind :
       {41U, 258U, 263U, 274U, 275U, 276U, 278U, 280U, 289U, 290U, 377U, 378U}) {
    for (std::uint32_t id = 0; id < 100; ++id) EXPECT_EQ(AttrName(kind, id), "") << kind;
  }
}

TEST(AttributeNames, AreEmptyForUnknownKinds) {
  for (const std::uint32_t kind : ManyNumbers()) {
    if (!IsKind(kind)) {
      EXPECT_EQ(AttrName(kind, 1), "") << kind;
    }
  }
}

TEST(AttributeNames, CountOnBehindAMissingId) {
  EXPECT_EQ(AttrName(304, 2), "DfgOpeman_ORGOPE");
  EXPECT_EQ(AttrName(304, 3), "");
  EXPECT_EQ(AttrName(304, 4), "DfgOpeman_END");
  EXPECT_EQ(AttrName(368, 5), "DfgFuncCall_LSB");
  EXPECT_EQ(AttrName(368, 6), "");
  EXPECT_EQ(AttrName(368, 7), "DfgFuncCall_DIRECTIVE");
  EXPECT_EQ(AttrName(368, 20), "DfgFuncCall_FUNC_TYPEDEFLINK");
}

TEST(AttributeNames, BeginAtZeroInThreeLists) {
  EXPECT_EQ(AttrName(257, 0), "CfgInitBegin_LABEL");
  EXPECT_EQ(AttrName(259, 0), "CfgInitial_STARTCFG");
  EXPECT_EQ(AttrName(261, 0), "CfgDelay_UPMIN");
  EXPECT_EQ(AttrName(261, 8), "CfgDelay_TOFFMAX");
}

TEST(AttributeNames, DoNotBeginAtZeroInOtherLists) {
  for (const ListRow& list : Lists()) {
    if (list.first == 1) {
      EXPECT_EQ(AttrName(list.kinds.front(), 0), "");
    }
  }
}

TEST(AttributeNames, AreTheSpellingsOfTheChain) {
  EXPECT_EQ(AttrName(16, 1), "CfgRoot_ELEMENT");
  EXPECT_EQ(AttrName(36, 3), "CfgFunc_DECLARE");
  EXPECT_EQ(AttrName(36, 16), "CfgFunc_TYPEDEFLINK");
  EXPECT_EQ(AttrName(39, 2), "CfgTestbench_ELEMENT");
  EXPECT_EQ(AttrName(39, 3), "CfgTestbech_END");
  EXPECT_EQ(AttrName(47, 3), "CfgDecl_NAME");
  EXPECT_EQ(AttrName(47, 18), "CfgDecl_VALTYPE");
  EXPECT_EQ(AttrName(47, 31), "CfgDecl_TYPESTR");
  EXPECT_EQ(AttrName(260, 2), "CfgTimescale_PREVESION");
  EXPECT_EQ(AttrName(279, 7), "CfgLoopBegin_LOOPCNT");
  EXPECT_EQ(AttrName(305, 2), "DfgOpe_LEFT");
  EXPECT_EQ(AttrName(342, 3), "DfgPort_BEFOR");
  EXPECT_EQ(AttrName(357, 19), "DfgPort_STRSON");
  EXPECT_EQ(AttrName(344, 9), "DfgInputCnst_XZ");
  EXPECT_EQ(AttrName(376, 2), "DfgDirective_STR");
}

TEST(AttributeConstants, HaveTheNumbersOfTheirNames) {
  EXPECT_EQ(static_cast<unsigned>(CfgDecl_STRUCTORGNODE), 20U);
  EXPECT_EQ(static_cast<unsigned>(CfgInitBegin_LABEL), 0U);
  EXPECT_EQ(static_cast<unsigned>(DfgOpeman_END), 4U);
  EXPECT_EQ(static_cast<unsigned>(DfgFuncCall_DIRECTIVE), 7U);
  EXPECT_EQ(static_cast<unsigned>(CfgLoopBegin_LOOPCNT), 7U);
  EXPECT_EQ(static_cast<unsigned>(DfgPort_STRPARENT), 20U);
}

// --- Values --------------------------------------------------------------------------------------

struct EnumeratedRow {
  std::uint32_t kind;
  std::uint32_t attribute;
};

// The six attributes whose numbers have names.
constexpr EnumeratedRow kEnumerated[] = {{36, 7}, {47, 1}, {47, 6}, {47, 18}, {279, 4}, {305, 1}};

bool IsEnumerated(std::uint32_t kind, std::uint32_t attribute) {
  for (const EnumeratedRow& row : kEnumerated) {
    if (row.kind == kind && row.attribute == attribute) return true;
  }
  return false;
}

// The named values of an attribute, in ascending order.
std::vector<std::uint32_t> NamedValues(std::uint32_t kind, std::uint32_t attribute) {
  std::vector<std::uint32_t> values;
  for (const std::uint32_t value : ManyNumbers()) {
    if (!ValueName(kind, attribute, value).empty()) values.push_back(value);
  }
  return values;
}

std::vector<std::uint32_t> FromTo(std::uint32_t first, std::uint32_t last) {
  std::vector<std::uint32_t> numbers;
  for (std::uint32_t number = first; number <= last; ++number) numbers.push_back(number);
  return numbers;
}

using Numbers = std::vector<std::uint32_t>;

TEST(ValueNames, OfValueTypesLeaveOutThree) {
  const Numbers expected = {0, 1, 2, 4, 5, 6, 7, 8, 9, 10};
  EXPECT_EQ(NamedValues(36, 7), expected);
  EXPECT_EQ(NamedValues(47, 18), expected);
  for (const std::uint32_t value : expected) {
    EXPECT_EQ(ValueName(36, 7, value), ValueName(47, 18, value));
  }
  EXPECT_EQ(ValueName(36, 7, 0), "DECL_VALTYPE_NONE");
  EXPECT_EQ(ValueName(36, 7, 1), "DECL_VALTYPE_VOID");
  EXPECT_EQ(ValueName(36, 7, 2), "DECL_VALTYPE_CHAR");
  EXPECT_EQ(ValueName(36, 7, 4), "DECL_VALTYPE_INT");
  EXPECT_EQ(ValueName(36, 7, 5), "DECL_VALTYPE_LONG");
  EXPECT_EQ(ValueName(36, 7, 6), "DECL_VALTYPE_LONGLONG");
  EXPECT_EQ(ValueName(36, 7, 7), "DECL_VALTYPE_BOOL");
  EXPECT_EQ(ValueName(36, 7, 8), "DECL_VALTYPE_FLOAT");
  EXPECT_EQ(ValueName(36, 7, 9), "DECL_VALTYPE_DOUBLE");
  EXPECT_EQ(ValueName(36, 7, 10), "DECL_VALTYPE_STRUCT");
}

TEST(ValueNames, OfDeclarationKinds) {
  EXPECT_EQ(NamedValues(47, 1), (Numbers{1, 2, 3, 4, 5, 6, 7, 8, 16, 17, 32, 33, 34}));
  EXPECT_EQ(ValueName(47, 1, 1), "DECL_PARAMETER");
  EXPECT_EQ(ValueName(47, 1, 2), "DECL_INPUT");
  EXPECT_EQ(ValueName(47, 1, 3), "DECL_OUTPUT");
  EXPECT_EQ(ValueName(47, 1, 4), "DECL_INOUT");
  EXPECT_EQ(ValueName(47, 1, 5), "DECL_TIME");
  EXPECT_EQ(ValueName(47, 1, 6), "DECL_INTEGER");
  EXPECT_EQ(ValueName(47, 1, 7), "DECL_REAL");
  EXPECT_EQ(ValueName(47, 1, 8), "DECL_EVENT");
  EXPECT_EQ(ValueName(47, 1, 16), "DECL_REG");
  EXPECT_EQ(ValueName(47, 1, 17), "DECL_SREG");
  EXPECT_EQ(ValueName(47, 1, 32), "DECL_WIRE");
  EXPECT_EQ(ValueName(47, 1, 33), "DECL_SUPPLY0");
  EXPECT_EQ(ValueName(47, 1, 34), "DECL_SUPPLY1");
  EXPECT_EQ(ValueName(47, 1, 257), "") << "what variables hold has no name";
}

TEST(ValueNames, OfSignedness) {
  EXPECT_EQ(NamedValues(47, 6), (Numbers{0, 1, 2}));
  EXPECT_EQ(ValueName(47, 6, 0), "DECL_SIGNED_NONE");
  EXPECT_EQ(ValueName(47, 6, 1), "DECL_SIGNED");
  EXPECT_EQ(ValueName(47, 6, 2), "DECL_UNSIGNED");
}

TEST(ValueNames, OfLoopTypes) {
  EXPECT_EQ(NamedValues(279, 4), FromTo(0, 7));
  const std::array<const char*, 8> names = {"LOOP_NONE",   "LOOP_ALWAYS",  "LOOP_FOREVER",
                                            "LOOP_WHILE",  "LOOP_DOWHILE", "LOOP_FOR",
                                            "LOOP_REPEAT", "LOOP_WAIT"};
  for (std::uint32_t value = 0; value < names.size(); ++value) {
    EXPECT_EQ(ValueName(279, 4, value), names[value]);
  }
}

TEST(ValueNames, OfOperatorsBeginAtOne) {
  EXPECT_EQ(NamedValues(305, 1), FromTo(1, 39));
  EXPECT_EQ(ValueName(305, 1, 0), "");
  EXPECT_EQ(ValueName(305, 1, 1), "CALC_Plus");
  EXPECT_EQ(ValueName(305, 1, 4), "CALC_BitNot");
  EXPECT_EQ(ValueName(305, 1, 10), "CALC_XnorReduce");
  EXPECT_EQ(ValueName(305, 1, 11), "CALC_Mul");
  EXPECT_EQ(ValueName(305, 1, 12), "CALC_Div");
  EXPECT_EQ(ValueName(305, 1, 14), "CALC_Add");
  EXPECT_EQ(ValueName(305, 1, 16), "CALC_RightShift");
  EXPECT_EQ(ValueName(305, 1, 18), "CALC_Les");
  EXPECT_EQ(ValueName(305, 1, 25), "CALC_LogOr");
  EXPECT_EQ(ValueName(305, 1, 30), "CALC_LogCond");
  EXPECT_EQ(ValueName(305, 1, 33), "CALC_Mintypmax");
  EXPECT_EQ(ValueName(305, 1, 39), "CALC_CnstEnd");
  EXPECT_EQ(ValueName(305, 1, 50), "") << "the codes of assignment operators have no name";
}

TEST(ValueNames, AreEmptyForEveryOtherAttribute) {
  for (const std::uint32_t kind : ManyNumbers()) {
    for (std::uint32_t attribute = 0; attribute < 40; ++attribute) {
      if (IsEnumerated(kind, attribute)) continue;
      EXPECT_EQ(ValueName(kind, attribute, 1), "") << kind << '/' << attribute;
    }
  }
}

TEST(ValueNames, OfReturnTypesBelongToFunctionsAndNotToPrototypes) {
  EXPECT_EQ(ValueName(36, 7, 4), "DECL_VALTYPE_INT");
  EXPECT_EQ(ValueName(51, 7, 4), "");
}

TEST(ValueNames, AreEmptyForNegativeValues) {
  for (const EnumeratedRow& row : kEnumerated) {
    EXPECT_EQ(ValueName(row.kind, row.attribute, static_cast<std::uint32_t>(-1)), "");
  }
}

// --- Value types ---------------------------------------------------------------------------------

TEST(ValueTypeNames, StandForOneToSix) {
  EXPECT_EQ(ValueTypeName(1), "ATTR_CHAR");
  EXPECT_EQ(ValueTypeName(2), "ATTR_INT");
  EXPECT_EQ(ValueTypeName(3), "ATTR_LONGLONG");
  EXPECT_EQ(ValueTypeName(4), "ATTR_FLOAT");
  EXPECT_EQ(ValueTypeName(5), "ATTR_STRING");
  EXPECT_EQ(ValueTypeName(6), "ATTR_NODE");
}

TEST(ValueTypeNames, AreEmptyForAllElse) {
  for (const std::uint32_t type : ManyNumbers()) {
    if (type < 1 || type > 6) {
      EXPECT_EQ(ValueTypeName(type), "") << type;
    }
  }
}

// --- Buffers -------------------------------------------------------------------------------------

TEST(NameBuffers, HoldTheLongestName) {
  std::size_t longest = 0;
  for (std::uint32_t kind = 0; kind < 400; ++kind) {
    longest = std::max(longest, KindName(kind).size());
    for (std::uint32_t id = 0; id < 40; ++id)
      longest = std::max(longest, AttrName(kind, id).size());
  }
  EXPECT_EQ(longest, std::strlen("DfgFuncCall_FUNC_TYPEDEFLINK"));
  EXPECT_LT(longest, kCdfgNameSize);
}

}  // namespace
