// SortedRuns: records that arrive in any order and are read back once, in key order.
//
// The engine takes records out of order more than ten times as slowly as it appends them. So they
// gather here in a buffer; a full buffer is sorted and becomes a run in a file without a name, and
// in the end all runs are merged.
//
//   SortedRuns runs(directory); runs.add(key, record); ...;
//   if (runs.startReading().ok()) while (runs.next(key, record).ok()) ...
//
// Private memory at any number of records: the buffer and the filter, 8 MB each, while records are
// added; buffers of 8 MB while they are read; 20 bytes for every 100 records all the time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/file.h"
#include "platform/kdb/key.h"
#include "platform/kdb/key_filter.h"
#include "platform/kdb/record_buffer.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

class SortedRuns {
 public:
  // The file is made in `directory` when the first buffer is full.
  explicit SortedRuns(std::string directory) : directory_(std::move(directory)) {}

  // `record` is 296 bytes. 4/46 when the key is there already.
  [[nodiscard]] Outcome add(const Key& key, const std::uint8_t* record);

  // Takes records in key order, none of which was added before; together they become one run.
  [[nodiscard]] Outcome appendSorted(const Key& key, const std::uint8_t* record);

  // Ends the adding.
  [[nodiscard]] Outcome startReading();
  // `record` points at 296 bytes that stay valid until the next call. endOfData behind the last.
  [[nodiscard]] Outcome next(Key& key, const std::uint8_t*& record);

 private:
  // A run lies in the file without gaps.
  struct Run {
    std::uint64_t first = 0;  // its first record, counted from the start of the file
    std::uint64_t count = 0;
    std::vector<Key> blocks = {};  // the first key of every block
  };
  // Where the reading of a run has got to.
  struct Reader {
    std::uint64_t next;  // the first record that is not in the window
    std::uint64_t end;
    std::vector<std::uint8_t> window = {};
    std::size_t offset = 0;  // of the record that the reader stands on
  };
  struct HeapItem {
    SortKey key;
    std::size_t reader;
  };

  [[nodiscard]] Outcome prepareFile();
  [[nodiscard]] Outcome writeBuffer();
  [[nodiscard]] Outcome append(Run& run, const std::uint8_t* entry);
  [[nodiscard]] Outcome finish(Run& run);
  [[nodiscard]] Outcome flush();
  [[nodiscard]] Outcome search(const Key& key);
  [[nodiscard]] Outcome searchRun(const Run& run, const Key& key);
  [[nodiscard]] Outcome readEntries(std::uint64_t first, std::uint64_t count,
                                    std::vector<std::uint8_t>& entries) const;
  [[nodiscard]] Outcome fillWindow(Reader& reader) const;
  void pushIntoHeap(std::size_t reader);
  [[nodiscard]] Outcome stepFront();

  std::string directory_;
  UniqueFd file_;
  RecordBuffer buffer_;
  KeyFilter filter_;  // of the keys in runs
  std::vector<Run> runs_;
  Run sorted_;                 // of appendSorted
  std::uint64_t written_ = 0;  // records in the file and in pending_
  std::string pending_;
  std::vector<std::uint8_t> block_;
  std::size_t windowRecords_ = 0;
  std::vector<Reader> readers_;
  std::vector<HeapItem> heap_;  // of the readers that have records, the lowest key in front
  bool frontIsTaken_ = false;   // next() gave the front's record
};

}  // namespace orx::kdb
