// The manual page of a program, from what its command line takes.
#pragma once

#include <string>

#include "orxkdb/manual/command_tree.h"

namespace orx::orxkdb {

// Section 1. `seeAlso` holds the pages to name at its end: "orxkdb(1), orxkdb-formats(5)".
[[nodiscard]] std::string programPage(const CommandTree& tree, const std::string& seeAlso);

}  // namespace orx::orxkdb
