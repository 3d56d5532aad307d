// How texts tell a number of things: "1 record", "2 records".
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orx::orxkdb {

[[nodiscard]] inline std::string counted(std::uint64_t count, std::string_view one,
                                         std::string_view many) {
  return std::to_string(count).append(" ").append(count == 1 ? one : many);
}

// Of a noun that only takes an "s".
[[nodiscard]] inline std::string counted(std::uint64_t count, std::string_view noun) {
  return std::to_string(count).append(" ").append(noun).append(count == 1 ? "" : "s");
}

}  // namespace orx::orxkdb
