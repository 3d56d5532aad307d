// The exit codes of orxrestore, an interface to the scripts that call it.
#pragma once

namespace orx {

enum ExitCode : int {
  exitSuccess = 0,
  exitUsage = 1,              // command line unusable; the help was printed
  exitNameHasPath = 2,        // the database name holds a path separator
  exitBackupNotOpened = 4,    // replace and merge restore
  exitDatabaseNotOpened = 5,  // or, for the use-count rebuild, its cursor
  exitFailed = 6,             // a failure during the operation, or out of memory; after an ordinary
                              // failure the database has what was done before it
};

}  // namespace orx
