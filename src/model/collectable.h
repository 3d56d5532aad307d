// CMCollectable: the common base of the configuration values that live in collections (handle,
// attribute, symbolic parameter). It has no data of its own.
#pragma once

#include "platform/collectable.h"

namespace orx {

namespace class_id {
inline constexpr ClassId collectable = 0;
inline constexpr ClassId attributeSet = 32728;
inline constexpr ClassId configHandle = 32745;
inline constexpr ClassId symParm = 32766;
inline constexpr ClassId attribute = 32767;
}  // namespace class_id

class CMCollectable : public RWCollectable {
 public:
  CMCollectable();
  CMCollectable(const CMCollectable& other);
  CMCollectable& operator=(const CMCollectable&) = default;

  // Both return a plain CMCollectable, whatever derived class they are called on: the derived
  // classes do not supply these two. The caller owns the result.
  [[nodiscard]] CMCollectable* newSpecies() const override;
  [[nodiscard]] CMCollectable* copy() const override;
  [[nodiscard]] ClassId isA() const override;
  ~CMCollectable() override;
};

}  // namespace orx
