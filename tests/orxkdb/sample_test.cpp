#include "orxkdb/sample_writer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "model/attribute_set.h"
#include "records/backup_record.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {
namespace {

std::vector<std::string> linesOf(std::uint32_t objects, std::uint64_t seed, SampleOrder order) {
  std::string text;
  EXPECT_TRUE(writeSample({objects, seed}, order, [&](std::string_view piece) {
    text += piece;
    return true;
  }));
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size(); at += 441) {
    lines.push_back(text.substr(at, 440));
    EXPECT_EQ(text[at + 440], '\n');
  }
  return lines;
}

struct Object {
  DataBuffer head;
  std::string text;
};

std::map<HandleBytes, Object> objectsOf(const std::vector<std::string>& lines) {
  std::map<HandleBytes, Object> objects;
  for (const std::string& line : lines) {
    DataBuffer record;
    CMDatabaseBackupRecord(line.c_str()).buildDataBuffer(record);
    Object& object = objects[record.objectBytes()];
    if (record.recn() == 0) object.head = record;
    object.text += record.text();
  }
  return objects;
}

TEST(Sample, IsTheSameForTheSameSeedAndInEitherOrder) {
  const auto lines = linesOf(3000, 5, SampleOrder::key);
  EXPECT_EQ(lines, linesOf(3000, 5, SampleOrder::key));
  EXPECT_NE(lines, linesOf(3000, 6, SampleOrder::key));
  auto shuffled = linesOf(3000, 5, SampleOrder::random);
  EXPECT_NE(lines, shuffled);
  EXPECT_EQ(shuffled, linesOf(3000, 5, SampleOrder::random));
  auto sorted = lines;
  std::sort(sorted.begin(), sorted.end());
  std::sort(shuffled.begin(), shuffled.end());
  EXPECT_EQ(sorted, shuffled);
}

// What a check of the restored database would look for.
TEST(Sample, IsWholeAndConsistent) {
  for (const std::uint32_t count : {20u, 5000u}) {
    const auto lines = linesOf(count, 9, SampleOrder::key);
    const auto objects = objectsOf(lines);
    EXPECT_EQ(objects.size(), count);
    std::vector<std::vector<std::uint8_t>> keys;
    std::map<HandleBytes, int> references;
    for (const std::string& line : lines) {
      DataBuffer record;
      CMDatabaseBackupRecord(line.c_str()).buildDataBuffer(record);
      keys.emplace_back(record.data(), record.data() + 17);
      EXPECT_LT(record.recn(), 250u);
    }
    EXPECT_TRUE(std::is_sorted(keys.begin(), keys.end()));
    for (const auto& [handle, object] : objects) {
      const CMAttributeSet set(object.text.c_str(), 1);
      EXPECT_EQ(set.text(), object.text) << "reads back whole, in the canonical form";
      if (!object.head.parentHandle().isNull()) {
        EXPECT_TRUE(objects.contains(object.head.parentBytes()));
      }
      if (!object.head.modelHandle().isNull()) ++references[object.head.modelBytes()];
    }
    for (const auto& [handle, object] : objects) {
      if ((object.head.recType() & 8) == 0 || object.head.recType() > 12) continue;
      const CMAttributeSet set(object.text.c_str(), 1);
      EXPECT_EQ(set.getNumericAttributeValue(CMAttributeKey(17)), references[handle]);
    }
    EXPECT_FALSE(references.empty());
  }
}

}  // namespace
}  // namespace orx::orxkdb
