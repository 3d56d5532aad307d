#include "records/merge_tables.h"

namespace orx {

bool MergeTables::merges(std::int32_t recType) const {
  const auto index = static_cast<std::uint32_t>(recType);
  return index < size && mergeTypes[index] != 0;
}

bool MergeTables::renumbers(CMHandleType type) const {
  const auto index = static_cast<std::uint32_t>(std::int32_t{type});
  return index < size && mergeTypes[index] == 1 && idBase[index] != 0;
}

CMConfigHandle MergeTables::renumbered(const CMConfigHandle& handle) const {
  const CMHandleType type = handle.getType();
  if (!renumbers(type)) return handle;
  const auto oldId = static_cast<std::uint32_t>(static_cast<std::int32_t>(handle));
  const std::uint32_t base = idBase[static_cast<std::size_t>(std::int32_t{type})];
  return CMConfigHandle::createPermanentHandle(type, oldId + base - 1);
}

}  // namespace orx
