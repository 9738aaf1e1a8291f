// A word's part of the memory that words share.
#pragma once

#include <span>

#include "core/calculate_center.h"

namespace quor {

/// The values that one word pushes at one bar, cut back when it leaves, by an exception too. Nested
/// evaluations may move them, so a span of them is taken behind the last evaluation.
class ScratchFrame {
 public:
  explicit ScratchFrame(CalculateCenter& calculator)
      : values_(calculator.scratch().values), start_(values_.size()) {}
  ~ScratchFrame() { values_.resize(start_); }
  ScratchFrame(const ScratchFrame&) = delete;
  ScratchFrame& operator=(const ScratchFrame&) = delete;

  void push(double value) { values_.push_back(value); }
  std::span<double> values() { return std::span(values_).subspan(start_); }

 private:
  std::vector<double>& values_;
  size_t start_;
};

}  // namespace quor
