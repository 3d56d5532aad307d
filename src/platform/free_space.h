// What a full file system lacks.
#pragma once

#include <string>

namespace orx {

// Whether the file system that `file` is on, or would be made on, can hold no more files, whatever
// space it has. False where that has no limit.
[[nodiscard]] bool lacksInodes(const std::string& file);

}  // namespace orx
