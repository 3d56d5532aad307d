// LineReader: the lines of a text file or of standard input, compressed or not, with a bounded
// length, so that memory and time stay the same whatever the input is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/result.h"
#include "platform/compression/byte_source.h"

namespace orx::orxkdb {

enum class [[nodiscard]] LineOutcome : std::int32_t{line, end, tooLong, error};

class LineReader {
 public:
  static constexpr std::size_t longestLine = 1024;  // without its line end

  LineReader();

  // `name` is a file or "-" for standard input. 0 or an errno value. Once for a reader.
  [[nodiscard]] int open(const std::string& name);

  // The next line without its "\n" and without a "\r" directly before that; it lives until the next
  // call. The last line of the input needs no line end. After any outcome but `line` nothing may be
  // read, and `line` is of no use.
  LineOutcome next(std::string_view& line);

  // "FILE:LINE" of the line that came last, or of the place behind it where there was none.
  [[nodiscard]] std::string place() const;
  // "FILE", or "standard input".
  [[nodiscard]] const std::string& name() const { return name_; }
  // Why the outcome was `error`, as readFailure (read_failure.h): exitNotAsExpected for compressed
  // data that is damaged or cut.
  [[nodiscard]] Result failure(std::string_view what) const;

 private:
  [[nodiscard]] bool fill();
  void take(std::size_t length, std::size_t lineEnd, std::string_view& line);

  std::string name_;
  ByteSource source_;
  bool ended_ = false;
  std::uint64_t lineNumber_ = 0;
  std::vector<char> buffer_;  // bytes begin_ to end_ are unread
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

}  // namespace orx::orxkdb
