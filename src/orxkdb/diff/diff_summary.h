// The end of the report of a comparison: what was read, and how much differs.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "orxkdb/diff/chain.h"
#include "orxkdb/diff/diff_counts.h"
#include "orxkdb/diff/diff_options.h"

namespace orx::orxkdb {

// Both readers have come to their end.
[[nodiscard]] std::string summaryText(const ChainReader& before, const ChainReader& after,
                                      const DiffCounts& counts, const DiffOptions& options);
// "inputs", an array of two, "same" and "summary".
[[nodiscard]] nlohmann::ordered_json summaryJson(const ChainReader& before,
                                                 const ChainReader& after,
                                                 const DiffCounts& counts);
// "1 added, 2 removed, 3 changed".
[[nodiscard]] std::string countsInShort(const DiffCounts& counts);

}  // namespace orx::orxkdb
