// The records that a use-count rebuild looks at.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "records/data_buffer.h"

namespace orx {

// By record type: 1 for those that can refer to a model or be one. All others, the system record
// (type 0) among them, and types beyond the table take no part.
inline constexpr auto useCountTypes = [] {
  std::array<std::int32_t, 255> types{};
  for (const std::size_t type : {1, 2, 3, 4, 5, 6, 7, 10, 11, 12, 15, 64}) types[type] = 1;
  return types;
}();

[[nodiscard]] constexpr bool takesPartInUseCount(std::int32_t recType) {
  const auto type = static_cast<std::size_t>(recType);
  return recType >= 0 && type < useCountTypes.size() && useCountTypes[type] != 0;
}

[[nodiscard]] constexpr bool isModel(std::int32_t recType) {
  constexpr std::int32_t modelBit = 8;
  return (recType & modelBit) != 0;
}

// A record of a model that the rebuild writes again.
[[nodiscard]] constexpr bool isCountedModel(std::int32_t recType) {
  return takesPartInUseCount(recType) && isModel(recType);
}

// The first record of an object that counts for the model it refers to.
[[nodiscard]] inline bool isCountedReference(const DataBuffer& record) {
  return takesPartInUseCount(record.recType()) && record.recn() == 0 &&
         static_cast<std::int32_t>(record.modelHandle()) != 0;
}

}  // namespace orx
