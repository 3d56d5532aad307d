#include "restore/merge_input.h"

#include "messages/trace_unit.h"
#include "platform/kdb_statistics.h"
#include "platform/run_progress.h"
#include "records/data_buffer.h"

namespace orx {

namespace {

constexpr auto endOfRecords = static_cast<std::int32_t>(kdb::Code::notThere);

// The first record at or after the key that `record` begins with.
std::int32_t readNext(kdb::kdbHandle database, DataBuffer& record) {
  std::int32_t length = 0;
  return kdb::ReadNextByKey(database, record.data(), static_cast<std::int32_t>(kdb::keySize),
                            record.data(), static_cast<std::int32_t>(kdb::recordSize), length);
}

std::int32_t readFollowing(kdb::kdbHandle database, DataBuffer& record) {
  return kdb::advanceKey(record.data()) ? readNext(database, record) : endOfRecords;
}

}  // namespace

DatabaseRead readDatabase(kdb::kdbHandle database, MergeRun& merge) {
  ORX_TRACE("readDatabase");
  runProgress().enter("reading", kdb::recordsWhenOpened(database));
  DataBuffer record;
  std::int32_t code = readNext(database, record);
  if (code != 0) return trace.exit(DatabaseRead{code, "*Error: in StartUpdate"});
  for (; code == 0; code = readFollowing(database, record)) {
    merge.takeCurrent(record);
    runProgress().countRecord();
  }
  if (code == endOfRecords) return trace.exit(DatabaseRead{});
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
