// A check of a whole database or backup.
#pragma once

#include <string>

#include "orxkdb/check/check_counts.h"
#include "orxkdb/check/findings.h"
#include "orxkdb/result.h"

namespace orx::orxkdb {

// A file that is no database is read as a backup. `findings` and `counts` are new. Findings are no
// failure; after a failure both are of no use.
Result runCheck(const std::string& input, Findings& findings, CheckCounts& counts);

}  // namespace orx::orxkdb
