// A merge without its last step: everything is read, renumbered and joined by the code of the
// merge, and compared with the database instead of being added to it.
#pragma once

#include <cstddef>
#include <string>

#include "orxkdb/plan/merge_plan.h"
#include "orxkdb/result.h"

namespace orx::orxkdb {

// Fills `plan`, which is new, and keeps at most `limit` refused records, all for 0. A merge that
// would be refused as a whole (no database, no backup, no identifier counters) is a failure;
// records that it would refuse are not. exitFailed also when the backup changed meanwhile. After a
// failure `plan` is of no use. Takes no lock and writes nothing. Holds the merged records of the
// backup like a merge.
Result planMerge(const std::string& database, const std::string& backup, std::size_t limit,
                 MergePlan& plan);

}  // namespace orx::orxkdb
