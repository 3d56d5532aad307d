// UncopiedRecords: what the successor of a database has not got yet. These are the records of the
// database as it was, behind a key up to which everything has been copied, with the changes of them
// that wait in memory until the copy comes by.
//
// A use-count rebuild changes records all over the database. In the successor each of them would
// cost a page written, and often several times; here the copy stays one pass that appends. The
// price: a disk that is full, or damage that a look-up does not meet, shows when the copy is made.
//
// Every call may throw std::bad_alloc. The codes of a change are those of Successor.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "platform/kdb/key.h"
#include "platform/kdb/key_ranges.h"
#include "platform/kdb/snapshot.h"
#include "platform/kdb/successor.h"
#include "platform/kdb/tree_file.h"

namespace orx::kdb {

class UncopiedRecords {
 public:
  // The records of `tree` without `deleted`, which stays as it is while the object lives.
  UncopiedRecords(const std::shared_ptr<const TreeFile>& tree, const KeyRanges& deleted);

  // To be called once, before anything else.
  [[nodiscard]] Outcome start() { return stepBase(); }

  // Whether `key` lies behind everything that was copied. The successor has no such key then.
  [[nodiscard]] bool isUncopied(const Key& key) const {
    return !copied_.has_value() || key > *copied_;
  }

  // Appends everything up to the key `last` to the successor, unless that was done before. A
  // failure is a storage failure, and the end.
  [[nodiscard]] Outcome moveTo(Successor& successor, const Key& last);

  // Whether a change of the record with this key can wait here. New records do so only where
  // others are updated as often, as in a rebuild: of a merge, they cost less appended right away.
  [[nodiscard]] bool takesChange(const Key& key) const {
    return isUncopied(key) && changes_.size() < maximumChanges;
  }
  [[nodiscard]] bool takesNew(const Key& key) const { return adds_ < updates_ && takesChange(key); }

  // `record` is 296 bytes. Each is for a key that the question above was answered with yes for.
  [[nodiscard]] Outcome add(const Key& key, const std::uint8_t* record);
  [[nodiscard]] Outcome update(const Key& key, const std::uint8_t* record);
  [[nodiscard]] Outcome erase(const Key& key);

  // Copies the first uncopied record whose key is `key` or follows it into 296 bytes. endOfData
  // when there is none.
  [[nodiscard]] Outcome readNext(const Key& key, std::uint8_t* record);

 private:
  struct Change {
    std::array<std::uint8_t, recordSize> record{};
    bool isErased = false;
    bool isNew = false;  // the database has no record with its key
  };
  using Changes = std::map<Key, Change>;

  static constexpr std::size_t maximumChanges = std::size_t{1} << 18;  // about 100 MB

  [[nodiscard]] Outcome stepBase();
  [[nodiscard]] Outcome moveAll(Successor& successor, const Key& last);
  [[nodiscard]] Outcome moveChange(Successor& successor);
  // The record of the database with just this key, whatever changes wait; 5/28 when it has none.
  [[nodiscard]] Outcome findExactly(const Key& key, const std::uint8_t*& record);

  Snapshot base_;
  Key baseKey_;                               // of the first record that is not copied
  const std::uint8_t* baseRecord_ = nullptr;  // null behind the last
  std::optional<Key> copied_;                 // up to this key everything is copied
  Changes changes_;                           // of what is not copied
  std::uint64_t updates_ = 0;                 // calls, whatever came of them
  std::uint64_t adds_ = 0;
  KeyLookUp lookUp_;
  const KeyRanges& deleted_;
};

}  // namespace orx::kdb
