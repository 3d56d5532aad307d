// What a merge renumbers: the object types and the counters that belong to them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "records/merge_tables.h"

namespace orx {

// Value i of the system record's counters is the next identifier of handle type handlerTypes[i].
inline constexpr std::array<std::uint8_t, 26> handlerTypes{1,  2,  3,  4,  5,  6,  65, 12, 11,
                                                           10, 28, 27, 26, 32, 34, 33, 35, 36,
                                                           37, 38, 39, 64, 7,  15, 66, 40};

// MergeTables::mergeTypes of every merge. Type 0 is that of the null handle and the system record.
inline constexpr auto mergedTypes = [] {
  std::array<std::int32_t, MergeTables::size> types{};
  for (const std::size_t type : {0, 1, 2, 3, 4, 5, 6, 7, 10, 11, 12, 15, 64}) types[type] = 1;
  return types;
}();

}  // namespace orx
