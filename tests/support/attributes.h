// Attributes made of their values, and taken apart again; sets of parameters.
#pragma once

#include <string>
#include <vector>

#include "model/sym_parm_set.h"

namespace orx::test {

using Values = std::vector<std::string>;

inline CMAttribute makeAttribute(int key, const Values& values) {
  CMAttribute attribute{CMAttributeKey(key)};
  for (const std::string& value : values) attribute.setValue(value);
  return attribute;
}

inline Values valuesOf(const CMAttribute& attribute) {
  const auto range = attribute.values();
  return {range.begin(), range.end()};
}

// The parameters of a text, "NAME=VALUE,NAME=VALUE=DESCRIPTION".
inline CMSymParmSet parametersOf(const std::string& text) {
  CMSymParmSet set;
  set = makeAttribute(CMSymParmSet::attributeKey, {text});
  return set;
}

}  // namespace orx::test
