#include "orxkdb/explain/explained_line.h"

#include <charconv>
#include <nlohmann/json.hpp>

#include "model/decimal.h"
#include "orxkdb/check/line_check.h"
#include "orxkdb/input/backup_columns.h"
#include "orxkdb/input/backup_file.h"
#include "orxkdb/words/handle_words.h"
#include "orxkdb/words/printable.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "records/data_buffer.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

DataBuffer recordOf(std::string_view line) {
  CMDatabaseBackupRecord record;
  record.setLine(line);
  DataBuffer buffer;
  record.buildDataBuffer(buffer);
  return buffer;
}

CMConfigHandle handleIn(std::string_view column) {
  CMConfigHandle handle;
  (void)handle.importHndl(column);
  return handle;
}

std::int32_t numberIn(std::string_view column) {
  return parseDecimal(column);
}

// What a restore makes of a column.
std::string meaning(const ColumnText& column, std::string_view line) {
  const std::string_view text = columnOf(line, column.column);
  switch (column.form) {
    case ColumnForm::handle:
      return handleWords(handleIn(text));
    case ColumnForm::number:
    case ColumnForm::length:
      return std::to_string(numberIn(text));
    case ColumnForm::data:
      break;
  }
  const DataBuffer record = recordOf(line);
  return std::to_string(record.text().size()) + " bytes, \"" + printable(record.text()) + "\"";
}

nlohmann::ordered_json valueJson(const ColumnText& column, std::string_view line) {
  const std::string_view text = columnOf(line, column.column);
  switch (column.form) {
    case ColumnForm::handle:
      return handleJson(handleIn(text));
    case ColumnForm::number:
    case ColumnForm::length:
      return numberIn(text);
    case ColumnForm::data:
      break;
  }
  return recordOf(line).text();
}

std::string columnText(const ColumnText& column, std::string_view line) {
  return "  columns " + std::to_string(column.column.offset) + "-" +
         std::to_string(column.column.end() - 1) + ", " + std::string(column.name) + " (" +
         std::string(column.field) + "): " + meaning(column, line) + "\n";
}

nlohmann::ordered_json columnJson(const ColumnText& column, std::string_view line) {
  return {{"offset", column.column.offset},
          {"width", column.column.width},
          {"field", column.field},
          {"text", columnOf(line, column.column)},
          {"value", valueJson(column, line)}};
}

}  // namespace

Result readLinePlace(std::string_view text, LinePlace& place) {
  const std::size_t colon = text.rfind(':');
  const std::string_view number =
      colon == std::string_view::npos ? std::string_view() : text.substr(colon + 1);
  const char* const end = number.data() + number.size();
  const auto [stop, error] = std::from_chars(number.data(), end, place.line);
  if (error != std::errc() || stop != end || place.line == 0 || colon == 0) {
    return fail(exitUsage, "this names no line", text, "give it as FILE:NUMBER, from 1 on");
  }
  place.file = text.substr(0, colon);
  return {};
}

Result findLine(const LinePlace& place, std::string& line) {
  if (kdb::looksLikeDatabase(place.file.c_str())) {
    return fail(exitNotAsExpected, "this is a database, not a backup", place.file,
                "give a handle instead of --line");
  }
  BackupFile file;
  if (Result result = file.open(place.file); !result.ok()) return result;
  BackupPiece piece;
  while (file.next(piece)) {
    if (piece.line != place.line) continue;
    line = piece.text;
    return {};
  }
  if (Result result = file.finish(); !result.ok()) return result;
  return fail(exitNotAsExpected, "there is no such line",
              place.file + ":" + std::to_string(place.line),
              "its last line is " + std::to_string(piece.line));
}

std::string lineText(const LinePlace& place, std::string_view line) {
  std::string text = onOneLine(place.file) + ":" + std::to_string(place.line) + ", " +
                     std::to_string(line.size()) + " characters\n";
  for (const ColumnText& column : backupColumns) text += columnText(column, line);
  for (const LineFault& fault : lineFaults(line)) {
    text += "  " + std::string(nameOf(fault.kind)) + ": " + printable(fault.text) + "\n";
  }
  return text;
}

nlohmann::ordered_json lineJson(const LinePlace& place, std::string_view line) {
  nlohmann::ordered_json columns = nlohmann::ordered_json::array();
  for (const ColumnText& column : backupColumns) columns.push_back(columnJson(column, line));
  nlohmann::ordered_json faults = nlohmann::ordered_json::array();
  for (const LineFault& fault : lineFaults(line)) {
    faults.push_back({{"kind", nameOf(fault.kind)}, {"text", fault.text}});
  }
  return {{"file", place.file},
          {"line", place.line},
          {"characters", line.size()},
          {"columns", columns},
          {"findings", faults}};
}

}  // namespace orx::orxkdb
