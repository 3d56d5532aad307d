// A comparison of two inputs as a whole.
#pragma once

#include "orxkdb/diff/diff_counts.h"
#include "orxkdb/diff/diff_options.h"
#include "orxkdb/result.h"

namespace orx::orxkdb {

// Compares object by object and writes the report on standard output; memory for one object of each
// input at a time (diff/backup_source.h and carried_source.h say what they need). Two databases are
// compared as they are stored; a database beside a backup as a backup would carry it. Differences
// are no failure, `counts` tells of them. After a failure the report is not complete.
Result runDiff(const DiffOptions& options, DiffCounts& counts);

}  // namespace orx::orxkdb
