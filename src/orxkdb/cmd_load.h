// orxkdb load: a database from a dump, published once or not at all.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct LoadOptions {
  std::string database;
  std::string file = "-";  // standard input
  bool json = false;
  bool replace = false;  // the records of a database that exists, else a new database
};

// Checks the whole dump before anything is published: a failure up to then leaves the database as
// it was. Then reads back what was published.
Result load(const LoadOptions& options);

Registration addLoad;

}  // namespace orx::orxkdb
