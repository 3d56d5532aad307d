// Text for a page: whatever bytes come, the page stays valid UTF-8 and shows them as text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "orxkdb/keys/handle_number.h"

namespace orx::orxkdb {

// For the inside of an element or of a quoted attribute. Control characters, bytes that are no
// UTF-8, and the characters that turn the direction of a line around come as "\x1B".
[[nodiscard]] std::string escaped(std::string_view text);

// At most the first `most` bytes, cut before a character of UTF-8, and "..." when any are left out.
[[nodiscard]] std::string shortened(std::string_view text, std::size_t most);

// "1,234,567".
[[nodiscard]] std::string grouped(std::uint64_t number);
// "1 record", "1,234 records": `noun` is one whose plural ends in "s".
[[nodiscard]] std::string groupedCount(std::uint64_t count, std::string_view noun);

// Of a handle or a record: "type 12".
[[nodiscard]] std::string typeName(std::int64_t type);

// "4:9" for a plain handle, "-" for the null handle, else its exported form; "orxkdb explain"
// takes it.
[[nodiscard]] std::string shortName(HandleNumber handle);

}  // namespace orx::orxkdb
