// The report of a check, as text and as JSON.
#pragma once

#include <string>

#include "orxkdb/check/check_run.h"
#include "orxkdb/check/findings.h"

namespace orx::orxkdb {

[[nodiscard]] std::string reportText(const std::string& input, const CheckCounts& counts,
                                     const Findings& findings);
[[nodiscard]] std::string reportJson(const std::string& input, const CheckCounts& counts,
                                     const Findings& findings);

}  // namespace orx::orxkdb
