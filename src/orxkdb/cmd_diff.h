// orxkdb diff: what differs between two databases or backups.
#pragma once

#include "orxkdb/command.h"
#include "orxkdb/diff/diff_options.h"

namespace orx::orxkdb {

inline constexpr const char* diffCommand = "diff";

// exitDone: same; exitDifferent: different; any other code: a failure.
Result diff(const DiffOptions& options);

Registration addDiff;

}  // namespace orx::orxkdb
