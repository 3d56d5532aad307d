// File names as the operator reads and types them.
#pragma once

#include <string>

namespace orx {

// The absolute path of `name`, symbolic links as they are; control characters as "?".
[[nodiscard]] std::string absolutePath(const std::string& name);

// The directory of `name`, "." for a name without one.
[[nodiscard]] std::string parentOf(const std::string& name);

// `name` as one word for a shell, quoted where it has to be, in $'' with codes for control
// characters; never an option.
[[nodiscard]] std::string shellWord(const std::string& name);

}  // namespace orx
