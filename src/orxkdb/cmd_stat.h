// orxkdb stat: what a database holds, in numbers.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct StatOptions {
  std::string database;
  bool json = false;
};

Result stat(const StatOptions& options);

Registration addStat;

}  // namespace orx::orxkdb
