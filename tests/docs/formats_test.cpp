// Checks every worked example of docs/formats.md against the code.
#include "model/attribute_set.h"
#include "model/config_handle.h"
#include "orxkdb/dump/dump_format.h"
#include "records/backup_record.h"
#include "records/data_buffer.h"
#include "tests/docs/fenced_blocks.h"
#include "tests/support/attributes.h"

namespace orx {
namespace {

using test::Lines;

// The one example of that name, of at least `fewest` lines; padded so that a test may go on.
Lines example(std::string_view info, std::size_t fewest) {
  Lines lines;
  int count = 0;
  for (const test::FencedBlock& block : test::fencedBlocks("docs/formats.md")) {
    if (block.info != info) continue;
    lines = block.lines;
    ++count;
  }
  EXPECT_EQ(count, 1) << "worked examples called " << info;
  EXPECT_GE(lines.size(), fewest) << "lines of the worked example " << info;
  lines.resize(std::max(lines.size(), fewest));
  return lines;
}

// The record as its bytes are listed: offset, field, bytes.
DataBuffer listedRecord() {
  DataBuffer record;
  for (const std::string& line : example("database-record", 8)) {
    const auto row = test::wordsOf(line);
    for (std::size_t i = 2; i < row.size(); ++i) {
      const std::size_t offset = std::stoul(row[0]) + i - 2;
      if (offset >= DataBuffer::size()) return record;
      record.data()[offset] = static_cast<std::uint8_t>(std::stoul(row[i], nullptr, 16));
    }
  }
  return record;
}

TEST(FormatsDocument, BackupLineAndRecordAreTheSame) {
  const std::string line = example("backup-line", 1).front();
  ASSERT_EQ(line.size(), backup_layout::recordWidth);
  DataBuffer record;
  CMDatabaseBackupRecord(line.c_str()).buildDataBuffer(record);
  EXPECT_EQ(record, listedRecord());
  EXPECT_EQ(CMDatabaseBackupRecord(listedRecord()).text(), line);
}

TEST(FormatsDocument, DumpEntryIsThatOfTheRecord) {
  namespace dump = orxkdb::dump_format;
  const Lines lines = example("dump-entry", 2);
  const DataBuffer record = listedRecord();
  dump::Entry entry;
  dump::writeEntry(record, entry);
  EXPECT_EQ(lines[0] + "\n" + lines[1] + "\n", std::string(entry.data(), entry.size()));
}

std::string exported(const std::string& hex) {
  CMConfigHandle handle;
  handle.setFromExternChar(hex);
  return std::string(handle.exportText().view());
}

std::string imported(const std::string& text) {
  CMConfigHandle handle;
  EXPECT_EQ(handle.importHndl(text), 1) << text;
  return std::string(handle.externText().view());
}

TEST(FormatsDocument, HandleFormsReadAndWriteAlikeButForThoseThatTheExportedFormConverts) {
  for (const std::string& line : example("handle-forms", 4)) {
    const auto row = test::wordsOf(line);
    ASSERT_EQ(row.size(), 2U) << line;
    EXPECT_EQ(imported(row[1]), row[0]);
    EXPECT_EQ(exported(row[0]), row[1]);
  }
  for (const std::string& line : example("handle-conversions", 3)) {
    const auto row = test::wordsOf(line);
    ASSERT_EQ(row.size(), 3U) << line;
    EXPECT_EQ(exported(row[0]), row[1]);
    EXPECT_EQ(imported(row[1]), row[2]);
  }
}

// "KEY [value] [value]", as the document lists an attribute.
std::string listed(const CMAttribute& attribute) {
  std::string text = std::to_string(attribute.key().number());
  for (const std::string_view value : attribute.values()) text.append(" [").append(value) += ']';
  return text;
}

TEST(FormatsDocument, AttributeTextsReadAndWrite) {
  for (const char* name :
       {"attribute-text", "attribute-set", "system-record", "model-attributes"}) {
    Lines lines = example(name, 2);
    const bool isSet = lines[0].starts_with('<');
    const std::string text = isSet ? lines[0] : "<" + lines[0] + ">";
    const CMAttributeSet set(text.c_str(), 1);
    EXPECT_EQ(set.text(), text);
    lines.erase(lines.begin());
    Lines attributes;
    set.forEach([&](const CMAttribute& attribute) { attributes.push_back(listed(attribute)); });
    EXPECT_EQ(attributes, lines) << name;
  }
}

TEST(FormatsDocument, ParametersRead) {
  const Lines lines = example("parameters", 2);
  Lines parameters{lines[0]};
  test::parametersOf(lines[0]).forEach([&](const CMSymParm& parameter) {
    parameters.push_back("[" + std::string(parameter.name()) + "] [" +
                         std::string(parameter.value()) + "] [" + parameter.description() + "]");
  });
  EXPECT_EQ(parameters, lines);
}

}  // namespace
}  // namespace orx
