// Families of kinds.
#include "cdfg/kinds.h"

#include <gtest/gtest.h>

#include <set>

namespace {

// The kinds up to 400 for which `is_member` answers true.
template <class IsMember>
std::set<std::uint32_t> Members(IsMember is_member) {
  std::set<std::uint32_t> kinds;
  for (std::uint32_t kind = 0; kind <= 400; ++kind) {
    if (is_member(kind)) kinds.insert(kind);
  }
  return kinds;
}

using Kinds = std::set<std::uint32_t>;

TEST(KindFamilies, OfPorts) {
  EXPECT_EQ(Members(CdfgIsPort),
            (Kinds{336, 337, 338, 339, 340, 341, 342, 352, 353, 354, 355, 356, 357}));
}

TEST(KindFamilies, OfPortsAndConcatenations) {
  EXPECT_EQ(Members(CdfgIsPortOrConcat),
            (Kinds{336, 337, 338, 339, 340, 341, 342, 343, 352, 353, 354, 355, 356, 357, 358}));
}

TEST(KindFamilies, OfAssignments) { EXPECT_EQ(Members(CdfgIsAssignment), (Kinds{320, 321})); }

TEST(KindFamilies, OfCases) { EXPECT_EQ(Members(CdfgIsCase), (Kinds{269, 270, 271})); }

TEST(KindFamilies, OfLoopParts) { EXPECT_EQ(Members(CdfgIsLoopPart), (Kinds{281, 282, 283, 284})); }

TEST(KindFamilies, OfTruthOperators) {
  for (std::int32_t code = -1; code <= 70; ++code) {
    EXPECT_EQ(CdfgIsTruthOperator(code), code == 3 || (code >= 18 && code <= 25)) << code;
  }
}

}  // namespace
