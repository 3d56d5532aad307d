// The report of a plan, as text and as JSON.
#pragma once

#include <cstddef>
#include <string>

#include "orxkdb/plan/merge_plan.h"

namespace orx::orxkdb {

struct PlanNames {
  std::string database;
  std::string backup;
};

// Both show at most `limit` entries of each list, all for 0, and count the rest; the refused
// records of the plan were limited when it was made. Texts of the inputs come printable in the
// text.
[[nodiscard]] std::string planText(const PlanNames& names, const MergePlan& plan,
                                   std::size_t limit);
[[nodiscard]] std::string planJson(const PlanNames& names, const MergePlan& plan,
                                   std::size_t limit);

}  // namespace orx::orxkdb
