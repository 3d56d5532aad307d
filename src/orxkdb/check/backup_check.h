// The check of a backup: every line, then its records in the order of a database.
#pragma once

#include <string>

#include "orxkdb/check/check_counts.h"
#include "orxkdb/check/findings.h"
#include "orxkdb/check/inventory.h"
#include "orxkdb/result.h"

namespace orx::orxkdb {

// Reads the file once in its own order and once in key order; remembers 32 bytes for each line.
// Adds to `findings` and `inventory`, and sets `records` and `outOfOrder` of `counts`. Whoever
// calls it calls Inventory::check afterwards. Findings are no failure; after a failure all three
// are of no use.
Result checkBackup(const std::string& name, Findings& findings, Inventory& inventory,
                   CheckCounts& counts);

}  // namespace orx::orxkdb
