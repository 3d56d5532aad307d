#include "orxkdb/report/page.h"

#include <array>

#include "orxkdb/report/html_text.h"
#include "orxkdb/report/page_style.h"
#include "orxkdb/report/sections.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t longestTitle = 200;

// Nothing is loaded, whatever a text of the database may have smuggled in.
constexpr std::string_view policy =
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
    "style-src 'unsafe-inline'; script-src 'unsafe-inline'; form-action 'none'; base-uri "
    "'none'\">\n";

std::string timeText(std::time_t now) {
  std::tm parts{};
  std::array<char, 32> text{};
  ::gmtime_r(&now, &parts);
  const std::size_t size = std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M UTC", &parts);
  return {text.data(), size};
}

std::string head(const ReportData& data) {
  std::string html = "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n" +
                     std::string(policy) +
                     "<meta name=\"viewport\" content=\"width=device-width, "
                     "initial-scale=1\">\n<title>Report of " +
                     escaped(shortened(data.database, longestTitle)) + "</title>\n<style>";
  return html.append(pageStyle).append("</style>\n</head>\n<body>\n");
}

std::string link(std::string_view id, std::string_view text) {
  return "<a href=\"#" + std::string(id) + "\">" + std::string(text) + "</a>\n";
}

std::string header(const ReportData& data, std::time_t now) {
  return "<header>\n<h1>Report of " + escaped(shortened(data.database, longestTitle)) +
         "</h1>\n<p class=\"soft\">Written on " + timeText(now) +
         " by orxkdb " ORX_VERSION "</p>\n<nav>\n" + link("counts", "Counts") +
         link("findings", "Findings") + link("models", "Models") + link("sizes", "Sizes") +
         (data.plan ? link("plan", "Plan") : "") + link("objects", "Objects") +
         "</nav>\n</header>\n<main>\n";
}

}  // namespace

Page pageOf(ReportData& data, std::time_t now) {
  const ObjectSection objects =
      objectSection(data.census.list().take(), data.census.objects(), data.database);
  std::string html = head(data) + header(data, now) + countSection(data) + findingSection(data) +
                     modelSection(data.census.uses()) + sizeSection(data.census);
  if (data.plan) html += planSection(data);
  html.append(objects.html).append("</main>\n<script>").append(pageScript);
  return {html.append("</script>\n</body>\n</html>\n"), objects.shown};
}

}  // namespace orx::orxkdb
