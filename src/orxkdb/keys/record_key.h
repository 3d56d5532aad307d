// The key of a record as a value that compares in database order.
#pragma once

#include <compare>
#include <cstdint>

#include "orxkdb/keys/handle_number.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

struct RecordKey {
  HandleNumber parent = nullHandle;
  HandleNumber object = nullHandle;
  std::uint32_t recn = 0;

  [[nodiscard]] bool hasNullHandles() const { return parent == nullHandle && object == nullHandle; }
  friend auto operator<=>(const RecordKey&,
                          const RecordKey&) = default;  // NOLINT(modernize-use-nullptr)
};

// From the record's own first 20 bytes.
[[nodiscard]] inline RecordKey keyOf(const DataBuffer& record) {
  return {numberOf(record.parentBytes()), numberOf(record.objectBytes()), record.recn()};
}

}  // namespace orx::orxkdb
