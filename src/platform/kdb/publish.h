// The files of a database, and the steps that change which of them carries its name.
//
// The functions are called with a lock on every file that they are given, and leave the descriptors
// open. Each notes in interruption.h that the change is made as soon as it is, so that
// hasPublished() is right whatever comes back.
#pragma once

#include <sys/stat.h>

#include <string>

#include "platform/kdb_codes.h"

namespace orx::kdb {

// Absolute or relative paths, symbolic links resolved.
struct DatabasePaths {
  std::string database;
  std::string successor;  // NAME.orx-new
  std::string replaced;   // NAME.orx-old
  std::string previous;   // NAME.orx-previous
  std::string directory;

  // `database` must already be resolved; nothing is looked at.
  static DatabasePaths of(const std::string& database);
  // False when the longest of the names, without directory, has more than 255 bytes.
  [[nodiscard]] bool namesFit() const;
  // Whether the name of the database itself ends like one of the others. Another database's runs
  // would replace or remove it.
  [[nodiscard]] bool isOfAnother() const;
};

// A successor has the mark of an unpublished file; the last step of publishing takes it away. By
// the mark the next run knows what a dead one left (leftover.h).

// Publishes the complete successor open as `successorFd` in place of the database open as
// `databaseFd`:
//   1. sync the successor, give it the rights of the database and the mark, sync again, and sync
//      the database, which must not get its own mark back in a power failure;
//   2. exchange NAME and NAME.orx-new: the one step that changes the database;
//   3. sync the directory; a failure takes step 2 back, and where not even that can be done it is
//      noted as published;
//   4. rename the old database, now NAME.orx-new, to NAME.orx-previous, sync the directory and take
//      the mark away.
// A process that dies leaves the old database before step 2 and the new one after it. What is
// missing of step 4 is made up for by the next run.
// Where names cannot be exchanged or the mark is not kept, the database gets NAME.orx-old as a
// second name, for good, then the successor is renamed to NAME; step 4 begins with NAME.orx-old.
// 3/19 when the names lead to other files by now, 8/20 when the successor was cut, 8/42 where names
// can neither be exchanged nor linked.
[[nodiscard]] Outcome publishReplacement(const DatabasePaths& paths, int successorFd,
                                         int databaseFd);

// Publishes the complete successor as a new database of mode `mode`: sync, mode, sync, rename, sync
// of the directory. 4/46 when the name is taken. A failure leaves it the name NAME.orx-new, and so
// does a process that dies before the rename; after that it is the database.
[[nodiscard]] Outcome publishNew(const DatabasePaths& paths, int successorFd, unsigned mode);

// Exchanges the database with its previous generation, which gets the rights of the database, in
// the same two ways. 3/19 when the names lead to other files by now, 8/42 as above.
[[nodiscard]] Outcome exchangeGenerations(const DatabasePaths& paths, int databaseFd,
                                          int previousFd);

// Makes the replaced database, which has the name `from`, the previous generation, in place of the
// one before, and syncs the directory. 0 or an errno value; it may be called again then.
[[nodiscard]] int makePrevious(const DatabasePaths& paths, const std::string& from);

}  // namespace orx::kdb
