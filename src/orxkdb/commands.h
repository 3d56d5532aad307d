// The subcommands of orxkdb.
#pragma once

#include "orxkdb/command.h"

namespace orx::orxkdb {

void addCommands(CommandLine& line);

}  // namespace orx::orxkdb
