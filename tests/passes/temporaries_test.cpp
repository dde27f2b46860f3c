// Names, counters and declarations of temporary variables.
#include "passes/temporaries.h"

#include <string>

#include "cdfg/name_set.h"
#include "driver/pipeline.h"
#include "tests/support/graphs.h"

namespace {

using Maker = NodeId (*)(CdfgGraph*, NodeId, const ExprType&);

class Temporaries : public support::GraphTest {
 protected:
  Temporaries() {
    NameSetInit();
    CdfgSetDeclScope(function_);
    Place(position_, "top.c", 7, 9);
  }
  ~Temporaries() override {
    CdfgSetDeclScope(0);
    FreePassState();
  }

  std::string NameOf(NodeId variable) const {
    return CdfgGetAttrStr(graph, variable, CfgDecl_NAME);
  }
  std::string Made(Maker maker) { return NameOf(maker(graph, position_, {})); }

  const NodeId function_ = Add(CFG_FUNCTION);
  const NodeId position_ = Add(DFG_OPERATION);
};

TEST_F(Temporaries, OfEachKindHaveANameAndACounterOfTheirOwn) {
  const struct {
    Maker maker;
    std::string name;
  } kKinds[] = {{MakeTempVar, "__fpfix_tmp_"},
                {MakeCastVar, "__fpfix_cast_"},
                {MakeDivVar, "__fpfix_div_"},
                {MakeMulVar, "__fpfix_mul_"},
                {MakeConstVar, "__fpfix_cnst_"}};
  for (const std::string number : {"000000", "000001", "000002"}) {
    for (const auto& kind : kKinds) EXPECT_EQ(Made(kind.maker), kind.name + number);
  }
}

TEST_F(Temporaries, PassOverNamesThatAreTakenAndTakeTheirOwn) {
  NameSetAdd("__fpfix_cnst_000000");
  NameSetAdd("__fpfix_cnst_000002");
  EXPECT_EQ(Made(MakeConstVar), "__fpfix_cnst_000001");
  EXPECT_EQ(NameSetContains("__fpfix_cnst_000001"), 1);
  EXPECT_EQ(NameSetContains("__fpfix_cnst_000003"), 0);
  EXPECT_EQ(Made(MakeConstVar), "__fpfix_cnst_000003");
}

TEST_F(Temporaries, NeedASeventhDigitFromAMillionOn) {
  for (int i = 0; i < 999999; ++i) {
    NameSetAdd(("__fpfix_div_" + std::string(6 - std::to_string(i).size(), '0') + std::to_string(i))
                   .c_str());
  }
  EXPECT_EQ(Made(MakeDivVar), "__fpfix_div_999999");
  EXPECT_EQ(Made(MakeDivVar), "__fpfix_div_1000000");
}

TEST_F(Temporaries, TakeAPrefixAndThePlainNumber) {
  EXPECT_EQ(Made(MakeTempVar), "__fpfix_tmp_000000");
  SetTempPrefix("t_");
  NameSetAdd("t_1");
  EXPECT_EQ(Made(MakeTempVar), "t_2");
  EXPECT_EQ(Made(MakeTempVar), "t_3");
  SetTempPrefix("");
  EXPECT_EQ(Made(MakeTempVar), "4");
  EXPECT_EQ(Made(MakeCastVar), "__fpfix_cast_000000");
  EXPECT_EQ(Made(MakeDivVar), "__fpfix_div_000000");
}

TEST_F(Temporaries, AreDeclaredAtTheHeadOfTheFunction) {
  const NodeId old = Add(CFG_DECLARE);
  Own(function_, CfgFunc_DECLARE, old);
  const NodeId first = MakeMulVar(graph, position_, {});
  const NodeId second = MakeConstVar(graph, position_, {});
  EXPECT_EQ(CdfgGetAttr(graph, function_, CfgFunc_DECLARE), second);
  EXPECT_EQ(CdfgGetNext(graph, second), first);
  EXPECT_EQ(CdfgGetNext(graph, first), old);
  EXPECT_EQ(CdfgGetKind(graph, second), static_cast<std::uint32_t>(CFG_DECLARE));
  EXPECT_EQ(support::Position(graph, second), "top.c:7:9");
}

TEST_F(Temporaries, StayUnlinkedOutsideFunctions) {
  CdfgSetDeclScope(0);
  const NodeId variable = MakeConstVar(graph, position_, {});
  EXPECT_NE(variable, 0U);
  EXPECT_EQ(CdfgGetPrev(graph, variable), 0U);
  EXPECT_EQ(CdfgGetNext(graph, variable), 0U);
  EXPECT_EQ(CdfgGetAttr(graph, function_, CfgFunc_DECLARE), 0U);
}

TEST_F(Temporaries, HaveTheTypeThatIsAsked) {
  ExprType type;
  type.value_type = DECL_VALTYPE_FLOAT;
  type.signedness = DECL_UNSIGNED;
  EXPECT_EQ(support::Attributes(graph, MakeTempVar(graph, position_, type)),
            "1=257 3=\"__fpfix_tmp_000000\" 18=8 6=2");
  type.pointer_count = 2;
  EXPECT_EQ(support::Attributes(graph, MakeTempVar(graph, position_, type)),
            "1=257 3=\"__fpfix_tmp_000001\" 18=8 6=2 13=2");
}

}  // namespace
