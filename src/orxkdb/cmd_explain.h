// orxkdb explain: an object of a database, or a line of a backup, in words.
#pragma once

#include <optional>
#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct ExplainOptions {
  std::string database = {};
  std::string handle = {};               // see ObjectQuery (explain/explained_object.h)
  std::optional<std::string> line = {};  // "FILE:N", instead of a database and a handle
  bool json = false;
};

// Prints every object of the handle, or the line. exitNotAsExpected when there is none.
Result explain(const ExplainOptions& options);

Registration addExplain;

}  // namespace orx::orxkdb
