// orxkdb diff: what differs between two databases or backups.
#pragma once

#include "orxkdb/command.h"
#include "orxkdb/diff/diff_options.h"

namespace orx::orxkdb {

// Its name, by which the program knows the one subcommand with exit codes of its own.
inline constexpr const char* diffCommand = "diff";

// Prints the report. exitDone: same; exitDifferent: different; any other code: a failure.
Result diff(const DiffOptions& options);

Registration addDiff;

}  // namespace orx::orxkdb
