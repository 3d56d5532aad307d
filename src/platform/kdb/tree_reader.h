// TreeReader: the records of a TreeFile in database order, every page checked before anything in it
// is believed. 8/17 for a damaged one, 8/20 for one that cannot be read. A failure is final: next()
// repeats it, whatever is sought.
//
// It stands before the first record at its beginning. A pass from there, or from seekFirst(), to
// the end without a seek() also checks the number of records. Memory for a few pages and up to 64
// leaves that are read ahead.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/kdb/key.h"
#include "platform/kdb/tree_file.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

class TreeReader {
 public:
  explicit TreeReader(std::shared_ptr<const TreeFile> tree);

  // Places the reader before the first record, or before the first whose key is `key` or follows;
  // behind the last when there is none.
  [[nodiscard]] Outcome seekFirst();
  [[nodiscard]] Outcome seek(const Key& key);

  // The record at the reader's place; the reader steps behind it. `record` points at 296 bytes that
  // stay valid until the next call. endOfData behind the last record.
  [[nodiscard]] Outcome next(Key& key, const std::uint8_t*& record);

 private:
  struct Level {
    std::vector<std::uint8_t> page;  // branch pages; the leaf lives in the window
    std::uint64_t number = 0;        // of that page, which need not be read again; 0: none
    std::size_t index = 0;
    std::size_t count = 0;
  };

  Outcome fail(Outcome outcome);
  Outcome descend(std::uint64_t page, std::size_t level, const Key* key);
  Outcome loadBranch(std::uint64_t page, Level& level);
  Outcome loadLeaf(std::uint64_t page);
  Outcome fetchLeaf(std::uint64_t page);
  Outcome nextLeaf();
  Outcome checkLeaf() const;
  [[nodiscard]] std::size_t lowerBoundInLeaf(const Key& key) const;
  [[nodiscard]] bool leafCovers(const Key& key) const;
  [[nodiscard]] Key leafKey(std::size_t index) const;

  std::shared_ptr<const TreeFile> tree_;
  std::vector<Level> branches_;
  std::vector<std::uint8_t> window_;  // leaves read ahead while they follow each other in the file
  std::uint64_t windowFirst_ = 0;
  std::uint64_t windowCount_ = 0;
  std::uint64_t readAhead_ = 1;  // leaves
  const std::uint8_t* leaf_ = nullptr;
  std::size_t leafIndex_ = 0;
  std::size_t leafCount_ = 0;
  bool positioned_ = false;
  bool wholeScan_ = false;  // from the first record on: the number of records can be checked
  std::uint64_t seen_ = 0;
  Key lastKey_;
  bool haveLastKey_ = false;
  Outcome failure_;
};

}  // namespace orx::kdb
