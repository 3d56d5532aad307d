// orxkdb plan: what a merge would do.
#pragma once

#include <cstddef>
#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct PlanOptions {
  std::string database;
  std::string backup;
  std::size_t limit = 20;  // entries shown of each list; 0: all
  bool json = false;
};

// Prints the report; changes nothing and takes no lock. exitNotAsExpected when the merge would
// fail.
Result plan(const PlanOptions& options);

Registration addPlan;

}  // namespace orx::orxkdb
