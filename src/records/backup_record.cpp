#include "records/backup_record.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "model/decimal.h"
#include "records/data_buffer.h"
#include "records/merge_tables.h"
#include "records/record_trace.h"

namespace orx {

constexpr TraceUnit recordTraceUnit = makeTraceUnit("orxcdbbu.cpp", "ORXCDBBU", __DATE__, __TIME__);

namespace {

constexpr const TraceUnit& traceUnit = recordTraceUnit;

using backup_layout::Column;

// --- reading

std::string_view columnText(std::string_view record, const Column& column) {
  return {record.data() + column.offset, column.width};
}

std::int32_t readNumber(std::string_view record, const Column& column) {
  return parseDecimal(columnText(record, column));
}

// The blanks behind the text need no cutting: import stops at its end.
CMConfigHandle readHandle(std::string_view record, const Column& column) {
  CMConfigHandle handle;
  (void)handle.importHndl(columnText(record, column));
  return handle;
}

void readData(std::string_view record, DataBuffer& buffer) {
  constexpr auto most = static_cast<std::int32_t>(backup_layout::dataWidth);
  const std::int32_t length = std::clamp(readNumber(record, backup_layout::dataLength), 0, most);
  buffer.setAttrText(
      {record.data() + backup_layout::data.offset, static_cast<std::size_t>(length)});
}

// Everything but the handles and the record type.
void readValues(std::string_view record, DataBuffer& buffer) {
  buffer.setRecn(static_cast<std::uint32_t>(readNumber(record, backup_layout::recn)));
  buffer.setAuxValue1(readNumber(record, backup_layout::auxValue1));
  readData(record, buffer);
  buffer.setAuxValue2(readNumber(record, backup_layout::auxValue2));
}

// --- writing

void writeHandle(char* record, const Column& column, const CMConfigHandle& handle) {
  char* const start = record + column.offset;
  handle.exportChr(start, column.width);
  *std::find(start, start + column.width, '\0') = ' ';
}

void writeNumber(char* record, const Column& column, std::int32_t value) {
  std::array<char, 11> text;  // "-2147483648"
  const char* const end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
  const auto length = static_cast<std::size_t>(end - text.data());
  if (length > column.width) {
    std::fill_n(record + column.offset, column.width, '*');
  } else {
    std::copy_n(text.data(), length, record + column.end() - length);
  }
}

void writeData(char* record, std::string_view data) {
  writeNumber(record, backup_layout::dataLength, static_cast<std::int32_t>(data.size()));
  std::copy_n(data.data(), data.size(), record + backup_layout::data.offset);
}

}  // namespace

CMDatabaseBackupRecord::CMDatabaseBackupRecord() {
  ORX_TRACE("CMDatabaseBackupRecord default constructor");
  text_.fill(' ');
}

CMDatabaseBackupRecord::CMDatabaseBackupRecord(const char* record) {
  ORX_TRACE("CMDatabaseBackupRecord input record constructor");
  std::copy_n(record, text_.size(), text_.begin());
}

CMDatabaseBackupRecord::CMDatabaseBackupRecord(const DataBuffer& buffer) {
  ORX_TRACE("CMDatabaseBackupRecord DataBuffer constructor");
  write(buffer);
}

CMDatabaseBackupRecord::CMDatabaseBackupRecord(const CMDatabaseBackupRecord& other)
    : text_(other.text_) {
  ORX_TRACE("CMDatabaseBackupRecord copy constructor");
}

CMDatabaseBackupRecord& CMDatabaseBackupRecord::operator=(const CMDatabaseBackupRecord& other) {
  ORX_TRACE("CMDatabaseBackupRecord assignment operator");
  if (this != &other) text_ = other.text_;
  return *trace.exit(this);
}

CMDatabaseBackupRecord& CMDatabaseBackupRecord::operator=(const DataBuffer& buffer) {
  ORX_TRACE("CMDatabaseBackupRecord DataBuffer assignment operator");
  write(buffer);
  return *trace.exit(this);
}

void CMDatabaseBackupRecord::setLine(std::string_view line) {
  ORX_TRACE("CMDatabaseBackupRecord::setLine");
  const std::size_t count = std::min(line.size(), text_.size());
  std::fill(std::copy_n(line.data(), count, text_.begin()), text_.end(), '\0');
}

void CMDatabaseBackupRecord::buildDataBuffer(DataBuffer& buffer) const {
  ORX_TRACE("CMDatabaseBackupRecord::buildDataBuffer");
  const std::string_view record = text();
  buffer.clear();
  buffer.setParentHandle(readHandle(record, backup_layout::parentHandle));
  buffer.setObjectHandle(readHandle(record, backup_layout::objectHandle));
  buffer.setModelHandle(readHandle(record, backup_layout::modelHandle));
  buffer.setRecType(readNumber(record, backup_layout::recType));
  readValues(record, buffer);
}

int CMDatabaseBackupRecord::buildDataBufferForMerge(DataBuffer& buffer, MergeTables& tables) const {
  ORX_TRACE("CMDatabaseBackupRecord::buildDataBufferForMerge");
  const std::string_view record = text();
  buffer.clear();
  buffer.setRecType(readNumber(record, backup_layout::recType));
  if (!tables.merges(buffer.recType())) return trace.exit(0);
  buffer.setParentHandle(tables.giveOut(readHandle(record, backup_layout::parentHandle)));
  buffer.setObjectHandle(tables.giveOut(readHandle(record, backup_layout::objectHandle)));
  buffer.setModelHandle(tables.giveOut(readHandle(record, backup_layout::modelHandle)));
  readValues(record, buffer);
  return trace.exit(1);
}

void CMDatabaseBackupRecord::write(const DataBuffer& buffer) {
  char* const record = text_.data();
  text_.fill(' ');
  writeHandle(record, backup_layout::parentHandle, buffer.parentHandle());
  writeHandle(record, backup_layout::objectHandle, buffer.objectHandle());
  writeHandle(record, backup_layout::modelHandle, buffer.modelHandle());
  writeNumber(record, backup_layout::recn, static_cast<std::int32_t>(buffer.recn()));
  writeNumber(record, backup_layout::recType, buffer.recType());
  writeNumber(record, backup_layout::auxValue1, buffer.auxValue1());
  writeData(record, buffer.text());
  writeNumber(record, backup_layout::auxValue2, buffer.auxValue2());
}

}  // namespace orx
