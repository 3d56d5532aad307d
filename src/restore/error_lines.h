// The error lines of an operation, on standard output. The first one of a run is noted in
// runReport(), for the hints.
#pragma once

#include "platform/kdb_codes.h"

namespace orx {

// Prints `text` with code and reason of a failed call.
void printErrorLine(const kdb::kdbStatus& failure, const char* text);

// Prints "*Error: reading the backup file" with the codes of an I/O error.
void reportBackupReadError();

// Prints "*Error: no handler counters in the system record" as a record that was not found.
void reportMissingCounters();

}  // namespace orx
