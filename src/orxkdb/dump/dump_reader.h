// DumpReader: the records of a dump (dump_format.h), each checked before it is given out.
//
//   open(), readHeader(), then next() until it is false; result() tells the end from a fault.
//
// The header may hold further NAME=VALUE lines, as the engines' own tools write them. The dump may
// be compressed. A fault is exitNotAsExpected, a read that failed exitFailed; both are named with
// the file and the line, and nothing may be called after them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "orxkdb/dump/dump_format.h"
#include "orxkdb/input/line_reader.h"
#include "orxkdb/result.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

class DumpReader {
 public:
  // `name` is a file or "-" for standard input. exitNotOpened when it cannot be opened.
  Result open(const std::string& name);
  Result readHeader();

  // Keys ascend, and every record begins with its own. False at DATA=END, with nothing behind it,
  // and after a fault; `record` is of no use then.
  [[nodiscard]] bool next(DataBuffer& record);
  [[nodiscard]] const Result& result() const { return result_; }
  // The number of records that next() gave.
  [[nodiscard]] std::uint64_t count() const { return count_; }
  // "FILE:LINE" of the record that came last.
  [[nodiscard]] std::string place() const { return lines_.place(); }

 private:
  Result readVersion();
  Result readHeaderLine(std::string_view line);
  Result checkHeader() const;
  Result readEntry(DataBuffer& record, bool& end);
  Result readLine(std::string_view& line, std::string_view missing);
  Result readBytes(std::string_view line, std::string_view what, std::span<std::uint8_t> bytes);
  Result checkKey(const DataBuffer& record, const dump_format::StoredKey& key);
  Result checkEnd();
  [[nodiscard]] Result fault(std::string_view what) const;
  [[nodiscard]] Result unread(LineOutcome outcome) const;

  LineReader lines_;
  bool hasFormat_ = false;
  bool hasType_ = false;
  std::optional<dump_format::StoredKey> previous_;
  std::uint64_t count_ = 0;
  Result result_;
};

}  // namespace orx::orxkdb
