#include "wavelock/numerics/poly_evaluator.h"

#include <algorithm>
#include <new>

#include "wavelock/numerics/conversions.h"

namespace wavelock {

bool CPolyEvaluator::Setup(std::int32_t order, std::int32_t outputCount, double first, double end) {
  if (!(end > first)) return false;
  coefficients_.clear();
  result_.reset();
  order_ = order;
  coefficientCount_ = WrapToInt32(std::int64_t{order} + 1);
  outputCount_ = outputCount;
  centre_ = (first + end) * 0.5;
  scale_ = 200.0 / (end - first);
  isSetUp_ = true;
  return true;
}

void CPolyEvaluator::SetCoefficients(std::span<const double> coefficients) {
  if (coefficientCount_ < 1 || outputCount_ < 1) return;
  const auto wanted =
      static_cast<std::uint64_t>(coefficientCount_) * static_cast<std::uint64_t>(outputCount_);
  if (coefficients.size() != wanted) return;
  try {
    coefficients_.assign(coefficients.begin(), coefficients.end());
  } catch (const std::bad_alloc&) {
    coefficients_.clear();
  }
}

bool CPolyEvaluator::HasRoomForResult() {
  if (!isSetUp_) return false;
  const auto count = static_cast<std::size_t>(std::max(outputCount_, 0));
  if (!result_) result_.reset(new (std::nothrow) double[count]);
  return result_ != nullptr;
}

const double* CPolyEvaluator::Evaluate(double x) {
  if (!HasRoomForResult()) return nullptr;
  const auto outputs = static_cast<std::size_t>(std::max(outputCount_, 0));
  const double t = Normalised(x);
  std::fill_n(result_.get(), outputs, 0.0);
  double power = 1.0;
  const bool isZero = coefficients_.empty();
  for (std::int32_t c = 0; c < coefficientCount_; ++c) {
    const double* const row = isZero ? nullptr : coefficients_.data() + static_cast<std::size_t>(c) * outputs;
    for (std::size_t k = 0; k < outputs; ++k) result_[k] += power * (isZero ? 0.0 : row[k]);
    power *= t;
  }
  return result_.get();
}

}  // namespace wavelock
