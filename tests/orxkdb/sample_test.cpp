#include "orxkdb/sample/sample_writer.h"

#include <set>

#include "model/attribute_set.h"
#include "records/backup_record.h"
#include "tests/support/sample_text.h"

namespace orx::orxkdb {
namespace {

std::vector<std::string> linesOf(std::uint32_t objects, std::uint64_t seed, SampleOrder order) {
  return test::splitLines(test::sampleText({objects, seed}, order));
}

TEST(Sample, IsTheSameForTheSameSeedAndInEitherOrder) {
  const auto lines = linesOf(3000, 5, SampleOrder::key);
  EXPECT_EQ(lines, linesOf(3000, 5, SampleOrder::key));
  EXPECT_NE(lines, linesOf(3000, 6, SampleOrder::key));
  const auto shuffled = linesOf(3000, 5, SampleOrder::random);
  EXPECT_NE(lines, shuffled);
  EXPECT_EQ(shuffled, linesOf(3000, 5, SampleOrder::random));
  EXPECT_TRUE(std::multiset(lines.begin(), lines.end()) ==
              std::multiset(shuffled.begin(), shuffled.end()));
}

// That its objects refer to each other as they should is for the check of a sample to say.
TEST(Sample, HoldsWholeTextsInTheirCanonicalForm) {
  for (const std::uint32_t count : {20u, 5000u}) {
    std::map<HandleBytes, std::string> texts;
    for (const std::string& line : linesOf(count, 9, SampleOrder::key)) {
      EXPECT_EQ(line.size(), 440u);
      DataBuffer record;
      CMDatabaseBackupRecord(line.c_str()).buildDataBuffer(record);
      EXPECT_LT(record.recn(), 250u);
      texts[record.objectBytes()] += record.text();
    }
    EXPECT_EQ(texts.size(), count);
    for (const auto& [object, text] : texts) {
      EXPECT_EQ(CMAttributeSet(text.c_str(), 1).text(), text);
    }
  }
}

}  // namespace
}  // namespace orx::orxkdb
