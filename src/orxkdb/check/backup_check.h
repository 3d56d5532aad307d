// The check of a backup: every line, then its records in the order of a database.
#pragma once

#include <string>

#include "orxkdb/check/check_run.h"
#include "orxkdb/check/inventory.h"

namespace orx::orxkdb {

// Reads the file once in its own order and once in key order; remembers 32 bytes for each line.
Result checkBackup(const std::string& name, Findings& findings, Inventory& inventory,
                   CheckCounts& counts);

}  // namespace orx::orxkdb
