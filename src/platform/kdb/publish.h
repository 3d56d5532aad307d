// The files of a database, and the steps that change which of them carries its name.
#pragma once

#include <sys/stat.h>

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

// A successor has the mark of an unpublished file; the last step of publishing takes it away. When
// a dead run left a NAME.orx-new without the mark beside a NAME with it, that is the database that
// the run replaced; any other database is a successor.

// Publishes the complete successor open as `successorFd` in place of the database open as
// `databaseFd`:
//   1. sync the successor, give it mode and owner of the database and the mark, sync again, and
//      sync the database, which must not get its own mark back in a power failure;
//   2. exchange NAME and NAME.orx-new: the one step that changes the database;
//   3. sync the directory; a failure takes step 2 back, and where not even that can be done it is
//      noted as published;
//   4. rename the old database, now NAME.orx-new, to NAME.orx-previous, sync the directory and take
//      the mark away.
// A process that dies leaves the old database before step 2 and the new one after it. What is
// missing of step 4 is made up for by the next run.
// Where names cannot be exchanged or the mark is not kept, the database gets NAME.orx-previous as a
// second name, then the successor is renamed to NAME.
[[nodiscard]] Outcome publishReplacement(const DatabasePaths& paths, int successorFd,
                                         int databaseFd);

// Takes care of what a dead run left as NAME.orx-new: discards a successor, makes a replaced
// database the previous generation. 3/19 when its process is alive, 4/46 for a directory or
// somebody else's file. `databaseFd` is the database, with the mark that it was found with; -1 for
// none.
[[nodiscard]] Outcome settleLeftover(const DatabasePaths& paths, int databaseFd);

// Publishes the complete successor as a new database of mode `mode`; 4/46 when the name is taken.
[[nodiscard]] Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode);

// Exchanges the database with its previous generation. 5/28 when there is none.
[[nodiscard]] Outcome exchangeGenerations(const DatabasePaths& paths);

}  // namespace orx::kdb
