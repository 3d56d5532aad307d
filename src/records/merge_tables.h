// MergeTables: what a merge does with each record type and each handle type.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace orx {

struct MergeTables {
  static constexpr std::size_t size = 255;

  // By record type: 0 skips such records. By handle type: 1 renumbers such handles.
  std::array<std::int32_t, size> mergeTypes{};
  // By handle type: the base added to identifiers; 0 renumbers nothing.
  std::array<std::uint32_t, size> idBase{};
  // By handle type: one more than the highest identifier given out, at most 0xFFFFFFFF.
  std::array<std::uint32_t, size> nextId{};
};

}  // namespace orx
