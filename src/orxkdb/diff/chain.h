// Chain: an object with the records of its chain, and ChainReader, which takes the objects of an
// input one by one.
#pragma once

#include <compare>
#include <string>
#include <vector>

#include "orxkdb/diff/record_source.h"

namespace orx::orxkdb {

struct ObjectKey {
  HandleNumber parent = nullHandle;
  HandleNumber object = nullHandle;

  friend auto operator<=>(const ObjectKey&,
                          const ObjectKey&) = default;  // NOLINT(modernize-use-nullptr)
};

struct Chain {
  ObjectKey key;
  std::vector<KeyedRecord> records;  // in order; one at least

  [[nodiscard]] const DataBuffer& head() const { return records.front().record; }
};

// Whether both have the same records under the same keys, byte by byte.
[[nodiscard]] bool sameRecords(const Chain& a, const Chain& b);

class ChainReader {
 public:
  // The source, opened, outlives the reader and is read by nobody else.
  explicit ChainReader(RecordSource& source) : source_(source) {}

  // Takes the next object; false at the end and after a failure, which the source tells.
  [[nodiscard]] bool next();
  // Whether the last next() was true.
  [[nodiscard]] bool hasChain() const { return hasChain_; }
  // The object that next() took; its memory is used again by the next one.
  [[nodiscard]] const Chain& chain() const { return chain_; }
  // The number of objects that next() took.
  [[nodiscard]] std::uint64_t count() const { return count_; }
  [[nodiscard]] const RecordSource& source() const { return source_; }

 private:
  RecordSource& source_;
  Chain chain_;
  bool hasChain_ = false;
  std::uint64_t count_ = 0;
  KeyedRecord ahead_;  // the first record behind the object
  bool hasAhead_ = false;
  bool isStarted_ = false;
};

}  // namespace orx::orxkdb
