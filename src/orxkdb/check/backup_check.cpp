#include "orxkdb/check/backup_check.h"

#include <algorithm>
#include <tuple>
#include <vector>

#include "orxkdb/check/line_check.h"
#include "orxkdb/check/object_checker.h"
#include "orxkdb/input/backup_file.h"
#include "platform/huge_pages.h"

namespace orx::orxkdb {

namespace {

// Where the line of a record is.
struct Entry {
  HandleNumber parent;
  HandleNumber object;
  std::uint32_t recn;
  std::uint32_t line;
  std::uint64_t offset;

  [[nodiscard]] auto key() const { return std::tuple(parent, object, recn); }
};
static_assert(sizeof(Entry) == 32);

class BackupCheck {
 public:
  BackupCheck(Findings& findings, Inventory& inventory)
      : findings_(findings), inventory_(inventory), checker_(findings, inventory) {}

  Result run(const std::string& name, CheckCounts& counts) {
    if (Result result = file_.open(name); !result.ok()) return result;
    readLines();
    counts.records = entries_.size();
    counts.outOfOrder = countDescents();
    if (counts.outOfOrder > 0) {
      std::ranges::sort(entries_, {}, [](const Entry& entry) {
        return std::tuple_cat(entry.key(), std::tuple(entry.offset));
      });
    }
    inventory_.expect(entries_.size());
    if (file_.result().ok()) readRecords();
    return file_.finish();
  }

 private:
  void readLines() {
    BackupPiece piece;
    while (file_.next(piece)) {
      if (piece.endsRestore()) return addEnd(piece);
      checkLine(piece);
      addEntry(piece);
    }
  }

  void addEnd(const BackupPiece& piece) {
    findings_.add(FindingKind::zeroByte, {piece.line, {}, {}}, [&] {
      return "a restore ends here, " + std::to_string(file_.size() - piece.offset) +
             " bytes before the end of the file";
    });
  }

  // What follows in a line that is too long has been reported with its beginning.
  void checkLine(const BackupPiece& piece) {
    if (piece.continuesLine) return;
    for (const LineFault& fault : lineFaults(piece.text)) {
      findings_.add(fault.kind, {piece.line, {}, {}}, [&] { return fault.text; });
    }
  }

  void addEntry(const BackupPiece& piece) {
    record_.setLine(piece.text);
    record_.buildDataBuffer(buffer_);
    entries_.push_back({numberOf(buffer_.parentBytes()), numberOf(buffer_.objectBytes()),
                        buffer_.recn(), static_cast<std::uint32_t>(piece.line), piece.offset});
  }

  [[nodiscard]] std::uint64_t countDescents() const {
    std::uint64_t count = 0;
    for (std::size_t i = 1; i < entries_.size(); ++i) {
      if (entries_[i].key() < entries_[i - 1].key()) ++count;
    }
    return count;
  }

  void readRecords() {
    const Entry* before = nullptr;
    for (const Entry& entry : entries_) {
      if (before != nullptr && before->key() == entry.key()) {
        addDuplicate(entry, *before);
        continue;
      }
      before = &entry;
      if (!file_.readAt(entry.offset, record_)) return;
      record_.buildDataBuffer(buffer_);
      checker_.add(buffer_, entry.line);
    }
    checker_.finish();
  }

  void addDuplicate(const Entry& entry, const Entry& first) {
    const Place place{entry.line, Place::Object{entry.parent, entry.object}, entry.recn};
    findings_.add(FindingKind::duplicateKey, place,
                  [&] { return "it has the key of line " + std::to_string(first.line); });
  }

  Findings& findings_;
  Inventory& inventory_;
  ObjectChecker checker_;
  BackupFile file_;
  CMDatabaseBackupRecord record_;
  DataBuffer buffer_;
  std::pmr::vector<Entry> entries_{&hugePageMemory()};
};

}  // namespace

Result checkBackup(const std::string& name, Findings& findings, Inventory& inventory,
                   CheckCounts& counts) {
  return BackupCheck(findings, inventory).run(name, counts);
}

}  // namespace orx::orxkdb
