// The runs of an operation that are disturbed, each in a directory of its own: what is left is
// looked at, and the operation runs again.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/faults/operation.h"

namespace orx::faults {

struct Disturbance {
  std::string kind;
  std::function<CaseOutcome()> run;
  bool isDecisive = false;  // a failed sync, or the end of a step that the change is made of
};
using Disturbances = std::vector<Disturbance>;

// Every call that counts fails with every fault that the system could answer it with.
[[nodiscard]] Disturbances failedCalls(const Scene& scene);

// The power fails; the moment and what is lost are drawn from a seed of each.
[[nodiscard]] Disturbances powerFailures(const Scene& scene);

// Each allocation fails: the run ends with 6 and the old database, or does all the same what it was
// asked for; memory that nobody has any more is a fault where a sanitizer looks for it.
[[nodiscard]] Disturbances failedAllocations(const Scene& scene);

}  // namespace orx::faults
