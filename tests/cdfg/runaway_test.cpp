// Guards against walks that cannot end.
#include "cdfg/runaway.h"

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/graphs.h"
#include "tests/support/stop.h"

namespace {

using support::Endless;
using support::Outcome;
using support::Quiet;
using support::RunCatchingStop;

class Runaway : public support::GraphTest {
 protected:
  void TearDown() override { runaway::steps_left = UINT64_MAX; }
};

TEST_F(Runaway, StopsNamingTheNode) {
  EXPECT_EQ(RunCatchingStop([] { CdfgStopEndless(7); }),
            (Outcome{255, "kelvo : Error : Endless graph : node 7\n"}));
}

TEST_F(Runaway, StopsNamingALargeIdWithoutASign) {
  EXPECT_EQ(RunCatchingStop([] { CdfgStopEndless(4294967295U); }),
            (Outcome{255, "kelvo : Error : Endless graph : node 4294967295\n"}));
}

// --- Chains --------------------------------------------------------------------------------------

// How a guard takes a run of `tail` nodes that leads into a circle of `circle` nodes, numbered from
// 1 on; 0: no circle, the run ends.
Outcome VisitAll(NodeId tail, NodeId circle, NodeId* steps) {
  return RunCatchingStop([&] {
    ChainGuard guard;
    for (NodeId step = 0; circle != 0 || step < tail; ++step) {
      *steps = step + 1;
      guard.Visit(step < tail ? step + 1 : tail + 1 + (step - tail) % circle);
    }
  });
}

TEST_F(Runaway, InAChainIsFoundSoonAndOnTheCircle) {
  for (NodeId tail = 0; tail <= 40; ++tail) {
    for (NodeId circle = 1; circle <= 40; ++circle) {
      NodeId steps = 0;
      const Outcome outcome = VisitAll(tail, circle, &steps);
      ASSERT_EQ(outcome.status, 255);
      NodeId node = 0;
      ASSERT_EQ(
          std::sscanf(outcome.output.c_str(), "kelvo : Error : Endless graph : node %u\n", &node),
          1);
      ASSERT_GT(node, tail) << "of " << tail << " and " << circle;
      ASSERT_LE(node, tail + circle);
      ASSERT_LE(steps, 4 * (tail + circle) + 2);
    }
  }
}

TEST_F(Runaway, IsNotSeenInAChainThatEnds) {
  for (const NodeId length : {0U, 1U, 2U, 3U, 1000U, 100000U}) {
    NodeId steps = 0;
    EXPECT_EQ(VisitAll(length, 0, &steps), Quiet()) << length;
  }
}

// --- Depth ---------------------------------------------------------------------------------------

TEST_F(Runaway, IntoTheDepthIsFoundOnTheCircle) {
  for (NodeId tail = 0; tail <= 20; ++tail) {
    for (NodeId circle = 1; circle <= 20; ++circle) {
      NodeId node = 0;
      const Outcome outcome = RunCatchingStop([&] {
        DepthGuard guard;
        for (NodeId step = 0; step < 10000; ++step) {
          guard.Enter(step < tail ? step + 1 : tail + 1 + (step - tail) % circle);
        }
      });
      ASSERT_EQ(outcome.status, 255) << "of " << tail << " and " << circle;
      ASSERT_EQ(
          std::sscanf(outcome.output.c_str(), "kelvo : Error : Endless graph : node %u\n", &node),
          1);
      ASSERT_GT(node, tail);
      ASSERT_LE(node, tail + circle);
    }
  }
}

TEST_F(Runaway, IsNotSeenWhereANodeIsEnteredAgainBesideItself) {
  EXPECT_EQ(RunCatchingStop([] {
              DepthGuard guard;
              guard.Enter(1);
              for (int i = 0; i < 1000; ++i) {
                const DepthScope inside(guard, 2);
                EXPECT_EQ(guard.Depth(), 2U);
              }
              EXPECT_EQ(guard.Depth(), 1U);
            }),
            Quiet());
}

TEST_F(Runaway, IsNotSeenInDeepNesting) {
  EXPECT_EQ(RunCatchingStop([] {
              DepthGuard guard;
              for (NodeId node = 1; node <= 1000000; ++node) guard.Enter(node);
            }),
            Quiet());
}

TEST_F(Runaway, AtADepthForgetsWhatWasDeeper) {
  EXPECT_EQ(RunCatchingStop([] {
              DepthGuard guard;
              for (NodeId node = 1; node <= 8; ++node) guard.Enter(node);
              for (int i = 0; i < 100; ++i) {
                guard.EnterAt(1, 5);
                EXPECT_EQ(guard.Depth(), 2U);
                guard.EnterAt(2, 6);
                EXPECT_EQ(guard.Depth(), 3U);
              }
            }),
            Quiet());
}

// --- Steps ---------------------------------------------------------------------------------------

TEST_F(Runaway, EndsWhenTheStepsAreUsedUp) {
  runaway::steps_left = 3;
  EXPECT_EQ(RunCatchingStop([] {
              for (NodeId node = 11; node <= 13; ++node) CdfgCountStep(node);
            }),
            Quiet());
  EXPECT_EQ(RunCatchingStop([] { CdfgCountStep(14); }), Endless(14));
}

TEST_F(Runaway, CountsTheStepsOfChainsAndOfDepth) {
  runaway::steps_left = 100;
  EXPECT_EQ(RunCatchingStop([] {
              ChainGuard guard;
              for (NodeId node = 1;; ++node) guard.Visit(node);
            }),
            Endless(101));
  runaway::steps_left = 100;
  EXPECT_EQ(RunCatchingStop([] {
              DepthGuard guard;
              for (NodeId node = 1;; ++node) guard.Enter(node);
            }),
            Endless(101));
}

TEST_F(Runaway, GrantsMoreStepsToALargerGraph) {
  CdfgGrantSteps(graph);
  const std::uint64_t for_empty = runaway::steps_left;
  EXPECT_GE(for_empty, 1000000U) << "the smallest graph may still be walked many times";
  for (int i = 0; i < 1000; ++i) Add(CFG_COMMENT);
  CdfgGrantSteps(graph);
  EXPECT_GE(runaway::steps_left - for_empty, 100U * 1000U);
}

TEST_F(Runaway, GrantsStepsAnewToEachPass) {
  runaway::steps_left = 0;
  CdfgGrantSteps(graph);
  EXPECT_EQ(RunCatchingStop([] { CdfgCountStep(1); }), Quiet());
}

}  // namespace
