// What dead runs left beside a database, and what keeps one from being changed.
//
// The names beside NAME and what they may be:
//   NAME.orx-new       with the mark, or still without content: a successor;
//                      without it, beside a NAME that has it: the database that NAME replaced;
//                      without it, beside a NAME without it: somebody changed the mode of either,
//                      and nobody can tell which of the two it is;
//                      anything else: somebody else's
//   NAME.orx-old       the same file as NAME: it was about to be replaced;
//                      another database: the one that NAME replaced
#pragma once

#include <string>

#include "platform/kdb/publish.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

// Discards a successor, and makes a replaced database the previous generation. `databaseFd` is the
// database, with the mark that it was found with; -1 for none.
//   3/19 the process of the successor is alive; 4/46 a directory, somebody else's file, or one of
//   which nobody can tell: it is left alone. 4/46 also when a directory has the name of the
//   previous generation.
// To be called with the lock on the database. What is done stays done when a later step fails.
[[nodiscard]] Outcome settleLeftover(const DatabasePaths& paths, int databaseFd);

// Whether the database and the files beside it let their names be changed by this process: 11/3 for
// a file that must not be changed (immutable, another user's in a directory that protects those),
// 3/19 for one that is a mount point. Only looks; not every file system tells.
[[nodiscard]] Outcome checkNamesCanChange(const DatabasePaths& paths);

}  // namespace orx::kdb
