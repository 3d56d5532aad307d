#include "orxkdb/report/html_text.h"
#include "orxkdb/report/sections.h"

namespace orx::orxkdb {

namespace {

std::string placeText(const Place& place) {
  std::string text;
  if (place.object) text = "object " + shortName(place.object->object);
  if (place.object && place.object->parent != nullHandle) {
    text += " below " + shortName(place.object->parent);
  }
  if (place.recn) text += " record " + std::to_string(*place.recn);
  return text.empty() ? "the database" : text;
}

std::string kindText(const FindingKindText& kind, const Findings& findings) {
  const std::vector<Finding>& kept = findings.kept(kind.kind);
  const std::uint64_t count = findings.count(kind.kind);
  std::string html = "<h3><code>" + escaped(kind.name) + "</code> (" + grouped(count) + ")</h3>\n" +
                     "<p class=\"soft\">" + escaped(kind.meaning()) + "</p>\n<ul>\n";
  for (const Finding& finding : kept) {
    html += "<li>" + escaped(placeText(finding.place)) + ": " + escaped(finding.text) + "</li>\n";
  }
  if (count > kept.size()) {
    html += "<li>and " + grouped(count - kept.size()) + " more, which \"--limit 0\" shows</li>\n";
  }
  return html + "</ul>\n";
}

std::string summary(const Findings& findings) {
  std::vector<Bar> bars;
  for (const FindingKindText& kind : findingKinds) {
    if (findings.count(kind.kind) > 0) {
      bars.push_back({std::string(kind.name), findings.count(kind.kind)});
    }
  }
  return barChart("Findings by kind", bars);
}

}  // namespace

std::string findingSection(const ReportData& data) {
  const std::uint64_t total = data.findings.total();
  if (total == 0) {
    return section("findings", "Findings", "<p class=\"good\">No findings.</p>\n");
  }
  std::string html =
      "<p class=\"bad\">" + groupedCount(total, "finding") +
      ".</p>\n<p>Text that stands in quotation marks is that of the database.</p>\n" +
      summary(data.findings);
  for (const FindingKindText& kind : findingKinds) {
    if (data.findings.count(kind.kind) > 0) html += kindText(kind, data.findings);
  }
  return section("findings", "Findings", html);
}

}  // namespace orx::orxkdb
