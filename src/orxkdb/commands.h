// The subcommands of orxkdb.
#pragma once

#include "orxkdb/command.h"

namespace orx::orxkdb {

void addCommands(CLI::App& program, Action& action);

}  // namespace orx::orxkdb
