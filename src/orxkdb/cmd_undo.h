// orxkdb undo: a database goes back to its previous generation.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct UndoOptions {
  std::string database;
  bool json = false;
};

Result undo(const UndoOptions& options);

Registration addUndo;

}  // namespace orx::orxkdb
