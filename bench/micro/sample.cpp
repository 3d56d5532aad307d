#include "micro/sample.h"

#include <cstdlib>
#include <string_view>

#include "orxkdb/sample/sample_writer.h"
#include "records/backup_record.h"

namespace orx::bench {

namespace {

constexpr std::uint32_t objects = 2000;  // one megabyte of text
constexpr std::uint64_t seed = 5;

std::string writeText(std::uint32_t objectCount, orxkdb::SampleOrder order) {
  std::string text;
  const bool written = orxkdb::writeSample({objectCount, seed}, order, [&](std::string_view piece) {
    text += piece;
    return true;
  });
  if (!written) std::abort();
  return text;
}

std::vector<std::string_view> splitLines(std::string_view text) {
  std::vector<std::string_view> lines;
  for (; !text.empty(); text.remove_prefix(lines.back().size() + 1)) {
    lines.push_back(text.substr(0, text.find('\n')));
  }
  return lines;
}

std::vector<DataBuffer> buildRecords(const std::vector<std::string_view>& lines) {
  std::vector<DataBuffer> records(lines.size());
  CMDatabaseBackupRecord record;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    record.setLine(lines[i]);
    record.buildDataBuffer(records[i]);
  }
  return records;
}

void collectHandles(Sample& sample) {
  for (const DataBuffer& record : sample.records) {
    for (const CMConfigHandle& handle :
         {record.objectHandle(), record.parentHandle(), record.modelHandle()}) {
      if (!handle.isNull()) sample.handles.push_back(handle);
    }
  }
}

void joinTexts(Sample& sample) {
  for (const DataBuffer& record : sample.records) {
    if (record.recn() == 0) sample.attributeTexts.emplace_back();
    sample.attributeTexts.back() += record.text();
  }
}

}  // namespace

const Sample& sample() {
  static const Sample* const made = [] {
    auto* sample = new Sample;
    sample->text = writeText(objects, orxkdb::SampleOrder::key);
    sample->lines = splitLines(sample->text);
    sample->records = buildRecords(sample->lines);
    collectHandles(*sample);
    joinTexts(*sample);
    return sample;
  }();
  return *made;
}

std::vector<DataBuffer> sampleRecords(std::uint32_t objectCount, Order order) {
  const std::string text = writeText(
      objectCount, order == Order::key ? orxkdb::SampleOrder::key : orxkdb::SampleOrder::random);
  return buildRecords(splitLines(text));
}

}  // namespace orx::bench
