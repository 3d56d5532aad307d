#include "platform/kdb/record_buffer.h"

#include <algorithm>
#include <cstring>

#include "platform/kdb/key_filter.h"

namespace orx::kdb {

SortKey SortKey::of(const Key& key) {
  const std::uint8_t* bytes = key.bytes.data();
  return {loadBE64(bytes), loadBE64(bytes + 8), loadBE32(bytes + 16)};
}

bool RecordBuffer::add(const Key& key, const std::uint8_t* record) {
  if (slots_.empty()) {
    slots_.assign(slotCount, emptySlot);
    stored_.reserve(capacity_);
    entries_.reserve(capacity_);
  }
  std::uint32_t& slot = slotFor(key);
  if (slot != emptySlot) return false;
  slot = static_cast<std::uint32_t>(entries_.size());
  entries_.push_back({SortKey::of(key), slot});
  Stored& stored = stored_.emplace_back();
  std::memcpy(stored.data(), key.bytes.data(), keySize);
  std::memcpy(stored.data() + keySize, record, recordSize);
  return true;
}

// The slot that names the entry of `key`, or the empty one that it belongs into.
std::uint32_t& RecordBuffer::slotFor(const Key& key) {
  const SortKey wanted = SortKey::of(key);
  std::size_t slot = hashOf(key) % slotCount;
  while (slots_[slot] != emptySlot && entries_[slots_[slot]].key != wanted) {
    slot = (slot + 1) % slotCount;
  }
  return slots_[slot];
}

void RecordBuffer::sort() {
  std::ranges::sort(entries_, {}, &Entry::key);
}

const std::uint8_t* RecordBuffer::at(std::size_t index) const {
  return stored_[entries_[index].place].data();
}

void RecordBuffer::prefetch(std::size_t index) const {
  constexpr std::size_t cacheLine = 64;
  if (index >= entries_.size()) return;
  for (std::size_t offset = 0; offset < entrySize; offset += cacheLine) {
    __builtin_prefetch(at(index) + offset);
  }
}

void RecordBuffer::clear() {
  stored_.clear();
  entries_.clear();
  std::ranges::fill(slots_, emptySlot);
}

void RecordBuffer::release() {
  *this = RecordBuffer(capacity_);
}

}  // namespace orx::kdb
