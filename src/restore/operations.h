// The three operations on a configuration database. Each runs once, from opening to closing, as
// restoreSettings() says, and returns the exit code of the process (restore/exit_codes.h).
#pragma once

namespace orx {

// Deletes every record of the database and adds those of the backup file.
[[nodiscard]] int overrideDB();
// Adds the objects of another database's backup file under new identifiers.
[[nodiscard]] int mergeDB();
// Computes the use count and the signatures of every model anew.
[[nodiscard]] int useCount();

}  // namespace orx
