// The options that the build makes manual pages and completions with: "--man PAGE", "--completion
// SHELL" and, for orxrestore, "--restore-completion SHELL". They print on standard output, stand
// for a subcommand, and the help does not show them.
#pragma once

#include "orxkdb/command.h"

namespace orx::orxkdb {

// PAGE is orxkdb, orxrestore (needs the message bundle in the current directory) or orxkdb-formats
// (reads docs/formats.md from standard input); SHELL is bash, zsh or fish, and
// --restore-completion needs the message bundle as well. To be called after addCommands(): pages
// and completions tell what the command line has when it is read.
void addManualOptions(CommandLine& line);

}  // namespace orx::orxkdb
