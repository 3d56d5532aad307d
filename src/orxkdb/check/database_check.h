// The check of a database: its records as they are stored, in their order.
#pragma once

#include <string>

#include "orxkdb/check/check_counts.h"
#include "orxkdb/check/findings.h"
#include "orxkdb/check/inventory.h"
#include "orxkdb/result.h"

namespace orx::orxkdb {

// Adds to `findings` and `inventory`, and sets `records` of `counts`. Whoever calls it calls
// Inventory::check afterwards. Findings are no failure; after a failure all three are of no use.
Result checkDatabase(const std::string& name, Findings& findings, Inventory& inventory,
                     CheckCounts& counts);

}  // namespace orx::orxkdb
