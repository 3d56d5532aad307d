// The report of a check, as text and as JSON: all findings counted, those that were kept shown,
// each kind with what follows from it.
#pragma once

#include <string>

#include "orxkdb/check/check_counts.h"
#include "orxkdb/check/findings.h"

namespace orx::orxkdb {

// `input` is the name of what was checked. Texts of the input come printable in the text, and as
// they are in the JSON, which is a whole document.
[[nodiscard]] std::string reportText(const std::string& input, const CheckCounts& counts,
                                     const Findings& findings);
[[nodiscard]] std::string reportJson(const std::string& input, const CheckCounts& counts,
                                     const Findings& findings);

}  // namespace orx::orxkdb
