// The calls of the keyed database for whole records: a DataBuffer in the place of key, buffer and
// lengths. Codes and order are those of platform/kdb.h.
#pragma once

#include <cstdint>
#include <string>

#include "platform/kdb.h"
#include "records/data_buffer.h"

namespace orx {

namespace record_calls {
inline constexpr auto keyLength = static_cast<std::int32_t>(data_layout::keySize);
inline constexpr auto recordLength = static_cast<std::int32_t>(data_layout::recordSize);
}  // namespace record_calls

// Of a call that reads: there is nothing left. Any other code but 0 is a failure.
[[nodiscard]] constexpr bool isEndOfRecords(std::int32_t code) {
  return code == static_cast<std::int32_t>(kdb::endOfData.code);
}

// `mode` as for kdbOpen. The code with its reason.
[[nodiscard]] inline kdb::kdbStatus openDatabase(const std::string& name, std::int32_t mode,
                                                 kdb::kdbHandle& database) {
  kdb::kdbStatus status;
  status.returnCode =
      kdb::kdbOpen(name.c_str(), static_cast<std::int32_t>(name.size()), mode, database, status);
  return status;
}

[[nodiscard]] inline std::int32_t addRecord(kdb::kdbHandle database, const DataBuffer& record) {
  using namespace record_calls;
  return kdb::AddRecord(database, record.data(), keyLength, record.data(), recordLength);
}

[[nodiscard]] inline std::int32_t updateRecord(kdb::kdbHandle database, const DataBuffer& record) {
  using namespace record_calls;
  return kdb::UpdateByKey(database, record.data(), keyLength, record.data(), recordLength);
}

[[nodiscard]] inline std::int32_t deleteRecord(kdb::kdbHandle database, const DataBuffer& record) {
  return kdb::DeleteByKey(database, record.data(), record_calls::keyLength);
}

// The first record whose key is that of `record` or follows it.
[[nodiscard]] inline std::int32_t readRecordFrom(kdb::kdbHandle database, DataBuffer& record) {
  using namespace record_calls;
  std::int32_t length = 0;
  return kdb::ReadNextByKey(database, record.data(), keyLength, record.data(), recordLength,
                            length);
}

// The first record whose key follows that of `record`.
[[nodiscard]] inline std::int32_t readRecordBehind(kdb::kdbHandle database, DataBuffer& record) {
  if (kdb::advanceKey(record.data())) return readRecordFrom(database, record);
  return static_cast<std::int32_t>(kdb::endOfData.code);
}

// A cursor before the first record.
[[nodiscard]] inline std::int32_t openCursor(kdb::kdbHandle database, kdb::kdbHandle& cursor) {
  return kdb::OpenCursor(database, nullptr, 0, cursor);
}

[[nodiscard]] inline std::int32_t readNextRecord(kdb::kdbHandle cursor, DataBuffer& record) {
  std::int32_t length = 0;
  return kdb::ReadNextFromCursor(cursor, 0, record.data(), record_calls::recordLength, length);
}

// An update scan over all records.
[[nodiscard]] inline std::int32_t startUpdate(kdb::kdbHandle database, kdb::kdbHandle& scan) {
  return kdb::StartUpdate(database, DataBuffer().data(), record_calls::keyLength, scan);
}

[[nodiscard]] inline std::int32_t readNextForUpdate(kdb::kdbHandle scan, DataBuffer& record,
                                                    kdb::kdbHandle& held) {
  std::int32_t length = 0;
  return kdb::ReadNextForUpdate(scan, 0, record.data(), record_calls::recordLength, length, held);
}

}  // namespace orx
