#include "restore/merge_input.h"

#include "messages/trace_unit.h"
#include "platform/kdb.h"
#include "platform/run_progress.h"
#include "records/data_buffer.h"
#include "records/record_calls.h"

namespace orx {

DatabaseRead readDatabase(kdb::kdbHandle database, MergeRun& merge) {
  ORX_TRACE("readDatabase");
  runProgress().enter("reading", kdb::recordsWhenOpened(database));
  DataBuffer record;
  std::int32_t code = readRecordFrom(database, record);
  if (code != 0) return trace.exit(DatabaseRead{code, "*Error: in StartUpdate"});
  for (; code == 0; code = readRecordBehind(database, record)) {
    merge.takeCurrent(record);
    runProgress().countRecord();
  }
  if (isEndOfRecords(code)) return trace.exit(DatabaseRead{});
  return trace.exit(DatabaseRead{code, "*Error: in read records error"});
}

ReadOutcome readBackup(BackupReader& backup, MergeRun& merge) {
  ORX_TRACE("readBackup");
  BackupLine line;
  ReadOutcome read = backup.next(line);
  for (; read == ReadOutcome::line; read = backup.next(line)) {
    merge.takeBackup(line);
    runProgress().countRecord();
  }
  return trace.exit(read);
}

}  // namespace orx
