// The key of a record as the engine stores it: both handles as they are, then `recn` big-endian,
// so that plain byte order is the database order.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <cstring>
#include <optional>

#include "platform/bytes.h"
#include "platform/kdb.h"

namespace orx::kdb {

struct Key {
  std::array<std::uint8_t, keySize> bytes{};

  // From the first 20 bytes of a record, where `recn` is little-endian.
  static Key ofRecord(const std::uint8_t* record) {
    Key key;
    std::memcpy(key.bytes.data(), record, 16);
    storeBE32(key.bytes.data() + 16, loadLE32(record + 16));
    return key;
  }

  // From 20 bytes as the engine stores them.
  static Key stored(const std::uint8_t* bytes) {
    Key key;
    std::memcpy(key.bytes.data(), bytes, keySize);
    return key;
  }

  // The other way round: the first 20 bytes of a record.
  void toRecord(std::uint8_t* record) const {
    std::memcpy(record, bytes.data(), 16);
    storeLE32(record + 16, loadBE32(bytes.data() + 16));
  }

  // The key right behind this one; none behind the last.
  [[nodiscard]] std::optional<Key> following() const {
    Key next = *this;
    for (std::size_t i = keySize; i-- > 0;) {
      if (++next.bytes[i] != 0) return next;
    }
    return std::nullopt;
  }

  friend std::strong_ordering operator<=>(const Key& a, const Key& b) {
    // As memcmp, which takes several times as long.
    for (const std::size_t at : {0, 8}) {
      const auto order = loadBE64(a.bytes.data() + at) <=> loadBE64(b.bytes.data() + at);
      if (std::is_neq(order)) return order;
    }
    return loadBE32(a.bytes.data() + 16) <=> loadBE32(b.bytes.data() + 16);
  }
  friend bool operator==(const Key& a, const Key& b) { return a.bytes == b.bytes; }
};

}  // namespace orx::kdb
