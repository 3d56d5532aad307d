// Counts the successful steps of a phase and tells every thousandth: that is when a verbose run
// prints its progress and marks a checkpoint.
#pragma once

#include <cstdint>

namespace orx {

class StepProgress {
 public:
  explicit StepProgress(bool verbose) : verbose_(verbose) {}

  // Counts a step; true for every thousandth of a verbose run.
  [[nodiscard]] bool step() {
    if (!verbose_ || ++steps_ < stepsPerMessage) return false;
    steps_ = 0;
    return true;
  }
  // A new phase begins.
  void restart() { steps_ = 0; }

 private:
  static constexpr std::int32_t stepsPerMessage = 1000;

  bool verbose_;
  std::int32_t steps_ = 0;
};

}  // namespace orx
