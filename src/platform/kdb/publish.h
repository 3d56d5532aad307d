// The files of a database, and the steps that change which of them carries its name.
#pragma once

#include <string>

#include "platform/kdb_codes.h"

namespace orx::kdb {

// Absolute or relative paths, symbolic links resolved.
struct DatabasePaths {
  std::string database;
  std::string successor;  // NAME.orx-new
  std::string previous;   // NAME.orx-previous
  std::string directory;

  // `database` must already be resolved.
  static DatabasePaths of(const std::string& database);
  // False when the file system has no room for the longer of the two names.
  [[nodiscard]] bool namesFit() const;
};

// Publishes the complete successor open as `successorFd` in place of the database open as
// `databaseFd`:
//   1. sync the successor, give it the mode and owner of the database, sync again;
//   2. drop NAME.orx-previous, give the database that name as a second one, sync the directory;
//   3. rename the successor to NAME: the one step that changes the database;
//   4. sync the directory.
// A process that dies leaves the old database before step 3 and the new one after it, with the old
// one as the previous generation. A failure of step 4 takes step 3 back.
[[nodiscard]] Outcome publishReplacement(const DatabasePaths& paths, int successorFd,
                                         int databaseFd);

// Publishes the complete successor as a new database of mode `mode`; 4/46 when the name is taken.
[[nodiscard]] Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode);

// Exchanges the database with its previous generation. 5/28 when there is none.
[[nodiscard]] Outcome exchangeGenerations(const DatabasePaths& paths);

}  // namespace orx::kdb
