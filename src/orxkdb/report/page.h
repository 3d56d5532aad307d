// The whole page: one HTML5 document in UTF-8 that needs nothing else.
#pragma once

#include <cstddef>
#include <ctime>
#include <string>

#include "orxkdb/report/report_data.h"

namespace orx::orxkdb {

struct Page {
  std::string html;
  std::size_t objectsListed = 0;
};

// `data` has been gathered; the list of objects is taken out of it. `now` is told, in UTC, as the
// time of writing.
[[nodiscard]] Page pageOf(ReportData& data, std::time_t now);

}  // namespace orx::orxkdb
