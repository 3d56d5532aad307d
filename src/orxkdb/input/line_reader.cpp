#include "orxkdb/input/line_reader.h"

#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "orxkdb/input/read_failure.h"
#include "orxkdb/standard_stream.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 20;

}  // namespace

LineReader::LineReader() : buffer_(bufferSize) {}

int LineReader::open(const std::string& name) {
  const bool isStandard = name == standardStream;
  name_ = isStandard ? "standard input" : name;
  return isStandard ? source_.openDescriptor(STDIN_FILENO) : source_.open(name);
}

LineOutcome LineReader::next(std::string_view& line) {
  ++lineNumber_;
  while (true) {
    const std::size_t unread = end_ - begin_;
    const char* const start = buffer_.data() + begin_;
    // One character more for a "\r" before the line end.
    const std::size_t searched = std::min(unread, longestLine + 2);
    const void* const found = searched == 0 ? nullptr : std::memchr(start, '\n', searched);
    if (found != nullptr) {
      take(static_cast<std::size_t>(static_cast<const char*>(found) - start), 1, line);
      return line.size() <= longestLine ? LineOutcome::line : LineOutcome::tooLong;
    }
    if (unread > longestLine + 1) return LineOutcome::tooLong;
    if (!ended_) {
      if (!fill()) return LineOutcome::error;
      continue;
    }
    if (unread == 0) return LineOutcome::end;
    take(unread, 0, line);
    return line.size() <= longestLine ? LineOutcome::line : LineOutcome::tooLong;
  }
}

std::string LineReader::place() const {
  return name_ + ":" + std::to_string(lineNumber_);
}

Result LineReader::failure(std::string_view what) const {
  return readFailure(source_, what, place(), exitNotAsExpected);
}

// Moves what is unread to the front, at most the beginning of one line, and reads behind it.
bool LineReader::fill() {
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(begin_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
  end_ -= begin_;
  begin_ = 0;
  const ssize_t count = source_.read(buffer_.data() + end_, buffer_.size() - end_);
  if (count < 0) return false;
  ended_ = count == 0;
  end_ += static_cast<std::size_t>(count);
  return true;
}

void LineReader::take(std::size_t length, std::size_t lineEnd, std::string_view& line) {
  line = {buffer_.data() + begin_, length};
  begin_ += length + lineEnd;
  if (lineEnd != 0 && line.ends_with('\r')) line.remove_suffix(1);
}

}  // namespace orx::orxkdb
