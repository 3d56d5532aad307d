#include "orxkdb/diff/record_source.h"

#include "orxkdb/diff/backup_source.h"
#include "orxkdb/diff/carried_source.h"
#include "orxkdb/diff/database_source.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"

namespace orx::orxkdb {

namespace {

template <typename Source>
Result open(std::unique_ptr<Source> opened, std::unique_ptr<RecordSource>& source) {
  Result result = opened->open();
  source = std::move(opened);
  return result;
}

}  // namespace

bool RecordSource::next(KeyedRecord& record) {
  while (result_.ok() && read(record, result_)) {
    if (counts_.records == 0 || record.key > last_) {
      ++counts_.records;
      last_ = record.key;
      return true;
    }
    ++counts_.repeated;
    if (record.key < last_) {
      result_ = changedFailure(name_);
    }
  }
  return false;
}

Result openSource(const std::string& name, Content content, std::size_t limit,
                  std::unique_ptr<RecordSource>& source) {
  if (!kdb::looksLikeDatabase(name.c_str())) {
    return open(std::make_unique<BackupSource>(name, limit), source);
  }
  if (content == Content::carried) return open(std::make_unique<CarriedSource>(name), source);
  return open(std::make_unique<DatabaseSource>(name), source);
}

}  // namespace orx::orxkdb
