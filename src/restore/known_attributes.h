// The attributes that the operations themselves read or write, by key number.
#pragma once

#include "model/sym_parm_set.h"

namespace orx::known_attribute {

inline constexpr int systemParameters = CMSymParmSet::attributeKey;  // of the system record
inline constexpr int counters = 9;     // of the system record, one for each of handlerTypes
inline constexpr int useCount = 17;    // of a model
inline constexpr int signatures = 84;  // of a model: the handles of what refers to it

}  // namespace orx::known_attribute
