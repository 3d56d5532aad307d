// CMHandleType: the object type that a configuration handle carries.
#pragma once

#include <cstdint>

namespace orx {

class CMHandleType {
 public:
  constexpr CMHandleType() = default;
  constexpr CMHandleType(std::int32_t value) : value_(value) {}
  constexpr operator std::int32_t() const { return value_; }

 private:
  std::int32_t value_ = 0;
};

// The types that handles themselves give meaning to; every other number is opaque here.
namespace handle_type {
inline constexpr CMHandleType managedSystem{2};
inline constexpr CMHandleType resourceGroup{3};
inline constexpr CMHandleType resource{4};
inline constexpr CMHandleType groupReference{5};  // 16-bit identifier of an inherited group
inline constexpr CMHandleType resourceReference{6};
}  // namespace handle_type

}  // namespace orx
