// The command line of orxrestore, read from its help.
#pragma once

#include "orxkdb/manual/command_tree.h"
#include "orxkdb/result.h"

namespace orx::orxkdb {

// From the English texts IDS_HELP_* of the message bundle in the current directory: what the
// program is, its command lines, one text for each option (the last has two, and a remark), and
// the paragraphs behind them. exitNotOpened without a bundle, exitNotAsExpected when it lacks one
// of the texts; `tree` is of no use then. Makes the root language that of the whole process.
Result readRestoreHelp(CommandTree& tree);

}  // namespace orx::orxkdb
