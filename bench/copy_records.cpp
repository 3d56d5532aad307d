// What reading and writing a database costs without doing anything else:
//
//   copy_records FROM        reads all records with a cursor
//   copy_records FROM TO     reads them so, then once more while it adds them to the new database
//   TO
#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/kdb.h"

namespace {

using namespace orx;

constexpr auto endOfRecords = static_cast<std::int32_t>(kdb::Code::notThere);

bool open(const std::string& name, std::int32_t mode, kdb::kdbHandle& database) {
  kdb::kdbStatus status;
  return kdb::kdbOpen(name.c_str(), static_cast<std::int32_t>(name.size()), mode, database,
                      status) == 0;
}

template <typename Visit>
bool forEachRecord(kdb::kdbHandle database, Visit visit) {
  kdb::kdbHandle cursor;
  if (kdb::OpenCursor(database, nullptr, 0, cursor) != 0) return false;
  std::array<std::uint8_t, kdb::recordSize> record{};
  std::int32_t length = 0;
  std::int32_t code = 0;
  while (code == 0) {
    code = kdb::ReadNextFromCursor(cursor, 0, record.data(), kdb::recordSize, length);
    if (code == 0 && !visit(record.data())) return false;
  }
  return code == endOfRecords;
}

bool copyTo(kdb::kdbHandle from, const std::string& name) {
  kdb::kdbHandle to;
  if (!open(name, kdb::openAsNew, to)) return false;
  const bool copied = forEachRecord(from, [to](const std::uint8_t* record) {
    return kdb::AddRecord(to, record, kdb::keySize, record, kdb::recordSize) == 0;
  });
  kdb::kdbStatus status;
  return copied && kdb::CloseDatabase(to, status) == 0;
}

}  // namespace

int main(int argc, char* argv[]) {
  if (argc < 2 || argc > 3) return 125;
  kdb::kdbHandle from;
  bool done = open(argv[1], kdb::openForReading, from) &&
              forEachRecord(from, [](const std::uint8_t*) { return true; });
  if (done && argc == 3) done = copyTo(from, argv[2]);
  if (!done) (void)std::fputs("copy_records: failed\n", stderr);
  return done ? 0 : 1;
}
