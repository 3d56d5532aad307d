// The attributes that the operations themselves read or write, by key number.
#pragma once

#include <algorithm>
#include <string>

#include "model/attribute_key.h"
#include "restore/merge_types.h"

namespace orx::orxkdb {

namespace known_attribute {
inline constexpr int systemParameters = 1;  // of the system record
inline constexpr int counters = 9;          // of the system record, one for each of handlerTypes
inline constexpr int useCount = 17;         // of a model
inline constexpr int signatures = 84;       // of a model: the handles of what refers to it
}  // namespace known_attribute

// Whether the values of the attribute with this key number are handles, which a merge renumbers.
[[nodiscard]] constexpr bool holdsHandles(int key) {
  return std::ranges::any_of(handleAttributes, [key](const HandleAttribute& attribute) {
    return attribute.attrGroup * CMAttributeKey::groupSize + attribute.attrId == key;
  });
}

// "attribute 17", or "attribute 3811/1" of group 1.
[[nodiscard]] inline std::string attributeLabel(int key) {
  const int group = key / CMAttributeKey::groupSize;
  std::string label = "attribute " + std::to_string(key % CMAttributeKey::groupSize);
  return group == 0 ? label : label + "/" + std::to_string(group);
}

}  // namespace orx::orxkdb
