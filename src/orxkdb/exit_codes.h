// The exit codes of orxkdb, an interface to the scripts that call it.
#pragma once

namespace orx::orxkdb {

enum ExitCode : int {
  exitDone = 0,
  exitUsage = 1,          // command line unusable; of diff, which needs the 1, exitNotAsExpected
  exitDifferent = 1,      // diff alone: it did its work, and the two are not the same
  exitNotAsExpected = 2,  // the input or the database is not what it should be; of check and plan
                          // that there are findings, that the merge would fail
  exitNotOpened = 5,      // a database or a file
  exitFailed = 6,         // a failure on the way: disk, memory, closed output
};

}  // namespace orx::orxkdb
