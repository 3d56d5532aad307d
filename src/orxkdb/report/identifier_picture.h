// A picture of the identifiers that a merge gives out: for each handle type those of the backup,
// what they become, and what the database has given out before.
#pragma once

#include <string>

#include "orxkdb/plan/merge_plan.h"

namespace orx::orxkdb {

// A figure, as HTML; empty when the merge adds no objects.
[[nodiscard]] std::string identifierPicture(const MergePlan& plan);

}  // namespace orx::orxkdb
