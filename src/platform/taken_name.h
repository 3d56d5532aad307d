// Which names in the file system are taken.
#pragma once

#include <string>

namespace orx {

// Also by a symbolic link that leads nowhere: a command would write through it.
[[nodiscard]] bool isTaken(const std::string& name);

// For a text made of the file `name`, never the name of a file that is there.
[[nodiscard]] std::string freeTextName(const std::string& name);

}  // namespace orx
