// Hints about the backup of a run.
#pragma once

#include "driver/hint_list.h"
#include "driver/run_outcome.h"

namespace orx {

// Why the backup was not opened.
void addUnopenedBackup(const RunOutcome& outcome, HintList& hints);
// Adds a hint and returns true when the file is another thing than a backup, a database or a
// compressed file: that explains whatever came of it.
bool addWrongBackup(const RestoreSettings& settings, HintList& hints);
// It changed while it was read, and nothing came of that.
void addChangedBackup(HintList& hints);

}  // namespace orx
