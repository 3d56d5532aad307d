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

// `now` is told as the time of writing. Takes the list of objects out of the data.
[[nodiscard]] Page pageOf(ReportData& data, std::time_t now);

}  // namespace orx::orxkdb
