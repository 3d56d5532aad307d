// The key of a record as a value that compares in database order.
#pragma once

#include <cstdint>
#include <tuple>

#include "orxkdb/handle_number.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

struct RecordKey {
  HandleNumber parent = nullHandle;
  HandleNumber object = nullHandle;
  std::uint32_t recn = 0;

  [[nodiscard]] bool isOfSystemRecord() const {
    return parent == nullHandle && object == nullHandle;
  }
  friend bool operator==(const RecordKey&, const RecordKey&) = default;
  friend bool operator<(const RecordKey& a, const RecordKey& b) {
    return std::tie(a.parent, a.object, a.recn) < std::tie(b.parent, b.object, b.recn);
  }
};

// `key`: 20 bytes as they stand in a record.
[[nodiscard]] inline RecordKey recordKey(const std::uint8_t* key) {
  return {numberOf(key + data_layout::parentHandle), numberOf(key + data_layout::objectHandle),
          loadLE32(key + data_layout::recn)};
}

}  // namespace orx::orxkdb
