// The base of everything that collections hold: twelve virtual operations, in this order.
// Collections themselves are standard containers; of this base they need identity, hashing,
// comparison and the class identifier. The stream operations and binaryStoreSize() (0) exist for
// the order of the table and do nothing; there is no factory.
#pragma once

#include <cstdint>

namespace orx {

using ClassId = std::uint16_t;

// Streams that objects could be kept in; no object of this system ever is.
struct VirtualInputStream;
struct VirtualOutputStream;
struct ObjectFile;

class RWCollectable {
 public:
  RWCollectable() = default;
  RWCollectable(const RWCollectable&) = default;
  RWCollectable& operator=(const RWCollectable&) = default;

  // A new default-constructed object, a new copy of this one; the caller owns the result.
  [[nodiscard]] virtual RWCollectable* newSpecies() const;
  [[nodiscard]] virtual RWCollectable* copy() const;
  [[nodiscard]] virtual ClassId isA() const;
  virtual ~RWCollectable() = default;
  [[nodiscard]] virtual std::uint64_t binaryStoreSize() const;
  // Negative, 0 or positive; by default objects are ordered by their address.
  [[nodiscard]] virtual int compareTo(const RWCollectable* other) const;
  [[nodiscard]] virtual std::uint32_t hash() const;
  // By default an object equals itself alone.
  [[nodiscard]] virtual bool isEqual(const RWCollectable* other) const;
  virtual void restoreGuts(VirtualInputStream& stream);
  virtual void restoreGuts(ObjectFile& file);
  virtual void saveGuts(VirtualOutputStream& stream) const;
  virtual void saveGuts(ObjectFile& file) const;
};

}  // namespace orx
