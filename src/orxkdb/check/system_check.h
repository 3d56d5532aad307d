// The check of what a merge reads of the system record: counters and system parameters.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "orxkdb/check/findings.h"
#include "orxkdb/check/inventory.h"

namespace orx::orxkdb {

// The number that `text` is: an optional "-" and digits, nothing else, of 32 bits with or without a
// sign; none for any other text.
[[nodiscard]] std::optional<std::int64_t> plainNumber(std::string_view text);

// `text` is that of all records that a merge takes for the system record, `place` that of the
// findings. Its counters go into the inventory, which compares them.
void checkSystemText(const std::string& text, const Place& place, Findings& findings,
                     Inventory& inventory);

}  // namespace orx::orxkdb
