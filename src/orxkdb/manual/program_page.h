// The manual page of a program, from what its command line takes.
#pragma once

#include <string>
#include <vector>

#include "orxkdb/manual/command_tree.h"

namespace orx::orxkdb {

struct ManualTerm {
  std::string term;
  std::string words;
};

// What a manual page tells and the help does not.
struct ProgramNotes {
  std::vector<ManualTerm> files;
  std::vector<ManualTerm> environment;
  std::string seeAlso;  // pages: "orxkdb(1), orxkdb-formats(5)"
};

// Section 1.
[[nodiscard]] std::string programPage(const CommandTree& tree, const ProgramNotes& notes);

}  // namespace orx::orxkdb
