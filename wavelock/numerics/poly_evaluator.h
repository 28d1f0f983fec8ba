// Polynomials over a span of positions, one for each of a set of outputs, evaluated all at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace wavelock {

// The variable of the polynomials is not the position itself: it runs from -100 at the start of the span to
// +100 at its end.
class CPolyEvaluator {
 public:
  virtual ~CPolyEvaluator() = default;

  // Takes another span, with all coefficients zero. `order` is the highest power. False when `end` is not
  // above `first`; all is then as it was.
  bool Setup(std::int32_t order, std::int32_t outputCount, double first, double end);

  // The coefficients of power 0 of all outputs, then those of power 1, and so on. Any other number of them
  // than orders and outputs ask for is ignored, also when there is no memory for them.
  void SetCoefficients(std::span<const double> coefficients);

  // The values of all outputs at position `x`, summed from the lowest power to the highest. They are the
  // evaluator's own, and the next call writes over them. Null before Setup, and when there is no memory.
  const double* Evaluate(double x);

  double Normalised(double x) const { return (x - centre_) * scale_; }

  // Of all outputs, lowest power first; empty where all are zero.
  std::span<const double> Coefficients() const { return coefficients_; }

  std::int32_t Order() const { return order_; }
  std::int32_t CoefficientCount() const { return coefficientCount_; }
  std::int32_t OutputCount() const { return outputCount_; }

 private:
  bool HasRoomForResult();

  std::int32_t order_ = 1;
  std::int32_t coefficientCount_ = 2;
  std::int32_t outputCount_ = 1;
  double centre_ = 0;
  double scale_ = 0;
  bool isSetUp_ = false;
  std::vector<double> coefficients_;  // by power, then by output: the order in which they are summed
  std::unique_ptr<double[]> result_;
};

}  // namespace wavelock
