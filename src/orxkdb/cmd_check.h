// orxkdb check: what is wrong with a database or a backup.
#pragma once

#include <cstddef>
#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct CheckOptions {
  std::string input;       // a database, or else a backup
  std::size_t limit = 20;  // findings shown of each kind; 0: all
  bool json = false;
};

// Prints the report. exitNotAsExpected when there are findings.
Result check(const CheckOptions& options);

Registration addCheck;

}  // namespace orx::orxkdb
