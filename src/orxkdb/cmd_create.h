// orxkdb create: an empty database with the messages beside it.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct CreateOptions {
  std::string database;  // must not exist yet
  bool json = false;
};

// The database stays when only the messages fail.
Result create(const CreateOptions& options);

Registration addCreate;

}  // namespace orx::orxkdb
