// A line of a backup, as a record and back.
#include <array>
#include <cstring>

#include "records/backup_record.h"
#include "records/carry_check.h"
#include "records/data_buffer.h"
#include "records/merge_tables.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

DataBuffer recordOf(const CMDatabaseBackupRecord& line) {
  DataBuffer record;
  line.buildDataBuffer(record);
  return record;
}

bool haveEqualNumbersAndText(const DataBuffer& a, const DataBuffer& b) {
  return a.recn() == b.recn() && a.recType() == b.recType() && a.auxValue1() == b.auxValue1() &&
         a.auxValue2() == b.auxValue2() && a.text() == b.text();
}

void checkMerge(const CMDatabaseBackupRecord& line, const DataBuffer& plain, std::uint32_t base) {
  MergeTables tables;
  tables.mergeTypes.fill(1);
  tables.idBase.fill(base);
  DataBuffer merged;
  const bool taken = line.buildDataBufferForMerge(merged, tables) == 1;
  require(taken == tables.merges(plain.recType()), "a merge takes the types of its table");
  require(merged.recType() == plain.recType(), "a merge keeps the type");
  if (taken) require(haveEqualNumbersAndText(merged, plain), "a merge moves handles alone");
}

const Registration target("backup_line", [](Input& input) {
  const std::uint32_t base = input.byte();
  CMDatabaseBackupRecord line;
  line.setLine(input.rest());
  const DataBuffer record = recordOf(line);
  checkMerge(line, record, base);
  if (checkCarry(record) != CarryProblem::none) return;
  const DataBuffer again = recordOf(CMDatabaseBackupRecord(record));
  require(haveEqualNumbersAndText(record, again), "numbers and text come back");
  DataBuffer settled = again;
  for (int i = 0; i < 3; ++i) settled = recordOf(CMDatabaseBackupRecord(settled));
  const CMDatabaseBackupRecord written(settled);
  require(recordOf(written) == settled, "written again and again, a record settles");
  require(written.text() == CMDatabaseBackupRecord(recordOf(written)).text(),
          "and so does its line");
});

}  // namespace
}  // namespace orx::fuzz
