// The attributes that hold a description, whose values are UTF-8 text: their key numbers, in the
// order in which they are looked for.
#pragma once

#include <algorithm>
#include <array>

namespace orx {

inline constexpr std::array<int, 21> descriptionAttributeKeys = {
    6,    7,    13,   46,   96,   103,  6105, 6107, 6109, 6110, 6138,
    6142, 6148, 6174, 7230, 7373, 7391, 7598, 7651, 8174, 8190};

[[nodiscard]] constexpr bool isDescriptionAttribute(int keyNumber) {
  return std::find(descriptionAttributeKeys.begin(), descriptionAttributeKeys.end(), keyNumber) !=
         descriptionAttributeKeys.end();
}

}  // namespace orx
