// The sections of a page, each a whole element. The texts in them may be any bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/report/object_list.h"
#include "orxkdb/report/report_data.h"

namespace orx::orxkdb {

// `id` and `content` are trusted; `heading` is escaped.
[[nodiscard]] std::string section(std::string_view id, std::string_view heading,
                                  std::string_view content);
// `text` is escaped.
[[nodiscard]] std::string paragraph(std::string_view text);

[[nodiscard]] std::string countSection(const ReportData& data);
[[nodiscard]] std::string modelSection(const ModelUses& uses);
[[nodiscard]] std::string sizeSection(const Census& census);
[[nodiscard]] std::string findingSection(const ReportData& data);
// Of a report with a plan.
[[nodiscard]] std::string planSection(const ReportData& data);

struct ObjectSection {
  std::string html;
  std::size_t shown = 0;  // of `objects`: a page has room for a part of those with long texts
};
// `all` is the number of objects in the database.
[[nodiscard]] ObjectSection objectSection(const std::vector<ListedObject>& objects,
                                          std::uint64_t all, const std::string& database);

}  // namespace orx::orxkdb
