// Plain records and short calls for tests of the keyed database.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "platform/bytes.h"
#include "platform/kdb.h"
#include "tests/support/temp_dir.h"

namespace orx::test {

using Record = std::array<std::uint8_t, kdb::recordSize>;

inline Record makeRecord(std::uint32_t object, std::uint32_t recn = 0, std::uint8_t fill = 1) {
  Record record{};
  record.fill(fill);
  std::memset(record.data(), 0, 16);
  storeBE32(record.data() + 8, object);
  storeLE32(record.data() + 16, recn);
  return record;
}

inline std::uint32_t objectOf(const Record& record) {
  return loadBE32(record.data() + 8);
}

// "code/reason" of an outcome, for comparisons that read like the documentation.
inline std::string text(const kdb::kdbStatus& status) {
  return std::to_string(status.returnCode) + "/" + std::to_string(status.reason);
}

// An open database with calls that fail the test's expectation through their returned text.
class Opened {
 public:
  explicit Opened(const std::string& name, std::int32_t mode = kdb::openForUpdate) {
    kdb::kdbStatus status;
    (void)kdb::kdbOpen(name.c_str(), static_cast<std::int32_t>(name.size()), mode, handle, status);
    opened = text(status);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;
  ~Opened() { (void)kdb::AbandonDatabase(handle); }

  std::string status(std::int32_t code) const {
    kdb::kdbStatus last;
    if (code != 0) kdb::GetLastStatus(handle, last);
    return std::to_string(code) + "/" + std::to_string(last.reason);
  }
  std::string add(const Record& r) const {
    return status(kdb::AddRecord(handle, r.data(), 20, r.data(), 296));
  }
  std::string update(const Record& r) const {
    return status(kdb::UpdateByKey(handle, r.data(), 20, r.data(), 296));
  }
  std::string erase(const Record& r) const {
    return status(kdb::DeleteByKey(handle, r.data(), 20));
  }
  std::string readNext(Record& r) const {
    std::int32_t length = 0;
    return status(kdb::ReadNextByKey(handle, r.data(), 20, r.data(), 296, length));
  }
  std::string close() const {
    kdb::kdbStatus closed;
    (void)kdb::CloseDatabase(handle, closed);
    return text(closed);
  }
  kdb::kdbHandle cursor() const {
    kdb::kdbHandle made;
    EXPECT_EQ(kdb::OpenCursor(handle, nullptr, 0, made), 0);
    return made;
  }
  std::vector<Record> all(kdb::kdbHandle from, std::string* end = nullptr) const {
    std::vector<Record> records;
    Record record{};
    std::int32_t length = 0;
    std::int32_t code = kdb::ReadNextFromCursor(from, 0, record.data(), 296, length);
    for (; code == 0; code = kdb::ReadNextFromCursor(from, 0, record.data(), 296, length)) {
      records.push_back(record);
    }
    if (end != nullptr) *end = status(code);
    return records;
  }
  std::vector<Record> all() const { return all(cursor()); }

  kdb::kdbHandle handle;
  std::string opened;
};

// Adds the records and publishes them.
inline void addRecords(const std::string& name, const std::vector<Record>& records,
                       std::int32_t mode = kdb::openForUpdate) {
  const Opened database(name, mode);
  for (const Record& record : records) ASSERT_EQ(database.add(record), "0/0");
  ASSERT_EQ(database.close(), "0/0");
}

// Also under a name that the programs would not give it.
inline void createDatabase(const std::string& name, std::uint32_t count = 0) {
  std::vector<Record> records;
  for (std::uint32_t i = 1; i <= count; ++i) records.push_back(makeRecord(i));
  addRecords(name + ".made", records, kdb::openAsNew);
  std::filesystem::rename(name + ".made", name);
}

// A database of which the first pages alone are sound. Returns its bytes.
inline std::string writeDamagedDatabase(const std::string& name) {
  createDatabase(name, 2000);
  std::string bytes = readFile(name);
  bytes.replace(20 * 4096, 2 * 4096, std::string(2 * 4096, '\x5A'));
  writeFile(name, bytes);
  return bytes;
}

// Every record in order, or "unreadable".
inline std::string recordBytes(const std::string& name) {
  const Opened database(name, kdb::openForReading);
  if (database.opened != "0/0") return "unreadable";
  std::string all = "database ", end;
  for (const Record& record : database.all(database.cursor(), &end)) {
    all.append(record.begin(), record.end());
  }
  return end == "5/14" ? all : "unreadable";
}

inline std::vector<std::uint32_t> objects(const std::string& name) {
  std::vector<std::uint32_t> found;
  const Opened database(name, kdb::openForReading);
  EXPECT_EQ(database.opened, "0/0");
  for (const Record& record : database.all()) found.push_back(objectOf(record));
  return found;
}

}  // namespace orx::test
