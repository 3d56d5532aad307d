// Files and environment of the programs, for their manual pages.
#pragma once

#include "orxkdb/manual/program_page.h"

namespace orx::orxkdb {

[[nodiscard]] ProgramNotes ownNotes();      // of orxkdb
[[nodiscard]] ProgramNotes restoreNotes();  // of orxrestore

}  // namespace orx::orxkdb
