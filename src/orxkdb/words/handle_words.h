// Handles in words and as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "model/config_handle.h"

namespace orx::orxkdb {

// "<1;1;4;0;0;0;9;>, 0900000000000401, new format, type 4, identifier 9"; for an inherited handle
// its kind and what it refers to instead of the identifier.
[[nodiscard]] std::string handleWords(const CMConfigHandle& handle);

// "exported", "hex", "format", "type", "kind", "temporary", "flag2", "flag3"; "identifier" or, of
// an inherited handle, "managedSystem", "group", "resource" in exported form.
[[nodiscard]] nlohmann::ordered_json handleJson(const CMConfigHandle& handle);

}  // namespace orx::orxkdb
