// A set of deleted records of a database, kept as ranges of keys: a scan that deletes everything
// behind it needs one range at any size. Every record of the database between the ends of a range
// is in the set; records are never taken out of it.
#pragma once

#include <cstdint>
#include <iterator>
#include <map>
#include <optional>

#include "platform/kdb/key.h"

namespace orx::kdb {

class KeyRanges {
 public:
  // `key` is not in the set. `previous`, when it is in the set, is a record before it in database
  // order with none between them that is not: all of these are in one range then.
  void add(const Key& key, const std::optional<Key>& previous) {
    if (previous.has_value()) {
      auto range = covering(*previous);
      if (range != ranges_.end() && range->second == *previous) {
        // Records that another scan deleted may lie between the two.
        ranges_.erase(std::next(range), ranges_.upper_bound(key));
        range->second = key;
        ++count_;
        return;
      }
    }
    ranges_.emplace(key, key);
    ++count_;
  }

  [[nodiscard]] bool contains(const Key& key) const { return lastOfRange(key).has_value(); }

  // The last key of the range that holds `key`; none when the set does not hold it.
  [[nodiscard]] std::optional<Key> lastOfRange(const Key& key) const {
    auto range = ranges_.upper_bound(key);
    if (range == ranges_.begin()) return std::nullopt;
    --range;
    if (range->second < key) return std::nullopt;
    return range->second;
  }

  [[nodiscard]] std::uint64_t count() const { return count_; }  // records, not ranges

 private:
  std::map<Key, Key>::iterator covering(const Key& key) {
    auto range = ranges_.upper_bound(key);
    return range == ranges_.begin() ? ranges_.end() : --range;
  }

  std::map<Key, Key> ranges_;  // first key, last key
  std::uint64_t count_ = 0;
};

}  // namespace orx::kdb
