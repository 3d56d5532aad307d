// The merge restore: adds the objects of another database's backup under new identifiers. Nothing
// but the system record is changed, and nothing is deleted.
#include <cstdint>
#include <memory>

#include "messages/message_print.h"
#include "messages/trace_unit.h"
#include "platform/kdb.h"
#include "platform/run_progress.h"
#include "platform/trace.h"
#include "records/backup_reader.h"
#include "records/record_calls.h"
#include "restore/add_failures.h"
#include "restore/chain_writer.h"
#include "restore/counted_records.h"
#include "restore/database_session.h"
#include "restore/error_lines.h"
#include "restore/exit_codes.h"
#include "restore/merge_input.h"
#include "restore/merge_run.h"
#include "restore/merged_records.h"
#include "restore/operations.h"
#include "restore/restore_settings.h"
#include "restore/run_report.h"
#include "restore/verbose_merge.h"

namespace orx {

namespace {

std::unique_ptr<MergeObserver> observerFor(const RestoreSettings& settings) {
  if (settings.verbose != 0) return std::make_unique<VerboseMerge>();
  return std::make_unique<MergeObserver>();
}

class MergeRestore {
 public:
  explicit MergeRestore(const RestoreSettings& settings)
      : settings_(settings),
        observer_(observerFor(settings)),
        merge_(*observer_, settings.verbose != 0 ? ObjectOrder::lists : ObjectOrder::keys),
        addedCount_("IDS_MAIN_SEVENTH", settings.verbose != 0) {}

  [[nodiscard]] int run() {
    openBackup();
    if (!database_.open(settings_.databaseName)) return exitDatabaseNotOpened;
    if (!readCurrent() || !readAlien() || !mergeSystemRecord()) return finish(exitFailed);
    addObjects();
    merge_.reportRemaining();
    const int result = finish(result_);
    if (result == exitSuccess) printMessage("IDS_MAIN_EIGHTH", addedCount_.value());
    return result;
  }

 private:
  // Without a backup the merge goes on: there is nothing to add then.
  void openBackup() {
    if (backup_.open(settings_.backupFileName.c_str())) return;
    runReport().backupError = backup_.errorNumber();
    printMessage("IDS_MAIN_SECOND", settings_.backupFileName);
    result_ = exitBackupNotOpened;
  }

  [[nodiscard]] bool readCurrent() {
    const DatabaseRead read = readDatabase(database_.handle(), merge_);
    if (!read.ok()) {
      database_.report(read.code, read.failure);
      return false;
    }
    if (merge_.readSystemRecord()) return true;
    reportMissingCounters();
    return false;
  }

  [[nodiscard]] bool readAlien() {
    runProgress().enterFile("reading", settings_.backupFileName);
    const ReadOutcome read = readBackup(backup_, merge_);
    if (read == ReadOutcome::end) return true;
    reportBackupReadError();
    return false;
  }

  [[nodiscard]] bool mergeSystemRecord() {
    backupRecords_ = runProgress().records();
    runProgress().enter("sorting");
    merge_.mergeSystemRecord();
    const std::int32_t code =
        rewriteChain(database_.handle(), DataBuffer(), chainText(merge_.systemRecord()),
                     ChainRecords::withoutAuxValue2);
    if (code == 0) return true;
    database_.report(code, "*Error: in update by key");
    return false;
  }

  void addObjects() {
    runProgress().enter("adding", backupRecords_);
    MergedRecords records(merge_);
    if (settings_.verbose == 0 && !traceIsOpen()) records.start();
    DataBuffer record;
    std::size_t list = 0;
    bool storageWorks = true;
    while (storageWorks && records.next(record, list)) storageWorks = takeRecord(record, list);
    if (storageWorks) {
      failures_.report(printFailure_);
    } else {
      failures_.reportAsTried(printFailure_);
    }
  }

  // False after a storage failure, which every further call would only repeat. Any other failure
  // concerns one record alone.
  [[nodiscard]] bool takeRecord(const DataBuffer& record, std::size_t list) {
    const kdb::kdbStatus outcome = database_.statusOf(addRecord(database_.handle(), record));
    const bool storageWorks = !kdb::isStorageFailure(static_cast<kdb::Code>(outcome.returnCode));
    failures_.count(list, outcome);
    if (outcome.returnCode == 0) addedCount_.countOne(database_.handle());
    if (settings_.verbose != 0) failures_.report(printFailure_);
    return storageWorks;
  }

  // Closes database and file; what was written before an ordinary failure is kept.
  [[nodiscard]] int finish(ExitCode result) {
    const bool isClosed = database_.close();
    runReport().backupChanged = backup_.hasChanged();
    backup_.close();
    runReport().addedCount = addedCount_.value();
    return isClosed ? result : exitFailed;
  }

  const RestoreSettings& settings_;
  std::unique_ptr<MergeObserver> observer_;
  MergeRun merge_;
  BackupReader backup_;
  DatabaseSession database_;
  CountedRecords addedCount_;
  AddFailures failures_;
  const AddFailures::Print printFailure_ = [this](const kdb::kdbStatus& failure,
                                                  std::int32_t number) {
    database_.reportAddFailure(failure, number);
    result_ = exitFailed;
  };
  std::uint64_t backupRecords_ = 0;  // about as many are added
  ExitCode result_ = exitSuccess;
};

}  // namespace

int mergeDB() {
  ORX_TRACE("mergeDB");
  return trace.exit(MergeRestore(restoreSettings()).run());
}

}  // namespace orx
