// What a failure of the keyed database means to the operator of a run.
#pragma once

#include "driver/hint_list.h"
#include "driver/run_outcome.h"

namespace orx {

// Adds the meaning of the failure in the report of `outcome`, and what to do next. Looks at the
// files that it names.
void addFailureMeaning(const RunOutcome& outcome, HintList& hints);

}  // namespace orx
