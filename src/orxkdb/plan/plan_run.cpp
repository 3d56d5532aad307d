#include "orxkdb/plan/plan_run.h"

#include <cstring>

#include "orxkdb/input/database_reader.h"
#include "orxkdb/input/plain_backup.h"
#include "orxkdb/plan/identifier_list.h"
#include "orxkdb/plan/key_check.h"
#include "orxkdb/plan/plan_observer.h"
#include "platform/kdb_files.h"
#include "platform/run_progress.h"
#include "records/backup_reader.h"
#include "records/record_calls.h"
#include "restore/chain_writer.h"
#include "restore/merge_input.h"
#include "restore/merge_run.h"
#include "restore/system_record.h"

namespace orx::orxkdb {

namespace {

// Whether a merge into the database that holds `record` reads it as part of the system record, but
// does not replace it.
bool isStray(const DataBuffer& record) {
  return SystemRecord::holds(record) && !record.hasNullHandles();
}

class PlanRun {
 public:
  PlanRun(const std::string& database, const std::string& backup, std::size_t limit,
          MergePlan& plan)
      : databaseName_(database),
        backupName_(backup),
        limit_(limit),
        plan_(plan),
        observer_(plan),
        merge_(observer_, ObjectOrder::keys) {}

  Result run() {
    if (Result result = openBackup(); !result.ok()) return result;
    if (Result result = database_.open(databaseName_); !result.ok()) return result;
    Result result = compare();
    return backup_.hasChanged() ? changedFailure(backupName_) : result;
  }

 private:
  Result compare() {
    if (Result result = readCurrent(); !result.ok()) return result;
    if (Result result = readAlien(); !result.ok()) return result;
    mergeSystemRecord();
    return addObjects();
  }

  Result openBackup() {
    if (Result result = plain_.open(backupName_); !result.ok()) return result;
    if (!backup_.open(plain_.path().c_str())) {
      return fileFailure(exitNotOpened, "the backup cannot be opened", backupName_,
                         backup_.errorNumber());
    }
    if (kdb::looksLikeDatabase(backupName_.c_str())) {
      return fail(exitNotAsExpected, "this is a database, not a backup", backupName_,
                  "make a backup of it with \"orxkdb backup\", and give that");
    }
    return {};
  }

  Result readCurrent() {
    const DatabaseRead read = readDatabase(database_.handle(), merge_);
    if (!read.ok() && !isEndOfRecords(read.code)) {
      return lastFailure(databaseName_, database_.handle());
    }
    if (!read.ok()) return refuse("the database is empty, and a merge needs its counters");
    if (merge_.readSystemRecord()) return {};
    return refuse("a merge would fail: there are no identifier counters in the system record");
  }

  [[nodiscard]] Result refuse(std::string_view why) const {
    return fail(exitNotAsExpected, why, databaseName_, "restore a whole backup into it first");
  }

  Result readAlien() {
    runProgress().enterFile("reading", plain_.path());
    if (readBackup(backup_, merge_) == ReadOutcome::end) return {};
    return fileFailure(exitFailed, "the backup cannot be read", backupName_, backup_.errorNumber());
  }

  void mergeSystemRecord() {
    runProgress().enter("sorting");
    merge_.mergeSystemRecord();
    const std::string text = chainText(merge_.systemRecord());
    plan_.systemAfter = {chainLength(text), std::strlen(text.c_str())};
    plan_.replaced = observer_.othersBelow(plan_.systemAfter.records);
  }

  Result addObjects() {
    runProgress().enter("comparing", plan_.backupRecords);
    KeyCheck keys(database_, plan_.systemAfter.records);
    std::uint64_t used = 0;
    for (MergedObject object; merge_.nextObject(object); used += object.sources) {
      identifiers_.add(object.head.objectHandle());
      addRecords(object, keys);
    }
    for (const auto& [type, records] : plan_.leftOut) used += records;
    plan_.alienSystemRecords = plan_.backupRecords - used;
    plan_.identifiers = identifiers_.take(observer_.tables());
    return database_.result();
  }

  void addRecords(const MergedObject& object, KeyCheck& keys) {
    TypeTotals& totals = plan_.types[object.head.recType()];
    const std::size_t length = chainLength(object.text);
    ++totals.objects;
    totals.records += length;
    const std::uint64_t refusedBefore = totals.refused;
    RecordKey key = keyOf(object.head);
    for (key.recn = 0; key.recn < length; ++key.recn) {
      const std::optional<KeyTaken> taken = keys.add(key);
      runProgress().countRecord();
      if (!taken) continue;
      ++totals.refused;
      if (limit_ == 0 || plan_.refused.size() < limit_) plan_.refused.push_back({key, *taken});
    }
    const bool isAdded = totals.refused - refusedBefore < length;
    if (isAdded && isStray(object.head)) ++plan_.addedStrays;
  }

  const std::string& databaseName_;
  const std::string& backupName_;
  std::size_t limit_;
  MergePlan& plan_;
  PlanObserver observer_;
  MergeRun merge_;
  PlainBackup plain_;
  BackupReader backup_;
  DatabaseReader database_;
  IdentifierList identifiers_;
};

}  // namespace

Result planMerge(const std::string& database, const std::string& backup, std::size_t limit,
                 MergePlan& plan) {
  return PlanRun(database, backup, limit, plan).run();
}

}  // namespace orx::orxkdb
