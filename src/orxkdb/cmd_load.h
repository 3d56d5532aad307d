// orxkdb load: a database from a dump, published once or not at all.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct LoadOptions {
  std::string database;
  std::string file = "-";
  bool json = false;
  bool replace = false;  // the records of a database that exists, else a new database
};

Result load(const LoadOptions& options);

Registration addLoad;

}  // namespace orx::orxkdb
