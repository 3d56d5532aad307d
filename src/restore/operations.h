// The three operations on a configuration database. Each runs once, from opening to closing, as
// restoreSettings() says, and returns the exit code of the process (restore/exit_codes.h).
//
// Messages and error lines go to standard output, what the hints need to runReport(). The database
// is changed when it is closed, in one step: a process that dies before, and an operation that met
// a storage failure, leave it as it was. After any other failure it has what was done before.
// Throws std::bad_alloc, and then nothing is published.
#pragma once

namespace orx {

// Deletes every record of the database and adds those of the backup file. Ends at the first record
// that cannot be added; a backup that cannot be read to its end changes nothing.
[[nodiscard]] int overrideDB();
// Adds the objects of another database's backup file under new identifiers. A record that cannot be
// added is told and left out, the others are added. Without a backup only the system record is
// written again (exitBackupNotOpened).
[[nodiscard]] int mergeDB();
// Computes the use count and the signatures of every model anew. Reads no backup.
[[nodiscard]] int useCount();

}  // namespace orx
