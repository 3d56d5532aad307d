// A small set of backup lines without a fault, to change one thing in: a system record, a model and
// a managed system that refers to it.
#pragma once

#include <string>
#include <vector>

#include "records/backup_record.h"
#include "records/data_buffer.h"
#include "tests/support/backup_lines.h"
#include "tests/support/kdb_records.h"

namespace orx::test {

// As a value of an attribute.
inline std::string handleValue(int type, std::uint32_t id) {
  std::string value;
  for (const char c : handleText(type, id))
    value += c == ';' || c == '>' ? std::string(2, c) : std::string(1, c);
  return value;
}

inline std::string attribute(int id, const std::vector<std::string>& values) {
  std::string text = "<" + std::to_string(id) + ";0;" + std::to_string(values.size()) + ";";
  for (const std::string& value : values) text += value + ";";
  return text + ">";
}

inline Line systemLine(const std::vector<std::string>& counters = std::vector<std::string>(26,
                                                                                           "100")) {
  return {.data = attribute(1, {"A=1"}) + attribute(9, counters)};
}

inline Line modelLine(const std::string& useCount = attribute(17, {"1"}),
                      const std::string& signatures = attribute(84, {handleValue(2, 5)})) {
  return {.object = handleText(12, 1),
          .recType = 12,
          .data = attribute(2, {"model"}) + useCount + signatures,
          .auxValue2 = 1};
}

// A managed system without a model.
inline Line plainLine(std::uint32_t id, const std::string& data = attribute(2, {"system"})) {
  return {.object = handleText(2, id), .recType = 2, .data = data, .auxValue2 = 1};
}

inline Line referringLine(std::uint32_t id = 5) {
  Line line = plainLine(id);
  line.model = handleText(12, 1);
  return line;
}

inline std::vector<Line> smallFleet() {
  return {systemLine(), modelLine(), referringLine()};
}

inline std::string backupText(const std::vector<Line>& lines) {
  std::string text;
  for (const Line& line : lines) text += line.text() + "\n";
  return text;
}

inline DataBuffer recordOf(const Line& line) {
  DataBuffer record;
  CMDatabaseBackupRecord(line.text().c_str()).buildDataBuffer(record);
  return record;
}

inline std::vector<DataBuffer> recordsOf(const std::vector<Line>& lines) {
  std::vector<DataBuffer> records;
  for (const Line& line : lines) records.push_back(recordOf(line));
  return records;
}

inline void addUnder(const Opened& database, const DataBuffer& key, const DataBuffer& record) {
  ASSERT_EQ(kdb::AddRecord(database.handle, key.data(), 20, record.data(), 296), 0);
}

// A new database of these records, each under its own key.
inline void makeDatabase(const std::string& name, const std::vector<DataBuffer>& records) {
  const Opened database(name + ".made", kdb::openAsNew);
  for (const DataBuffer& record : records) addUnder(database, record, record);
  ASSERT_EQ(database.close(), "0/0");
  std::filesystem::rename(name + ".made", name);
}

inline void makeDatabase(const std::string& name, const std::vector<Line>& lines) {
  makeDatabase(name, recordsOf(lines));
}

}  // namespace orx::test
