// The records that a restore makes of the lines of a backup, in the form that the next backup would
// carry (diff/carried_source.h), as those of a database beside them are.
//
// A first pass looks at the keys alone. Where they ascend, as in every backup of a database, a
// second one reads the records. Behind the first key that does not, the pass starts again and
// remembers 32 bytes for each line; once sorted, they tell in which order the lines are read.
//
// A line whose key columns hold no complete key is unreadable: it is counted and left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

#include "orxkdb/diff/record_source.h"
#include "orxkdb/input/backup_file.h"
#include "records/backup_layout.h"

namespace orx::orxkdb {

class BackupSource final : public RecordSource {
 public:
  // Remembers `limit` unreadable lines, 0: all.
  BackupSource(std::string name, std::size_t limit)
      : RecordSource(std::move(name)), limit_(limit) {}

  // The first call; makes the first pass.
  Result open();
  [[nodiscard]] bool isDatabase() const override { return false; }
  [[nodiscard]] std::uint64_t expectedRecords() const override {
    return file_.size() / (backup_layout::recordWidth + 1);
  }

 protected:
  [[nodiscard]] bool read(KeyedRecord& record, Result& result) override;

 private:
  struct Entry {
    RecordKey key;
    std::uint64_t offset;  // of the line
  };
  static_assert(sizeof(Entry) == 32);

  // Calls visit(piece, key) for every line that a record can be made of, until it returns false.
  template <typename Visit>
  void scanKeys(Visit visit);
  void addUnreadable(const BackupPiece& piece);
  void sortLines();
  [[nodiscard]] bool nextLine();
  [[nodiscard]] bool nextSortedLine();
  [[nodiscard]] bool isUnreadable(const BackupPiece& piece);
  [[nodiscard]] bool takeLine(const BackupPiece& piece);

  std::size_t limit_;
  BackupFile file_;
  CMDatabaseBackupRecord line_;
  std::vector<std::uint64_t> unreadable_;  // offsets
  std::size_t nextUnreadable_ = 0;
  bool isSorted_ = false;  // by entries_
  std::pmr::vector<Entry> entries_;
  std::size_t nextEntry_ = 0;
};

}  // namespace orx::orxkdb
