#include "orxkdb/check/line_check.h"

#include <algorithm>

#include "model/config_handle.h"
#include "model/decimal.h"
#include "orxkdb/input/backup_columns.h"
#include "orxkdb/words/quote.h"

namespace orx::orxkdb {

namespace {

std::string_view trimmed(std::string_view text) {
  const std::size_t first = std::min(text.find_first_not_of(' '), text.size());
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

bool isNumber(std::string_view text) {
  if (text.starts_with('-') || text.starts_with('+')) text.remove_prefix(1);
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

// Form version 0 is as good as 1.
bool sameHandleText(std::string_view text, std::string_view written) {
  if (text.starts_with("<0;")) return text.substr(2) == written.substr(2);
  return text == written;
}

void checkHandle(const ColumnText& column, std::string_view text, std::vector<LineFault>& faults) {
  const std::string_view handle = trimmed(text);
  CMConfigHandle read;
  (void)read.importHndl(text);
  const HandleText written = read.exportText();
  if (sameHandleText(handle, written.view())) return;
  faults.push_back({FindingKind::handleColumn, std::string(column.name) + " " + quote(handle) +
                                                   " is restored as " + written.c_str()});
}

void checkNumber(const ColumnText& column, std::string_view text, std::vector<LineFault>& faults) {
  const std::string_view number = trimmed(text);
  if (isNumber(number)) return;
  faults.push_back({FindingKind::numberColumn, std::string(column.name) + " " + quote(number) +
                                                   " is restored as " +
                                                   std::to_string(parseDecimal(text))});
}

void checkDataLength(std::string_view line, std::vector<LineFault>& faults) {
  const std::int32_t length = parseDecimal(columnOf(line, backup_layout::dataLength));
  constexpr auto most = static_cast<std::int32_t>(backup_layout::dataWidth);
  if (length < 0 || length > most) {
    faults.push_back({FindingKind::dataLength,
                      "data length " + std::to_string(length) + " is not between 0 and 256"});
    return;
  }
  const std::string_view data = columnOf(line, backup_layout::data);
  const std::size_t end = data.find_last_not_of(' ') + 1;
  if (end <= static_cast<std::size_t>(length)) return;
  faults.push_back({FindingKind::dataLength, "data length " + std::to_string(length) +
                                                 ", but the data ends at character " +
                                                 std::to_string(end)});
}

void checkColumn(const ColumnText& column, std::string_view line, std::vector<LineFault>& faults) {
  const std::string_view text = columnOf(line, column.column);
  switch (column.form) {
    case ColumnForm::handle:
      return checkHandle(column, text, faults);
    case ColumnForm::number:
    case ColumnForm::length:
      return checkNumber(column, text, faults);
    case ColumnForm::data:
      return checkDataLength(line, faults);
  }
}

}  // namespace

std::vector<LineFault> lineFaults(std::string_view line) {
  std::vector<LineFault> faults;
  const std::size_t zero = line.find('\0');
  if (zero != std::string_view::npos) {
    faults.push_back({FindingKind::zeroByte, "character " + std::to_string(zero + 1)});
    return faults;
  }
  if (line.size() != backup_layout::recordWidth) {
    faults.push_back({FindingKind::lineLength, std::to_string(line.size()) + " characters"});
  }
  if (line.size() < backup_layout::recordWidth) return faults;
  for (const ColumnText& column : backupColumns) checkColumn(column, line, faults);
  return faults;
}

}  // namespace orx::orxkdb
