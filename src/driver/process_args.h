// The command line of orxrestore.
#pragma once

namespace orx {

// Fills restoreSettings() from the command line and echoes the names it takes, on standard output.
// Returns 1 when the command line names everything that its operation needs, otherwise 0, after the
// help. Once for a process: the option scanner does not begin again.
[[nodiscard]] int processArgs(int argc, char* const argv[]);

}  // namespace orx
