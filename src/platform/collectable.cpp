#include "platform/collectable.h"

#include <functional>

namespace orx {

namespace {
constexpr ClassId unnamedClass = 0x8000;
}

RWCollectable* RWCollectable::newSpecies() const {
  return new RWCollectable;
}
RWCollectable* RWCollectable::copy() const {
  return new RWCollectable(*this);
}
ClassId RWCollectable::isA() const {
  return unnamedClass;
}
std::uint64_t RWCollectable::binaryStoreSize() const {
  return 0;
}

int RWCollectable::compareTo(const RWCollectable* other) const {
  if (this == other) return 0;
  return std::less<>()(this, other) ? -1 : 1;
}

std::uint32_t RWCollectable::hash() const {
  return static_cast<std::uint32_t>(std::hash<const void*>()(this));
}

bool RWCollectable::isEqual(const RWCollectable* other) const {
  return this == other;
}
void RWCollectable::restoreGuts(VirtualInputStream&) {}
void RWCollectable::restoreGuts(ObjectFile&) {}
void RWCollectable::saveGuts(VirtualOutputStream&) const {}
void RWCollectable::saveGuts(ObjectFile&) const {}

}  // namespace orx
