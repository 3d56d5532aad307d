// Text from records, whose bytes may be anything, for a terminal.
#pragma once

#include <string>
#include <string_view>

namespace orx::orxkdb {

// Control characters, line ends too, as "\x1B", those of UTF-8 as "\xC2\x9B"; everything else as it
// is.
[[nodiscard]] std::string printable(std::string_view text);

}  // namespace orx::orxkdb
