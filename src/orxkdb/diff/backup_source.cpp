#include "orxkdb/diff/backup_source.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "model/decimal.h"
#include "orxkdb/diff/carried_source.h"
#include "orxkdb/input/backup_columns.h"
#include "orxkdb/words/printable.h"
#include "platform/huge_pages.h"
#include "records/backup_layout.h"

namespace orx::orxkdb {

namespace {

bool readHandle(std::string_view column, HandleNumber& number) {
  CMConfigHandle handle;
  const bool isComplete = handle.importHndl(column) == 1;
  number = normalForm(numberOf(handle.bytes()));
  return isComplete;
}

bool readNumber(std::string_view column, std::uint32_t& number) {
  const char* at = column.data();
  const char* const end = at + column.size();
  number = static_cast<std::uint32_t>(readDecimal(at, end));
  const bool hasDigits = at != column.data() && at[-1] >= '0' && at[-1] <= '9';
  return hasDigits && std::all_of(at, end, [](char c) { return c == ' '; });
}

// The name of the first key column that holds no key, null when all do.
const char* findFault(std::string_view line, RecordKey& key) {
  if (!readHandle(columnOf(line, backup_layout::parentHandle), key.parent)) return "parent handle";
  if (!readHandle(columnOf(line, backup_layout::objectHandle), key.object)) return "object handle";
  if (!readNumber(columnOf(line, backup_layout::recn), key.recn)) return "record number";
  return nullptr;
}

std::string whyUnreadable(const BackupPiece& piece) {
  if (piece.continuesLine) return "the line is too long, and this is its rest";
  RecordKey ignored;
  return std::string("it has no ") + findFault(piece.text, ignored) + ": \"" +
         printable(piece.text.substr(0, backup_layout::recType.offset)) + "\"";
}

}  // namespace

Result BackupSource::open() {
  if (Result result = file_.open(name()); !result.ok()) return result;
  bool ascends = true;
  RecordKey last;
  scanKeys([&](const BackupPiece&, const RecordKey& key) {
    ascends = !(key < last);
    last = key;
    return ascends;
  });
  if (file_.result().ok() && !ascends) sortLines();
  file_.rewind();
  return file_.result();
}

template <typename Visit>
void BackupSource::scanKeys(Visit visit) {
  unreadable_.clear();
  BackupPiece piece;
  RecordKey key;
  bool goesOn = true;
  while (goesOn && file_.next(piece) && !piece.endsRestore()) {
    if (piece.continuesLine || findFault(piece.text, key) != nullptr) {
      addUnreadable(piece);
    } else {
      goesOn = visit(piece, key);
    }
  }
}

void BackupSource::addUnreadable(const BackupPiece& piece) {
  unreadable_.push_back(piece.offset);
  SourceCounts& counts = counting();
  counts.unreadable = unreadable_.size();
  const bool isNew = counts.unreadable > counts.unreadableShown.size();
  if (!isNew || (limit_ != 0 && counts.unreadable > limit_)) return;
  counts.unreadableShown.push_back({piece.line, whyUnreadable(piece)});
}

void BackupSource::sortLines() {
  isSorted_ = true;
  file_.enterPhase("sorting");
  entries_ = std::pmr::vector<Entry>(&hugePageMemory());
  file_.rewind();
  scanKeys([this](const BackupPiece& piece, const RecordKey& key) {
    entries_.push_back({key, piece.offset});
    return true;
  });
  std::ranges::sort(entries_, {}, [](const Entry& e) { return std::tie(e.key, e.offset); });
}

bool BackupSource::read(KeyedRecord& record, Result& result) {
  const bool isRead = isSorted_ ? nextSortedLine() : nextLine();
  result = isRead ? file_.result() : file_.finish();
  if (!isRead) return false;
  DataBuffer restored;
  line_.buildDataBuffer(restored);
  record.record = carriedForm(restored);
  if (record.record != restored) ++counting().reduced;
  record.key = keyOf(record.record);
  return true;
}

bool BackupSource::nextLine() {
  BackupPiece piece;
  while (file_.next(piece) && !piece.endsRestore()) {
    if (!isUnreadable(piece)) return takeLine(piece);
  }
  return false;
}

bool BackupSource::nextSortedLine() {
  return nextEntry_ < entries_.size() && file_.readAt(entries_[nextEntry_++].offset, line_);
}

// Lines are asked for in the order of the file.
bool BackupSource::isUnreadable(const BackupPiece& piece) {
  const bool isNext =
      nextUnreadable_ < unreadable_.size() && unreadable_[nextUnreadable_] == piece.offset;
  if (isNext) ++nextUnreadable_;
  return isNext;
}

// Behind a zero byte more than the text counts.
bool BackupSource::takeLine(const BackupPiece& piece) {
  if (piece.hasZeroByte()) return file_.readAt(piece.offset, line_);
  line_.setLine(piece.text);
  return true;
}

}  // namespace orx::orxkdb
