// What an open database knows of itself without being read.
#pragma once

#include <cstdint>

#include "platform/kdb.h"

namespace orx::kdb {

// The number of records when it was opened; 0 for a stale handle and a new database.
[[nodiscard]] std::uint64_t recordsWhenOpened(kdbHandle database);

}  // namespace orx::kdb
