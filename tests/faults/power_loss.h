// A power failure at some moment of a run.
#pragma once

#include "tests/faults/disk_log.h"
#include "tests/faults/operation.h"
#include "tests/faults/single_fault.h"

namespace orx::faults {

class PowerLoss {
 public:
  // Records an undisturbed run.
  explicit PowerLoss(const Scene& scene);

  [[nodiscard]] const std::vector<DiskEvent>& events() const { return events_; }
  // The moment and what is lost are drawn from the seed. Looks at the database that is left and
  // runs the operation again.
  [[nodiscard]] CaseOutcome fail(std::uint64_t seed) const;

 private:
  const Scene& scene_;
  Disk start_;
  std::vector<DiskEvent> events_;
};

}  // namespace orx::faults
