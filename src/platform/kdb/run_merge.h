// Sorted runs in a file, and the merge that reads several of them at once.
//
// An entry is a key and its record, 20 + 296 bytes; the entries of a run lie behind each other in
// ascending order of their keys, without gaps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/kdb/key.h"
#include "platform/kdb/record_buffer.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

struct Run {
  std::uint64_t first = 0;       // its first entry, counted from the start of the file
  std::uint64_t count = 0;       // of its entries
  std::vector<Key> blocks = {};  // the first key of every runBlock entries
  unsigned level = 0;            // how often its entries were merged
};

inline constexpr std::uint64_t runBlock = 100;

// `entries` becomes `count` entries of the file from number `first` on. 8/20 when the file ends
// before them; `entries` is of no use after a failure.
[[nodiscard]] Outcome readEntries(int fd, std::uint64_t first, std::uint64_t count,
                                  std::vector<std::uint8_t>& entries);

class RunMerge {
 public:
  // `memory` bytes are shared by the windows on the runs; each has 16 entries at least, whatever
  // that makes. `fd`, the file of the runs, stays the caller's, and open until the last next().
  RunMerge(int fd, std::size_t memory) : fd_(fd), memory_(memory) {}

  // To be called once. The runs have no key in common, and none is empty.
  [[nodiscard]] Outcome start(const std::vector<Run>& runs);
  // `entry` points at 316 bytes that stay valid until the next call. endOfData behind the last. A
  // failure is the end.
  [[nodiscard]] Outcome next(const std::uint8_t*& entry);

 private:
  // Where the reading of a run has got to.
  struct Reader {
    std::uint64_t next;  // the first entry that is not in the window
    std::uint64_t end;
    std::vector<std::uint8_t> window = {};
    std::size_t offset = 0;  // of the entry that the reader stands on
  };
  struct HeapItem {
    SortKey key;
    std::size_t reader;
  };

  [[nodiscard]] Outcome fillWindow(Reader& reader) const;
  void pushIntoHeap(std::size_t reader);
  [[nodiscard]] Outcome stepFront();
  static bool comesAfter(const HeapItem& a, const HeapItem& b) { return a.key > b.key; }

  int fd_;
  std::size_t memory_;
  std::size_t windowEntries_ = 0;
  std::vector<Reader> readers_;
  std::vector<HeapItem> heap_;  // of the readers that have entries, the lowest key in front
  bool frontIsTaken_ = false;   // next() gave the front's entry
};

}  // namespace orx::kdb
