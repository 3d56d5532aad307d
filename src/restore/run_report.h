// What a run leaves for the hints to the operator, beside what it prints.
#pragma once

#include <cstdint>

#include "platform/kdb_codes.h"

namespace orx {

struct RunReport {
  kdb::kdbStatus failure;         // of the first error line; 0/0 without one
  bool backupFailed = false;      // that line was about reading the backup
  int backupError = 0;            // why the backup could not be opened, an errno value
  bool backupChanged = false;     // while it was read, or between that and the run's end
  std::int32_t deletedCount = 0;  // replace restore
  std::int32_t addedCount = 0;    // replace and merge restore

  // Of an error line; the first one stays.
  void noteFailure(std::int32_t code, std::int32_t reason) {
    if (failure.returnCode == 0) failure = {reason, code};
  }
};

// The one instance of the process: written by the operations, read by the driver.
[[nodiscard]] RunReport& runReport();

}  // namespace orx
