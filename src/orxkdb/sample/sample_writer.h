// Writes the backup of a made-up fleet (orxkdb/sample/fleet.h) as text.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "orxkdb/sample/fleet.h"

namespace orx::orxkdb {

enum class SampleOrder { key, random };

// Hands the lines, "\n" included, to `write` in pieces of whole lines, about 256 KiB each; stops
// when that returns false. Random order is that of a shuffled deck of records, the same for the
// same seed. False when it was stopped.
[[nodiscard]] bool writeSample(const FleetOptions& options, SampleOrder order,
                               const std::function<bool(std::string_view)>& write);

}  // namespace orx::orxkdb
