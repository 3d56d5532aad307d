// Hints: what a run's outcome means, and the next command to type, on standard error.
#pragma once

#include <vector>

#include "driver/hint_list.h"
#include "driver/run_outcome.h"

namespace orx {

// In the order in which they are to be followed; none when there is nothing to say. Looks at the
// files that `outcome` names, relative to the current directory, and changes none.
[[nodiscard]] std::vector<Hint> hintsFor(const RunOutcome& outcome);

// Prints the hints of this process's run when it has ended with `exitCode`, behind what it printed
// on standard output:
//   orxrestore: WHAT
//     next: COMMAND
void giveHints(int exitCode);

}  // namespace orx
