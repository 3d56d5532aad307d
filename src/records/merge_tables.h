// MergeTables: what a merge does with each record type and each handle type. Types outside the
// tables are left out, or keep their identifiers.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "model/config_handle.h"

namespace orx {

struct MergeTables {
  static constexpr std::size_t size = 255;

  // By record type: 0 skips such records. By handle type: 1 renumbers such handles.
  std::array<std::int32_t, size> mergeTypes{};
  // By handle type: the base added to identifiers; 0 renumbers nothing.
  std::array<std::uint32_t, size> idBase{};
  // By handle type: one more than the highest identifier given out, at most 0xFFFFFFFF.
  std::array<std::uint32_t, size> nextId{};

  [[nodiscard]] bool merges(std::int32_t recType) const;
  [[nodiscard]] bool renumbers(CMHandleType type) const;
  // The handle under its new identifier: the old one plus idBase - 1, modulo 2^32, as a permanent
  // handle of the same type. A handle that is not renumbered comes back as it is.
  [[nodiscard]] CMConfigHandle renumbered(const CMConfigHandle& handle) const;
  // The same for a handle of a record: `nextId` of its type is raised above the new identifier.
  [[nodiscard]] CMConfigHandle giveOut(const CMConfigHandle& handle);
};

}  // namespace orx
