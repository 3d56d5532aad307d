#include "orxkdb/check/check_report.h"

#include <nlohmann/json.hpp>

#include "orxkdb/output/json_document.h"
#include "orxkdb/words/counted.h"
#include "orxkdb/words/printable.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

std::string placeText(const std::string& input, const Place& place) {
  std::string text;
  if (place.line != 0) text = input + ":" + std::to_string(place.line);
  if (place.object) {
    if (!text.empty()) text += " ";
    text += "parent " + exportedForm(place.object->parent) + " object " +
            exportedForm(place.object->object);
  }
  if (place.recn) text += " recn " + std::to_string(*place.recn);
  return text.empty() ? input : text;
}

std::string countsText(const std::string& input, const CheckCounts& counts) {
  std::string text = input + ": " + (counts.isDatabase ? "database" : "backup") + " of " +
                     std::to_string(counts.records) + " records, " +
                     std::to_string(counts.objects) + " objects, " + std::to_string(counts.models) +
                     " models, " + std::to_string(counts.references) + " references\n";
  if (counts.outOfOrder > 0) {
    text += counted(counts.outOfOrder, "line is", "lines are") +
            " out of key order, which a restore does not mind\n";
  }
  return text;
}

std::string indented(std::string_view text) {
  std::string lines = "  ";
  for (const char c : text) lines += c == '\n' ? std::string("\n  ") : std::string(1, c);
  return lines;
}

std::string kindText(const std::string& input, const FindingKindText& kind,
                     const Findings& findings) {
  const std::vector<Finding>& kept = findings.kept(kind.kind);
  std::string text = "\n" + std::string(kind.name) + "\n" + indented(kind.meaningLines) + "\n";
  for (const Finding& finding : kept) {
    text += "  - " + placeText(input, finding.place) + ": " + printable(finding.text) + "\n";
  }
  const std::uint64_t more = findings.count(kind.kind) - kept.size();
  if (more > 0) {
    text += "  - and " + std::to_string(more) + " more, which \"--limit 0\" shows\n";
  }
  return text;
}

nlohmann::ordered_json findingJson(const Finding& finding) {
  nlohmann::ordered_json json = nlohmann::ordered_json::object();
  if (finding.place.line != 0) json["line"] = finding.place.line;
  if (finding.place.object) {
    json["parentHandle"] = exportedForm(finding.place.object->parent);
    json["objectHandle"] = exportedForm(finding.place.object->object);
  }
  if (finding.place.recn) json["recn"] = *finding.place.recn;
  json["text"] = finding.text;
  return json;
}

nlohmann::ordered_json kindJson(const FindingKindText& kind, const Findings& findings) {
  nlohmann::ordered_json shown = nlohmann::ordered_json::array();
  for (const Finding& finding : findings.kept(kind.kind)) shown.push_back(findingJson(finding));
  return {{"kind", kind.name},
          {"meaning", kind.meaning()},
          {"count", findings.count(kind.kind)},
          {"shown", shown}};
}

}  // namespace

std::string reportText(const std::string& input, const CheckCounts& counts,
                       const Findings& findings) {
  const std::string shown = onOneLine(input);
  std::string text = countsText(shown, counts);
  std::string summary;
  for (const FindingKindText& kind : findingKinds) {
    if (findings.count(kind.kind) == 0) continue;
    text += kindText(shown, kind, findings);
    summary +=
        "  " + std::string(kind.name) + ": " + std::to_string(findings.count(kind.kind)) + "\n";
  }
  return summary.empty() ? text + "no findings\n" : text + "\nfindings by kind\n" + summary;
}

std::string reportJson(const std::string& input, const CheckCounts& counts,
                       const Findings& findings) {
  nlohmann::ordered_json kinds = nlohmann::ordered_json::array();
  for (const FindingKindText& kind : findingKinds) {
    if (findings.count(kind.kind) > 0) kinds.push_back(kindJson(kind, findings));
  }
  const nlohmann::ordered_json members{
      {"input", input},
      {"form", counts.isDatabase ? "database" : "backup"},
      {"records", counts.records},
      {"objects", counts.objects},
      {"models", counts.models},
      {"references", counts.references},
      {"linesOutOfOrder", counts.outOfOrder},
      {"findings", findings.total()},
      {"kinds", kinds},
  };
  return jsonText(jsonDocument("check", members));
}

}  // namespace orx::orxkdb
