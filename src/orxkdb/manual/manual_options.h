// The options that the build makes manual pages and completions with: "--man PAGE" and
// "--completion SHELL". They print on standard output, stand for a subcommand, and the help does
// not show them.
#pragma once

#include "orxkdb/command.h"

namespace orx::orxkdb {

// PAGE is orxkdb, orxrestore (needs the message bundle in the current directory) or orxkdb-formats
// (reads docs/formats.md from standard input); SHELL is bash, zsh or fish. Added after the
// subcommands.
void addManualOptions(CommandLine& line);

}  // namespace orx::orxkdb
