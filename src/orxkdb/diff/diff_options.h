// What the operator asks of a comparison.
#pragma once

#include <cstddef>
#include <string>

namespace orx::orxkdb {

struct DiffOptions {
  std::string before;      // a database, or else a backup
  std::string after;       // the same
  std::size_t limit = 20;  // objects shown as added, as removed and as changed; 0: all
  bool json = false;
  bool records = false;  // show the records of changed objects
};

}  // namespace orx::orxkdb
