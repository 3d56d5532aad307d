#include "orxkdb/input/database_reader.h"

#include <algorithm>

#include "orxkdb/keys/record_name.h"
#include "platform/kdb.h"
#include "platform/run_progress.h"
#include "records/record_calls.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t batchRecords = 512;
// A smaller database is read in less time than a thread takes to start.
constexpr std::uint64_t worthAThread = 10000;

}  // namespace

DatabaseReader::~DatabaseReader() {
  ahead_.reset();
  (void)kdb::AbandonDatabase(database_);
}

Result DatabaseReader::open(const std::string& name) {
  name_ = name;
  const kdb::kdbStatus status = openDatabase(name, kdb::openForReading, database_);
  if (status.returnCode != 0) return openFailure(name, status);
  return rewind();
}

Result DatabaseReader::rewind() {
  ahead_.emplace([this](Batch& batch) { return fill(batch); });
  count_ = readCount_ = 0;
  batch_.count = at_ = 0;
  runProgress().enter("reading", kdb::recordsWhenOpened(database_));
  if (openCursor(database_, cursor_) != 0) return lastFailure(name_, database_);
  return {};
}

bool DatabaseReader::next(DataBuffer& record) {
  if (!result_.ok()) return false;
  if (count_ == 0 && kdb::recordsWhenOpened(database_) > worthAThread) ahead_->start();
  while (at_ == batch_.count) {
    result_ = batch_.result;
    batch_.count = at_ = 0;
    if (!result_.ok() || !ahead_->take(batch_)) return false;
  }
  record = batch_.records[at_++].record;
  ++count_;
  runProgress().countRecord();
  return true;
}

// Full, and there may be more, or the last.
bool DatabaseReader::fill(Batch& batch) {
  batch.records.resize(batchRecords);
  batch.result = {};
  for (batch.count = 0; batch.count < batchRecords; ++batch.count) {
    if (!readRecord(batch.records[batch.count], batch.result)) return false;
  }
  return true;
}

// False at the end and after a failure, which is in `result`.
bool DatabaseReader::readRecord(StoredRecord& stored, Result& result) {
  const std::int32_t code = readNextRecord(cursor_, stored.record);
  if (code == 0) {
    (void)kdb::GetCursorKey(cursor_, stored.key.data(), kdb::keySize);
    stored.lookResult = look_ != nullptr && look_(stored.record);
    ++readCount_;
    return true;
  }
  if (!isEndOfRecords(code)) {
    result = lastFailure(name_, database_, " behind its record " + std::to_string(readCount_));
  }
  return false;
}

bool DatabaseReader::isUnderItsKey(const DataBuffer& record) const {
  return std::equal(last().key.begin(), last().key.end(), record.data());
}

DataBuffer DatabaseReader::storedKey() const {
  DataBuffer key;
  std::ranges::copy(last().key, key.data());
  return key;
}

std::string DatabaseReader::storedName() const {
  return "stored as " + recordName(storedKey());
}

}  // namespace orx::orxkdb
