// BackupFile: the lines of a backup file as a restore takes them, each with its place in the file,
// so that any of them can be read again.
//
// A piece is what a restore makes one record of: a line, or for a line of more than 444 characters
// with its line end each part of that length. Where a piece begins with a zero byte the restore
// ends; next() goes on.
//
// open() comes first. Memory is bounded. What is read counts as the progress of the run.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/input/plain_backup.h"
#include "orxkdb/result.h"
#include "platform/file.h"
#include "platform/file_state.h"
#include "records/backup_record.h"

namespace orx::orxkdb {

struct BackupPiece {
  // Without its line end, but with every zero byte; lives until the next piece is read.
  std::string_view text;
  std::uint64_t offset = 0;  // in the file
  std::uint64_t line = 0;    // from 1 on
  bool continuesLine = false;

  [[nodiscard]] bool hasZeroByte() const { return text.find('\0') != std::string_view::npos; }
  [[nodiscard]] bool endsRestore() const { return text.starts_with('\0'); }
};

class BackupFile {
 public:
  // A regular file, compressed or not, or a pipe (plain_backup.h); anything else is refused with
  // exitNotOpened. Lines, offsets and size are those of what comes out.
  Result open(const std::string& name);

  // The next piece; false at the end and after a failure, which result() tells.
  [[nodiscard]] bool next(BackupPiece& piece);
  [[nodiscard]] const Result& result() const { return result_; }
  // The result of all that was read: exitFailed as well when somebody wrote to the file meanwhile.
  [[nodiscard]] Result finish() const;
  // Makes the first piece the next one.
  void rewind();

  // The piece at `offset` once more, as a record; next() is not affected, but the text of its piece
  // is gone. `offset` is that of a piece. False after a failure, when `record` is of no use. Reads
  // ahead in ascending order, and one piece only elsewhere.
  [[nodiscard]] bool readAt(std::uint64_t offset, CMDatabaseBackupRecord& record);

  [[nodiscard]] std::uint64_t size() const { return size_; }
  // Begins a phase of the progress whose measure is the file; `phase` is a literal.
  void enterPhase(const char* phase) const;

 private:
  Result checkEmpty() const;
  [[nodiscard]] std::string_view pieceAt(std::uint64_t offset);
  [[nodiscard]] bool readWindow(std::uint64_t offset);

  std::string name_;
  PlainBackup plain_;
  UniqueFd file_;
  std::optional<FileState> opened_;  // the file when it was opened
  Result result_;
  std::uint64_t size_ = 0;  // when it was opened; what is appended later is not read
  std::uint64_t offset_ = 0;
  std::uint64_t line_ = 1;
  bool continuesLine_ = false;
  std::vector<char> window_;  // bytes of the file from windowOffset_ on
  std::uint64_t windowOffset_ = 0;
  std::size_t windowSize_ = 0;
};

}  // namespace orx::orxkdb
