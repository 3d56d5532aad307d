// The replace restore: empties the database and fills it from the backup file, record by record,
// in memory that does not grow with either.
#include <cstdint>

#include "messages/message_print.h"
#include "messages/trace_unit.h"
#include "platform/kdb.h"
#include "platform/run_progress.h"
#include "records/backup_stream.h"
#include "records/data_buffer.h"
#include "records/record_calls.h"
#include "restore/counted_records.h"
#include "restore/database_session.h"
#include "restore/error_lines.h"
#include "restore/exit_codes.h"
#include "restore/operations.h"
#include "restore/prototype_filter.h"
#include "restore/restore_settings.h"
#include "restore/run_report.h"

namespace orx {

namespace {

class ReplaceRestore {
 public:
  explicit ReplaceRestore(const RestoreSettings& settings)
      : settings_(settings),
        deletedCount_("IDS_MAIN_FOURTH", settings.verbose != 0),
        addedCount_("IDS_MAIN_SEVENTH", settings.verbose != 0) {}

  [[nodiscard]] int run() {
    if (!openBackup()) return exitBackupNotOpened;
    if (!database_.open(settings_.databaseName)) return exitDatabaseNotOpened;
    backup_.start();
    if (!deletePhase()) return finish(exitFailed);
    const int result = finish(addPhase());
    if (result == exitSuccess) printMessage("IDS_MAIN_EIGHTH", addedCount_.value());
    return result;
  }

 private:
  [[nodiscard]] bool openBackup() {
    if (backup_.open(settings_.backupFileName.c_str())) return true;
    runReport().backupError = backup_.errorNumber();
    printMessage("IDS_MAIN_SECOND", settings_.backupFileName);
    return false;
  }

  // True when the end of the database was reached and every record is deleted.
  [[nodiscard]] bool deletePhase() {
    runProgress().enter("deleting", kdb::recordsWhenOpened(database_.handle()));
    std::int32_t code = startScan();
    printMessage("IDS_MAIN_THIRD", settings_.databaseName);
    while (code == 0) code = deleteNext();
    if (!isEndOfRecords(code)) {
      printMessage("IDS_MAIN_SIXTH", code);
      return false;
    }
    printMessage("IDS_MAIN_FIFTH", deletedCount_.value());
    return true;
  }

  std::int32_t startScan() {
    const std::int32_t code = startUpdate(database_.handle(), scan_);
    if (code != 0) database_.report(code, "*Error: in StartUpdate");
    return code;
  }

  std::int32_t deleteNext() {
    kdb::kdbHandle held;
    std::int32_t code = readNextForUpdate(scan_, record_, held);
    if (code != 0) {
      if (!isEndOfRecords(code)) database_.report(code, "*Error: Error on ReadNextForUpdate");
      return code;
    }
    code = kdb::DeleteHeldRecord(held);
    if (code != 0) {
      database_.report(code, "*Error: Error on DeleteHeldRecord");
      return code;
    }
    deletedCount_.countOne(database_.handle());
    return 0;
  }

  [[nodiscard]] ExitCode addPhase() {
    runProgress().enterFile("adding", settings_.backupFileName);
    ReadOutcome read = backup_.next(record_);
    for (; read == ReadOutcome::line; read = backup_.next(record_)) {
      if (settings_.prototypesOnly != 0 && !belongsToPrototypes(record_)) continue;
      if (!takeRecord()) return exitFailed;
    }
    if (read == ReadOutcome::end) return exitSuccess;
    reportBackupReadError();
    database_.abandon();
    return exitFailed;
  }

  [[nodiscard]] bool takeRecord() {
    const std::int32_t code = addRecord(database_.handle(), record_);
    if (code != 0) {
      database_.reportAddFailure(database_.statusOf(code), addedCount_.value() + 1);
      return false;
    }
    addedCount_.countOne(database_.handle());
    return true;
  }

  // Closes database and file; what was added before an ordinary failure is kept.
  [[nodiscard]] int finish(ExitCode result) {
    const bool isClosed = database_.close();
    runReport().backupChanged = backup_.hasChanged();
    backup_.close();
    runReport().deletedCount = deletedCount_.value();
    runReport().addedCount = addedCount_.value();
    return isClosed ? result : exitFailed;
  }

  const RestoreSettings& settings_;
  BackupStream backup_;
  DatabaseSession database_;
  kdb::kdbHandle scan_;
  DataBuffer record_;
  CountedRecords deletedCount_;
  CountedRecords addedCount_;
};

}  // namespace

int overrideDB() {
  ORX_TRACE("overrideDB");
  return trace.exit(ReplaceRestore(restoreSettings()).run());
}

}  // namespace orx
