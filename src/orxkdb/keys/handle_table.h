// HandleTable: a number for each of many handles, found in constant time; at most half full, 16
// bytes a slot. Entries are never removed. Throws std::bad_alloc.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "orxkdb/keys/handle_number.h"
#include "platform/huge_pages.h"

namespace orx::orxkdb {

class HandleTable {
 public:
  static constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();

  // Keeps the value of a handle that is there. `value` is not `none`.
  void insert(HandleNumber handle, std::uint32_t value) {
    if (2 * (count_ + 1) > slots_.size()) grow();
    Slot& slot = slots_[find(handle)];
    if (slot.value != none) return;
    slot = {handle, value};
    ++count_;
  }

  // Null for a handle that is not there; good until the next insert.
  [[nodiscard]] std::uint32_t* valueOf(HandleNumber handle) {
    if (slots_.empty()) return nullptr;
    Slot& slot = slots_[find(handle)];
    return slot.value == none ? nullptr : &slot.value;
  }

 private:
  struct Slot {
    HandleNumber handle = nullHandle;
    std::uint32_t value = none;
  };

  // Spreads handles that differ in a few bits of any byte.
  [[nodiscard]] static HandleNumber mix(HandleNumber handle) {
    handle = (handle ^ handle >> 33) * 0xFF51AFD7ED558CCDu;
    handle = (handle ^ handle >> 33) * 0xC4CEB9FE1A85EC53u;
    return handle ^ handle >> 33;
  }

  // The slot of the handle, or the free one where it would go.
  [[nodiscard]] std::size_t find(HandleNumber handle) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = static_cast<std::size_t>(mix(handle)) & mask;
    while (slots_[at].value != none && slots_[at].handle != handle) at = (at + 1) & mask;
    return at;
  }

  void grow() {
    std::pmr::vector<Slot> old(slots_.empty() ? firstSize : 2 * slots_.size(), &hugePageMemory());
    std::swap(old, slots_);
    for (const Slot& slot : old) {
      if (slot.value != none) slots_[find(slot.handle)] = slot;
    }
  }

  static constexpr std::size_t firstSize = 1024;

  std::pmr::vector<Slot> slots_{&hugePageMemory()};  // a power of two of them
  std::size_t count_ = 0;
};

}  // namespace orx::orxkdb
