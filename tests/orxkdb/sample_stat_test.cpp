// What a sample holds, and what stat counts.
#include <set>

#include "model/attribute_set.h"
#include "orxkdb/cmd_stat.h"
#include "tests/restore/merge_records.h"
#include "tests/support/program_runs.h"
#include "tests/support/sample_text.h"

namespace orx::orxkdb {
namespace {

using test::operator+;

std::vector<std::string> linesOf(std::uint32_t objects, std::uint64_t seed, SampleOrder order) {
  return test::splitLines(test::sampleText({objects, seed}, order));
}

// That its objects refer to each other as they should is for the check of a sample to say.
TEST(Sample, IsTheSameForTheSameSeedAndHoldsWholeTextsInTheirCanonicalForm) {
  const auto lines = linesOf(3000, 5, SampleOrder::key);
  EXPECT_NE(lines, linesOf(3000, 6, SampleOrder::key));
  const auto shuffled = linesOf(3000, 5, SampleOrder::random);
  EXPECT_NE(lines, shuffled);
  EXPECT_EQ(shuffled, linesOf(3000, 5, SampleOrder::random));
  EXPECT_TRUE(std::multiset(lines.begin(), lines.end()) ==
              std::multiset(shuffled.begin(), shuffled.end()));
  std::map<HandleBytes, std::string> texts;
  for (const std::string& line : lines) {
    EXPECT_EQ(line.size(), 440u);
    DataBuffer record;
    CMDatabaseBackupRecord(line.c_str()).buildDataBuffer(record);
    texts[record.objectBytes()] += record.text();
  }
  EXPECT_EQ(texts.size(), 3000u);
  for (const auto& [object, text] : texts) EXPECT_EQ(CMAttributeSet(text.c_str(), 1).text(), text);
}

TEST(Stat, CountsRecordsObjectsAndChains) {
  const auto chainOf = [](std::size_t records, int parent, int object, std::int32_t recType) {
    return test::chain({.parent = test::handle(2, static_cast<std::uint32_t>(parent)),
                        .object = test::handle(4, static_cast<std::uint32_t>(object)),
                        .recType = recType},
                       std::string((records - 1) * 256, 'x') + "abc");
  };
  const test::TempDir scratch;
  const std::string name = scratch.file("db\xFF");  // no UTF-8
  // The third has the object handle of the second below another parent.
  test::makeDatabase(name, chainOf(1, 1, 1, 4) + chainOf(300, 1, 2, 4) + chainOf(2, 2, 2, -8) +
                               chainOf(1, 2, 3, 9));
  const std::string json =
      test::printed([&] { EXPECT_EQ(stat({.database = name, .json = true}).text, ""); });
  const auto bytes = std::to_string(std::filesystem::file_size(name));
  EXPECT_NE(json.find("\"fileBytes\": " + bytes + ","), std::string::npos) << json;
  test::expectJson(
      json, R"({"/version": 1, "/records": 304, "/objects": 4, "/chains": 2, "/longestChain": 300,
          "/textBytes": 76812, "/recordTypes": [{"recType": -8, "records": 2},
          {"recType": 4, "records": 301}, {"recType": 9, "records": 1}]})");
}

}  // namespace
}  // namespace orx::orxkdb
