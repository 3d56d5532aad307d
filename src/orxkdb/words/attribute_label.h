// What an operator calls an attribute.
#pragma once

#include <string>

#include "model/attribute_key.h"

namespace orx::orxkdb {

// "attribute 17", or "attribute 3811/1" of group 1.
[[nodiscard]] inline std::string attributeLabel(int key) {
  const int group = key / CMAttributeKey::groupSize;
  std::string label = "attribute " + std::to_string(key % CMAttributeKey::groupSize);
  return group == 0 ? label : label + "/" + std::to_string(group);
}

}  // namespace orx::orxkdb
