#include "orxkdb/dump/dump_reader.h"

namespace orx::orxkdb {

using namespace dump_format;

Result DumpReader::open(const std::string& name) {
  const int error = lines_.open(name);
  if (error == 0) return {};
  return fileFailure(exitNotOpened, "the dump cannot be opened", name, error);
}

Result DumpReader::readHeader() {
  if (Result result = readVersion(); !result.ok()) return result;
  std::string_view line;
  while (true) {
    if (Result result = readLine(line, "the dump ends in its header"); !result.ok()) return result;
    if (line == headerEnd) return checkHeader();
    if (Result result = readHeaderLine(line); !result.ok()) return result;
  }
}

bool DumpReader::next(DataBuffer& record) {
  bool end = false;
  if (result_.ok()) result_ = readEntry(record, end);
  if (!result_.ok() || end) return false;
  ++count_;
  return true;
}

Result DumpReader::readVersion() {
  std::string_view line;
  const LineOutcome outcome = lines_.next(line);
  if (outcome == LineOutcome::end) return fault("the dump is empty");
  if (outcome == LineOutcome::error) return unread(outcome);
  if (line == version) return {};
  if (line.starts_with("VERSION=")) return fault("only dumps of VERSION=3 can be loaded");
  return fault("this is no dump, its first line is not VERSION=3");
}

Result DumpReader::readHeaderLine(std::string_view line) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos || equals == 0) {
    return fault("a header line is not of the form NAME=VALUE");
  }
  const std::string_view name = line.substr(0, equals);
  const std::string_view value = line.substr(equals + 1);
  if (name == "format") {
    if (value == "print") return fault("format=print cannot be loaded, only format=bytevalue");
    if (value != "bytevalue") return fault("the format is not bytevalue");
    hasFormat_ = true;
  } else if (name == "type") {
    if (value != "btree") return fault("the type is not btree");
    hasType_ = true;
  } else if ((name == "duplicates" || name == "dupsort") && value != "0") {
    return fault("the dump comes from a database with repeated keys");
  } else if (name == "keys" && value != "1") {
    return fault("the dump holds no keys");
  }
  return {};
}

Result DumpReader::checkHeader() const {
  if (!hasFormat_) return fault("the header has no line format=bytevalue");
  if (!hasType_) return fault("the header has no line type=btree");
  return {};
}

Result DumpReader::readEntry(DataBuffer& record, bool& end) {
  std::string_view line;
  if (Result result = readLine(line, "the dump ends without DATA=END"); !result.ok()) return result;
  end = line == dataEnd;
  if (end) return checkEnd();
  StoredKey key;
  if (Result result = readBytes(line, "key", key); !result.ok()) return result;
  if (Result result = readLine(line, "the dump ends behind a key"); !result.ok()) return result;
  if (line == dataEnd) return fault("there is no record for the key before this line");
  if (Result result = readBytes(line, "record", {record.data(), DataBuffer::size()});
      !result.ok()) {
    return result;
  }
  return checkKey(record, key);
}

Result DumpReader::readLine(std::string_view& line, std::string_view missing) {
  const LineOutcome outcome = lines_.next(line);
  if (outcome == LineOutcome::line) return {};
  return outcome == LineOutcome::end ? fault(missing) : unread(outcome);
}

Result DumpReader::readBytes(std::string_view line, std::string_view what,
                             std::span<std::uint8_t> bytes) {
  const std::string name(what);
  if (!line.starts_with(linePrefix))
    return fault("a " + name + " line does not begin with a blank");
  const std::string_view digits = line.substr(1);
  if (digits.size() != 2 * bytes.size()) {
    return fault("a " + name + " has " + std::to_string(2 * bytes.size()) +
                 " hexadecimal digits, this one has " + std::to_string(digits.size()));
  }
  const std::size_t bad = readHex(digits, bytes);
  if (bad == std::string_view::npos) return {};
  return fault("column " + std::to_string(bad + 2) + " of a " + name +
               " line holds no hexadecimal digit");
}

Result DumpReader::checkKey(const DataBuffer& record, const StoredKey& key) {
  if (storedKey(record) != key) {
    return fault("the record does not begin with the key of the line before");
  }
  if (previous_.has_value() && key == *previous_) return fault("the key is there a second time");
  if (previous_.has_value() && key < *previous_) return fault("the keys do not ascend");
  previous_ = key;
  return {};
}

Result DumpReader::checkEnd() {
  std::string_view line;
  const LineOutcome outcome = lines_.next(line);
  if (outcome == LineOutcome::end) return {};
  if (outcome == LineOutcome::error) return unread(outcome);
  return fault("there is something behind DATA=END, a dump holds one database");
}

Result DumpReader::fault(std::string_view what) const {
  return fail(exitNotAsExpected, what, lines_.place(), "make the dump again; nothing was loaded");
}

Result DumpReader::unread(LineOutcome outcome) const {
  if (outcome == LineOutcome::error) return lines_.failure("the dump cannot be read on");
  return fault("the line is longer than the " + std::to_string(recordLineWidth) +
               " characters of a record");
}

}  // namespace orx::orxkdb
