// The exit codes of orxkdb, an interface to the scripts that call it.
#pragma once

namespace orx::orxkdb {

enum ExitCode : int {
  exitDone = 0,
  exitUsage = 1,          // command line unusable
  exitNotAsExpected = 2,  // the input or the database is not what it should be
  exitNotOpened = 5,      // a database or a file
  exitFailed = 6,         // a failure on the way: disk, memory, closed output
};

}  // namespace orx::orxkdb
