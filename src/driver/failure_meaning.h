// What a failure of the keyed database means to the operator of a run.
#pragma once

#include "driver/hint_list.h"
#include "driver/run_outcome.h"
#include "platform/kdb.h"

namespace orx {

struct FailureMeaning {
  kdb::Reason reason;
  HintTemplate what;
  HintTemplate next;
};

// The meaning of the failure in the report of `outcome`. Looks at the files that it names.
[[nodiscard]] const FailureMeaning& meaningOfFailure(const RunOutcome& outcome);

}  // namespace orx
