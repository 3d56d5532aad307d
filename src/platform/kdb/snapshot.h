// The records of a file but for those that a run has deleted: in order, and by key.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "platform/kdb/key.h"
#include "platform/kdb/key_ranges.h"
#include "platform/kdb/tree_file.h"
#include "platform/kdb/tree_reader.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

// Reads records in database order, as they were when it was made; from the first one, unless seek()
// comes before. It needs its Database no longer.
class Snapshot {
 public:
  Snapshot(std::shared_ptr<const TreeFile> tree, KeyRanges deleted)
      : reader_(std::move(tree)), deleted_(std::move(deleted)) {}

  // To before the first record whose key is `key` or follows it. A whole pass without it also
  // checks the number of records.
  [[nodiscard]] Outcome seek(const Key& key) { return reader_.seek(key); }
  // `record` points at 296 bytes, valid until the next call. endOfData behind the last.
  [[nodiscard]] Outcome next(Key& key, const std::uint8_t*& record);
  // The key of the last record that next() gave; none before the first.
  [[nodiscard]] const std::optional<Key>& lastKey() const { return lastKey_; }

 private:
  TreeReader reader_;
  KeyRanges deleted_;
  std::optional<Key> lastKey_;
};

// Finds records by key. To look for the key behind the record that was found last is a step, not a
// search.
class KeyLookUp {
 public:
  explicit KeyLookUp(std::shared_ptr<const TreeFile> tree) : reader_(std::move(tree)) {}

  // The first record whose key is `key` or follows it, without those in `deleted`. `record` points
  // at 296 bytes, valid until the next call. endOfData when there is none.
  [[nodiscard]] Outcome find(const Key& key, const KeyRanges& deleted, Key& found,
                             const std::uint8_t*& record);

 private:
  TreeReader reader_;
  std::optional<Key> next_;  // the key behind the record that was found last
};

}  // namespace orx::kdb
