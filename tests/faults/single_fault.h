// One call of a run fails: the cases of that, and what comes of each.
#pragma once

#include <string>
#include <vector>

#include "tests/faults/operation.h"

namespace orx::faults {

struct FaultCase {
  Fault fault;
  std::size_t call;  // from 1
};

// Every call that counts with every fault that the system could answer it with.
[[nodiscard]] std::vector<FaultCase> faultCases(const Scene& scene);

struct CaseOutcome {
  bool isNew = false;
  std::string faults = {};  // empty: as it should be
  bool isMissed = false;    // the run took another way and did not come to the fault
};
// Runs the case in a directory of its own, looks at what is left, and runs the operation again.
[[nodiscard]] CaseOutcome runFaultCase(const Scene& scene, const FaultCase& fault);

}  // namespace orx::faults
