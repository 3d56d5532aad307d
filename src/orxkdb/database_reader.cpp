#include "orxkdb/database_reader.h"

#include <algorithm>

#include "orxkdb/record_name.h"
#include "platform/kdb_statistics.h"
#include "platform/run_progress.h"

namespace orx::orxkdb {

namespace {

constexpr auto endOfRecords = static_cast<std::int32_t>(kdb::endOfData.code);
constexpr auto keyLength = static_cast<std::int32_t>(kdb::keySize);
constexpr auto recordLength = static_cast<std::int32_t>(kdb::recordSize);

}  // namespace

DatabaseReader::~DatabaseReader() {
  (void)kdb::AbandonDatabase(database_);
}

Result DatabaseReader::open(const std::string& name) {
  name_ = name;
  kdb::kdbStatus status;
  if (kdb::kdbOpen(name.c_str(), static_cast<std::int32_t>(name.size()), kdb::openForReading,
                   database_, status) != 0) {
    return openFailure(name, status);
  }
  return rewind();
}

Result DatabaseReader::rewind() {
  count_ = 0;
  runProgress().enter("reading", kdb::recordsWhenOpened(database_));
  if (kdb::OpenCursor(database_, nullptr, 0, cursor_) != 0) return lastFailure(name_, database_);
  return {};
}

bool DatabaseReader::next(DataBuffer& record) {
  if (!result_.ok()) return false;
  std::int32_t length = 0;
  const std::int32_t code =
      kdb::ReadNextFromCursor(cursor_, 0, record.data(), recordLength, length);
  if (code == 0) {
    ++count_;
    runProgress().countRecord();
    return true;
  }
  if (code != endOfRecords) {
    result_ = lastFailure(name_, database_, " behind its record " + std::to_string(count_));
  }
  return false;
}

bool DatabaseReader::isUnderItsKey(const DataBuffer& record) const {
  std::array<std::uint8_t, kdb::keySize> key;
  return kdb::GetCursorKey(cursor_, key.data(), keyLength) == 0 &&
         std::equal(key.begin(), key.end(), record.data());
}

DataBuffer DatabaseReader::storedKey() const {
  DataBuffer key;
  (void)kdb::GetCursorKey(cursor_, key.data(), keyLength);
  return key;
}

std::string DatabaseReader::storedName() const {
  return "stored as " + recordName(storedKey());
}

}  // namespace orx::orxkdb
