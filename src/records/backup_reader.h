// BackupReader: the lines of a backup file, one after the other, from a regular file or a pipe.
//
// Line rules. A line is what stands before a line feed, at most 444 characters with it; a longer
// one comes in pieces, each taken as a line of its own. One "\n" at the end is removed and then one
// "\r" before it. A zero byte ends what counts as the text of the line, so the line end behind a
// zero byte stays, like every byte there: the columns of a record reach past it. A line that begins
// with a zero byte ends the input, as the end of the file does. Columns that a line does not reach
// are zero.
//
// The reader keeps 256 KiB whatever the size of the file. Reading goes on after an interrupted
// system call. Once the input has ended or failed, every further call says so again; whole lines
// before the failure are given out first.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/file.h"
#include "platform/file_state.h"
#include "records/backup_line.h"

namespace orx {

class CMDatabaseBackupRecord;

enum class [[nodiscard]] ReadOutcome : std::int32_t{line, end, error};

class BackupReader {
 public:
  BackupReader() = default;
  BackupReader(const BackupReader&) = delete;
  BackupReader& operator=(const BackupReader&) = delete;
  ~BackupReader();

  // Opens a file for reading and starts at its first line; a file that was open is closed. False,
  // with nothing open, when it cannot be opened or is a directory: errorNumber() tells why.
  [[nodiscard]] bool open(const char* path);
  // Nothing happens when nothing is open.
  void close();
  [[nodiscard]] bool isOpen() const { return file_.valid(); }
  // Whether reading never has to wait for somebody who writes.
  [[nodiscard]] bool isRegularFile() const;
  // Whether somebody has written to the file that is open since it was opened: what was read may be
  // a part of it, or parts of two states. False for anything but a regular file, of which nobody
  // knows, and when nothing is open.
  [[nodiscard]] bool hasChanged() const;

  // The next line; `record` or `line` changes only when the outcome is `line`. Without an open file
  // the outcome is `end`.
  ReadOutcome next(CMDatabaseBackupRecord& record);
  ReadOutcome next(BackupLine& line);

  // The errno value of the open or read that failed since the last open(), else 0.
  [[nodiscard]] int errorNumber() const { return errorNumber_; }

 private:
  ReadOutcome nextText(std::string_view& text);
  std::size_t pieceLength();
  void fill();

  UniqueFd file_;
  int errorNumber_ = 0;
  std::optional<FileState> opened_;  // the file when it was opened
  bool ended_ = false;               // no more bytes come from the file
  std::vector<char> buffer_;         // bytes begin_ to end_ are unread
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace orx
