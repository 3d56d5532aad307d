// RunOutcome: what is known of a run when it has ended.
#pragma once

#include "restore/restore_settings.h"
#include "restore/run_report.h"

namespace orx {

struct RunOutcome {
  int exitCode = 0;
  bool published = false;        // the database was changed
  bool messagesMissing = false;  // there is no message bundle in the current directory
  RestoreSettings settings;
  RunReport report;
};

}  // namespace orx
