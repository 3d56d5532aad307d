// Records, system records and backups for tests of the operations.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "restore/merge_types.h"
#include "tests/support/attributes.h"
#include "tests/support/places.h"
#include "tests/support/small_fleet.h"

namespace orx::test {

inline CMConfigHandle handle(int type, std::uint32_t id) {
  return type == 0 ? CMConfigHandle() : CMConfigHandle::createPermanentHandle(type, id);
}

struct Fields {
  CMConfigHandle parent = {};
  CMConfigHandle object = {};
  std::uint32_t recn = 0;
  std::int32_t recType = 0;
  CMConfigHandle model = {};
  std::int32_t auxValue1 = 0;
  std::string text = {};
  std::int32_t auxValue2 = 0;
};

inline DataBuffer build(const Fields& fields) {
  DataBuffer record;
  record.setParentHandle(fields.parent);
  record.setObjectHandle(fields.object);
  record.setModelHandle(fields.model);
  record.setRecType(fields.recType);
  record.setRecn(fields.recn);
  record.setAuxValue1(fields.auxValue1);
  record.setAttrText(fields.text);
  record.setAuxValue2(fields.auxValue2);
  return record;
}

// "PARENT OBJECT#RECN tRECTYPE mMODEL 'TEXT'", a handle being TYPE:ID.
inline std::string describe(const DataBuffer& record) {
  const auto name = [](const CMConfigHandle& h) {
    return std::to_string(std::int32_t{h.getType()}) + ":" +
           std::to_string(static_cast<std::uint32_t>(static_cast<std::int32_t>(h)));
  };
  return name(record.parentHandle()) + " " + name(record.objectHandle()) + "#" +
         std::to_string(record.recn()) + " t" + std::to_string(record.recType()) + " m" +
         name(record.modelHandle()) + " '" + std::string(record.text()) + "'";
}

// An attribute as it stands in an object's text.
inline std::string element(short attrId, short attrGroup, const std::vector<std::string>& values) {
  return "<" + makeAttribute(attrId + 4096 * attrGroup, values).text() + ">";
}

// The value texts of a counter attribute, all "0" but those of the given types.
inline std::string counters(const std::map<int, std::string>& byType) {
  std::string text = "<9;0;26;";
  for (const int type : handlerTypes) {
    const auto found = byType.find(type);
    text += (found == byType.end() ? "0" : found->second) + ";";
  }
  return text + ">";
}

// The records of a chain with this text.
inline std::vector<DataBuffer> chain(Fields fields, const std::string& text) {
  std::vector<DataBuffer> records;
  for (std::size_t at = 0; at == 0 || at < text.size(); at += data_layout::attrTextSize) {
    fields.text = text.substr(at, data_layout::attrTextSize);
    records.push_back(build(fields));
    ++fields.recn;
  }
  return records;
}

inline std::vector<DataBuffer> operator+(std::vector<DataBuffer> a,
                                         const std::vector<DataBuffer>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline std::string backupOf(const std::vector<DataBuffer>& records,
                            const std::string& lineEnd = "\n") {
  std::string lines;
  for (const DataBuffer& record : records) {
    lines.append(CMDatabaseBackupRecord(record).text()).append(lineEnd);
  }
  return lines;
}

inline void createDatabase(const std::vector<DataBuffer>& records) {
  makeDatabase("db", records);
}

inline std::vector<DataBuffer> recordsOf(const Opened& database) {
  std::vector<DataBuffer> records;
  const kdb::kdbHandle cursor = database.cursor();
  DataBuffer record;
  std::int32_t length = 0;
  while (kdb::ReadNextFromCursor(cursor, 0, record.data(), 296, length) == 0) {
    records.push_back(record);
  }
  return records;
}

inline std::vector<DataBuffer> databaseRecords() {
  return recordsOf(Opened("db", kdb::openForReading));
}

inline std::vector<std::string> describe(const std::vector<DataBuffer>& records) {
  std::vector<std::string> lines;
  for (const DataBuffer& record : records) lines.push_back(describe(record));
  return lines;
}

// All that a verbose run prints, from a file in the directory of these tests.
inline std::string verboseLines(const char* file) {
  return readFile(sourceDirectory() / "tests/restore" / file);
}

}  // namespace orx::test
