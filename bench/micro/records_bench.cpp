// Backup lines and database records: reading, and the way from one to the other.
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

#include "micro/sample.h"
#include "platform/file.h"
#include "records/backup_layout.h"
#include "records/backup_reader.h"
#include "records/backup_record.h"
#include "records/merge_tables.h"
#include "restore/merge_types.h"

namespace orx::bench {

namespace {

// The sample as a file in memory; its path is good as long as it lives.
class SampleFile {
 public:
  SampleFile() : file_(::memfd_create("backup", MFD_CLOEXEC)) {
    isWritten_ = writeAll(file_.get(), sample().text) == 0;
  }
  [[nodiscard]] bool isWritten() const { return isWritten_; }
  [[nodiscard]] std::string path() const { return "/proc/self/fd/" + std::to_string(file_.get()); }

 private:
  UniqueFd file_;
  bool isWritten_ = false;
};

// What bench/micro.sh compares everything with.
void copyLine(benchmark::State& state) {
  std::array<char, backup_layout::recordWidth> copy{};
  measureEach(state, sample().lines, sample().text.size(), [&](std::string_view text) {
    std::memcpy(copy.data(), text.data(), copy.size());
    return copy.data();
  });
}

void readLine(benchmark::State& state) {
  const SampleFile file;
  BackupReader reader;
  CMDatabaseBackupRecord line;
  for (auto _ : state) {
    if (!file.isWritten() || !reader.open(file.path().c_str())) {
      state.SkipWithError("no file");
      break;
    }
    while (reader.next(line) == ReadOutcome::line) benchmark::DoNotOptimize(line);
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(sample().lines.size()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(sample().text.size()));
}

void lineToRecord(benchmark::State& state) {
  CMDatabaseBackupRecord line;
  DataBuffer record;
  measureEach(state, sample().lines, sample().text.size(), [&](std::string_view text) {
    line.setLine(text);
    line.buildDataBuffer(record);
    return record;
  });
}

// Every handle of the merged types gets a new identifier.
void lineToMergedRecord(benchmark::State& state) {
  CMDatabaseBackupRecord line;
  DataBuffer record;
  MergeTables tables;
  tables.mergeTypes = mergedTypes;
  std::fill(tables.idBase.begin(), tables.idBase.end(), 100000U);
  measureEach(state, sample().lines, sample().text.size(), [&](std::string_view text) {
    line.setLine(text);
    return line.buildDataBufferForMerge(record, tables);
  });
}

void recordToLine(benchmark::State& state) {
  CMDatabaseBackupRecord line;
  measureEach(state, sample().records, sample().text.size(), [&](const DataBuffer& record) {
    line = record;
    return line.text();
  });
}

BENCHMARK(copyLine)->Name("copyLine");
BENCHMARK(readLine)->Name("records/readLine");
BENCHMARK(lineToRecord)->Name("records/lineToRecord");
BENCHMARK(lineToMergedRecord)->Name("records/lineToMergedRecord");
BENCHMARK(recordToLine)->Name("records/recordToLine");

}  // namespace
}  // namespace orx::bench
