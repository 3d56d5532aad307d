// The attribute that a merge stores the system parameters in.
#pragma once

#include "model/attribute.h"

namespace orx {

class CMSymParmSet;

// A new attribute of key 1 with one value: the parameters in order, separated by ",", each as
// NAME=VALUE or, when its description is more than blanks, NAME=VALUE=DESCRIPTION. Names and texts
// stand as they are: "," and "=" in them are not doubled, and an empty value is nothing.
[[nodiscard]] CMAttribute makeSymParmAttribute(const CMSymParmSet& parameters);

}  // namespace orx
