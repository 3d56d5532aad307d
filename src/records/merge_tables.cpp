#include "records/merge_tables.h"

#include <limits>

namespace orx {

namespace {

std::size_t indexOf(const CMHandleType& type) {
  return static_cast<std::size_t>(std::int32_t{type});
}

std::uint32_t identifierOf(const CMConfigHandle& handle) {
  return static_cast<std::uint32_t>(static_cast<std::int32_t>(handle));
}

void raiseAbove(std::uint32_t& next, std::uint32_t id) {
  constexpr std::uint32_t highest = std::numeric_limits<std::uint32_t>::max();
  if (id >= next) next = id == highest ? highest : id + 1;
}

}  // namespace

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
  return CMConfigHandle::createPermanentHandle(type,
                                               identifierOf(handle) + idBase[indexOf(type)] - 1);
}

CMConfigHandle MergeTables::giveOut(const CMConfigHandle& handle) {
  const CMHandleType type = handle.getType();
  if (!renumbers(type)) return handle;
  CMConfigHandle moved = renumbered(handle);
  raiseAbove(nextId[indexOf(type)], identifierOf(moved));
  return moved;
}

}  // namespace orx
