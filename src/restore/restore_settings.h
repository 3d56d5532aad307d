// What the command line asks for.
#pragma once

#include <cstdint>
#include <string>

namespace orx {

enum RestoreMode : std::int32_t {
  modeReplace = 0,   // -o: the database gets the backup's records instead of its own
  modeMerge = 1,     // -m: the database gets the backup's objects in addition to its own
  modeUseCount = 2,  // -u: the use counts of the models are computed anew
};

struct RestoreSettings {
  std::int32_t mode = modeReplace;
  std::int32_t verbose = 0;         // 1: the operations print progress messages
  std::int32_t prototypesOnly = 0;  // 1: the replace restore adds prototype records only
  std::string databaseName;         // opened relative to the current directory
  std::string backupFileName;       // the same; not used by modeUseCount
};

// The one instance of the process: written by processArgs, read by the operations.
[[nodiscard]] RestoreSettings& restoreSettings();

}  // namespace orx
