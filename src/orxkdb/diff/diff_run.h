// A comparison of two inputs as a whole.
#pragma once

#include "orxkdb/diff/diff_counts.h"
#include "orxkdb/diff/diff_options.h"
#include "orxkdb/result.h"

namespace orx::orxkdb {

// Compares object by object and writes the report; memory for one object of each input at a time
// (see the sources for what they need). Differences are no failure, `counts` tells of them.
Result runDiff(const DiffOptions& options, DiffCounts& counts);

}  // namespace orx::orxkdb
