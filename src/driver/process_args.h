// The command line of orxrestore.
#pragma once

namespace orx {

// Fills restoreSettings() from the command line and echoes the names it takes. Returns 1 when the
// command line names everything that its operation needs, otherwise 0, after the help.
[[nodiscard]] int processArgs(int argc, char* const argv[]);

}  // namespace orx
