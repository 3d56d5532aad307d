// The subcommands of orxkdb.
#pragma once

#include "orxkdb/command.h"

namespace orx::orxkdb {

// Describes all of them to the command line, in the order of the help.
void addCommands(CommandLine& line);

}  // namespace orx::orxkdb
