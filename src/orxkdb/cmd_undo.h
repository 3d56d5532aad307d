// orxkdb undo: a database goes back to its previous generation.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct UndoOptions {
  std::string database;
  bool json = false;
};

// As kdb::exchangeWithPrevious: one step, which a second undo takes back.
Result undo(const UndoOptions& options);

Registration addUndo;

}  // namespace orx::orxkdb
