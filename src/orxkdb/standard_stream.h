// The name that stands for standard input or output instead of a file.
#pragma once

#include <string_view>

namespace orx::orxkdb {

inline constexpr std::string_view standardStream = "-";

}  // namespace orx::orxkdb
