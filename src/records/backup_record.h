// CMDatabaseBackupRecord: one line of a backup file, without its line end, and the conversion
// between it and a database record. The columns are those of backup_layout.h.
//
// Conversions report nothing. Reading takes what it finds: a handle column that is no complete
// exported form gives the null handle or one with only type and flags, a number column without
// digits gives 0, a data length outside 0 to 256 is clamped into that range. Writing cannot carry
// every record (see carry_check.h): a number of more than 8 characters leaves its column full of
// "*", which reads as 0, and a line feed in the data breaks the line in two.
//
// A record that is written and read again keeps its numbers and its data up to the first zero byte.
// Its handles come back in the new format where their type is positive, none is temporary, and an
// inherited old-format handle whose type is neither 3 nor 4 comes back as its new-format reading.
#pragma once

#include <array>
#include <string_view>

#include "records/backup_layout.h"

namespace orx {

class DataBuffer;
struct MergeTables;

class CMDatabaseBackupRecord {
 public:
  // 440 blanks.
  CMDatabaseBackupRecord();
  // Copies exactly 440 characters.
  explicit CMDatabaseBackupRecord(const char* record);
  explicit CMDatabaseBackupRecord(const DataBuffer& buffer);
  CMDatabaseBackupRecord(const CMDatabaseBackupRecord& other);
  CMDatabaseBackupRecord& operator=(const CMDatabaseBackupRecord& other);
  // Writes the record from `buffer`.
  CMDatabaseBackupRecord& operator=(const DataBuffer& buffer);

  // Takes a line as read: its first 440 characters; the columns that it does not reach become zero
  // characters.
  void setLine(std::string_view line);

  // Rewrites all 296 bytes of `buffer`.
  void buildDataBuffer(DataBuffer& buffer) const;
  // The same for a merge. 0 when records of this type are not merged; `buffer` then holds only the
  // record type. Otherwise 1, handles of the merged types have new identifiers, and `nextId` of
  // `tables` is raised above these.
  [[nodiscard]] int buildDataBufferForMerge(DataBuffer& buffer, MergeTables& tables) const;

  // All 440 characters, not terminated; lives as long as the record.
  [[nodiscard]] std::string_view text() const { return {text_.data(), text_.size()}; }

 private:
  void write(const DataBuffer& buffer);

  std::array<char, backup_layout::recordWidth> text_;
};

static_assert(sizeof(CMDatabaseBackupRecord) == 440);

}  // namespace orx
