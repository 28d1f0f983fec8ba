// Polynomials run over their span from -100 to +100, each power added to the sum of those below it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "wavelock/numerics/poly_evaluator.h"

namespace wavelock {
namespace {

TEST(PolyEvaluator, SpanRunsFromMinusToPlusHundred) {
  CPolyEvaluator evaluator;
  ASSERT_TRUE(evaluator.Setup(1, 2, 1000, 3000));
  evaluator.SetCoefficients(std::vector<double>{5, 7, 1, -1});  // 5 + t and 7 - t
  EXPECT_EQ(evaluator.Evaluate(1000)[0], -95);
  EXPECT_EQ(evaluator.Evaluate(1000)[1], 107);
  EXPECT_EQ(evaluator.Evaluate(2000)[0], 5);
  EXPECT_EQ(evaluator.Evaluate(3000)[1], -93);
}

TEST(PolyEvaluator, EmptySpanChangesNothing) {
  CPolyEvaluator evaluator;
  EXPECT_EQ(evaluator.Evaluate(0), nullptr);
  ASSERT_TRUE(evaluator.Setup(0, 1, 0, 10));
  evaluator.SetCoefficients(std::vector<double>{4});
  EXPECT_FALSE(evaluator.Setup(3, 5, 10, 10));
  EXPECT_FALSE(evaluator.Setup(3, 5, 10, 9));
  EXPECT_FALSE(evaluator.Setup(3, 5, std::nan(""), 9));
  EXPECT_EQ(evaluator.OutputCount(), 1);
  EXPECT_EQ(*evaluator.Evaluate(3), 4);
}

TEST(PolyEvaluator, WrongNumberOfCoefficientsLeavesZeros) {
  CPolyEvaluator evaluator;
  ASSERT_TRUE(evaluator.Setup(1, 2, 0, 10));
  for (const std::size_t count : {3u, 5u}) {
    evaluator.SetCoefficients(std::vector<double>(count, 1.0));
    EXPECT_EQ(evaluator.Evaluate(3)[1], 0);
  }
  ASSERT_TRUE(evaluator.Setup(200, 1, 0, 10));
  EXPECT_TRUE(std::isnan(*evaluator.Evaluate(0)));  // a power that is infinite, times zero
}

}  // namespace
}  // namespace wavelock
