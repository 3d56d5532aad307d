// One allocation of a run fails.
#pragma once

#include "tests/faults/operation.h"
#include "tests/faults/single_fault.h"

namespace orx::faults {

class AllocationFaults {
 public:
  // Counts the allocations of an undisturbed run.
  explicit AllocationFaults(const Scene& scene);

  [[nodiscard]] std::size_t count() const { return count_; }
  // Lets allocation `number`, from 1, fail. The run ends with 6 and the old database, or does all
  // the same what it was asked for; memory that nobody has any more is a fault where a sanitizer
  // looks for it.
  [[nodiscard]] CaseOutcome fail(std::size_t number) const;

 private:
  [[nodiscard]] TracedResult run(const std::filesystem::path& directory, std::size_t number,
                                 const std::filesystem::path& count) const;

  const Scene& scene_;
  std::size_t count_ = 0;
};

}  // namespace orx::faults
