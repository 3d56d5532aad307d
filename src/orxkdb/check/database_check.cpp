#include "orxkdb/check/database_check.h"

#include <array>
#include <cstring>
#include <filesystem>

#include "orxkdb/check/object_checker.h"
#include "orxkdb/input/database_reader.h"
#include "records/carry_check.h"

namespace orx::orxkdb {

namespace {

Place placeOf(const DataBuffer& record) {
  return {0, Place::Object{numberOf(record.parentBytes()), numberOf(record.objectBytes())},
          record.recn()};
}

bool hasBytesBehindText(const DataBuffer& record) {
  static constexpr std::array<std::uint8_t, data_layout::attrTextSize> zeros{};
  const auto rest = record.attrText().subspan(record.text().size());
  return !rest.empty() && std::memcmp(rest.data(), zeros.data(), rest.size()) != 0;
}

void checkCarried(const DataBuffer& record, Findings& findings) {
  const CarryProblem problem = checkCarry(record);
  if (problem != CarryProblem::none) {
    findings.add(FindingKind::notCarried, placeOf(record),
                 [&] { return std::string(describe(problem)); });
  } else if (hasBytesBehindText(record)) {
    findings.add(FindingKind::notCarried, placeOf(record),
                 [] { return "there are bytes behind the zero byte that ends its text"; });
  }
}

// That a database of this size can hold.
std::uint64_t mostRecords(const std::string& name) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(name, error);
  return error ? 0 : size / data_layout::recordSize;
}

}  // namespace

Result checkDatabase(const std::string& name, Findings& findings, Inventory& inventory,
                     CheckCounts& counts) {
  DatabaseReader reader;
  if (Result result = reader.open(name); !result.ok()) return result;
  reader.lookAtEach(
      [](const DataBuffer& record) { return ObjectChecker::isPlainText(record.text()); });
  inventory.expect(mostRecords(name));
  ObjectChecker checker(findings, inventory);
  DataBuffer record;
  while (reader.next(record)) {
    if (!reader.isUnderItsKey(record)) {
      findings.add(FindingKind::storedKey, placeOf(record), [&] { return reader.storedName(); });
    }
    checkCarried(record, findings);
    checker.add(record, 0, reader.lookResult());
  }
  checker.finish();
  counts.records = reader.count();
  return reader.result();
}

}  // namespace orx::orxkdb
