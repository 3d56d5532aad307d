// What a merge reads: every record of the database, every line of the backup. A restore and a plan
// read alike; neither function writes or prints.
#pragma once

#include <cstdint>

#include "platform/kdb.h"
#include "records/backup_reader.h"
#include "restore/merge_run.h"

namespace orx {

// How reading the database ended: at its end, or with a code and the words of its error line.
struct [[nodiscard]] DatabaseRead {
  std::int32_t code = 0;          // kdb::GetLastStatus has the reason
  const char* failure = nullptr;  // a literal; null: everything was read

  [[nodiscard]] bool ok() const { return failure == nullptr; }
};

// Hands all records of the open database to `merge`. One without any record is a failure, 5/14.
DatabaseRead readDatabase(kdb::kdbHandle database, MergeRun& merge);

// Hands all lines to `merge`; none when no file is open. Ends with `end` or `error`, after which
// backup.errorNumber() tells why.
ReadOutcome readBackup(BackupReader& backup, MergeRun& merge);

}  // namespace orx
