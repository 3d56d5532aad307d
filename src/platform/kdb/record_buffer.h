// RecordBuffer: a bounded number of records that are found by their keys and can be sorted.
//
// A record lies behind the key that it is stored under, as in a run: 20 + 296 bytes.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

#include "platform/huge_pages.h"
#include "platform/kdb/key.h"

namespace orx::kdb {

inline constexpr std::size_t entrySize = keySize + recordSize;

// A key as numbers, which compare several times as fast as bytes.
struct SortKey {
  std::uint64_t parent = 0;
  std::uint64_t object = 0;
  std::uint32_t recn = 0;

  static SortKey of(const Key& key);
  friend auto operator<=>(const SortKey&,
                          const SortKey&) = default;  // NOLINT(modernize-use-nullptr)
};

class RecordBuffer {
 public:
  static constexpr std::size_t mostRecords = 19900;  // 6 MB, three huge pages

  // `capacity` is the number of records that fill it, at most mostRecords.
  explicit RecordBuffer(std::size_t capacity = mostRecords) : capacity_(capacity) {}

  // `record` is 296 bytes. False, and nothing is added, when the key is there already. Not for a
  // full buffer. Throws std::bad_alloc.
  [[nodiscard]] bool add(const Key& key, const std::uint8_t* record);

  [[nodiscard]] std::size_t count() const { return entries_.size(); }
  [[nodiscard]] bool isFull() const { return entries_.size() == capacity_; }

  // Brings the records into key order for at(); add() must not follow before clear().
  void sort();
  // Points at the 316 bytes of key and record, good until the next add(), clear() or release().
  [[nodiscard]] const std::uint8_t* at(std::size_t index) const;

  // Lets the processor fetch what at(index) points at, if there is such an index.
  void prefetch(std::size_t index) const;

  // Keeps its memory.
  void clear();
  // Gives its memory back as well.
  void release();

 private:
  using Stored = std::array<std::uint8_t, entrySize>;
  struct Entry {
    SortKey key;
    std::uint32_t place;  // in stored_
  };

  static constexpr std::size_t slotCount = std::size_t{1} << 16;
  static constexpr std::uint32_t emptySlot = 0xFFFFFFFF;

  [[nodiscard]] std::uint32_t& slotFor(const Key& key);

  std::size_t capacity_;
  std::pmr::vector<Stored> stored_{&hugePageMemory()};  // in order of arrival
  std::vector<Entry> entries_;
  std::vector<std::uint32_t> slots_;  // entries by the hash of their keys, open addressing
};

}  // namespace orx::kdb
