#include <algorithm>

#include "orxkdb/plan/plan_words.h"
#include "orxkdb/report/html_table.h"
#include "orxkdb/report/html_text.h"
#include "orxkdb/report/identifier_picture.h"
#include "orxkdb/report/sections.h"

namespace orx::orxkdb {

namespace {

using enum HtmlTable::Align;

// Parameters and warnings may be as long as a system record.
constexpr std::size_t longestText = 400;

std::string moreWords(std::uint64_t all, std::uint64_t shown) {
  if (all == shown) return "";
  return paragraph("And " + grouped(all - shown) + " more, which \"--limit 0\" shows.");
}

// "1-5", moved by `shift`.
std::string rangeWords(const IdentifierRange& range, std::uint32_t shift) {
  const std::string first = std::to_string(range.first + shift);
  return range.first == range.last ? first : first + "-" + std::to_string(range.last + shift);
}

class PlanPart {
 public:
  PlanPart(const MergePlan& plan, std::size_t limit) : plan_(plan), limit_(limit) {}

  [[nodiscard]] std::string all(const std::string& backup, const std::string& database) const {
    return verdict(backup, database) + warnings() + refused() + types() + identifierPicture(plan_) +
           identifiers() + counters() + parameters();
  }

 private:
  [[nodiscard]] std::size_t shownOf(std::size_t count) const {
    return limit_ == 0 ? count : std::min(limit_, count);
  }

  [[nodiscard]] std::string verdict(const std::string& backup, const std::string& database) const {
    const TypeTotals totals = plan_.totals();
    const std::string merge = "The merge of " + escaped(shortened(backup, longestText)) + " into " +
                              escaped(shortened(database, longestText));
    if (plan_.succeeds()) {
      return "<p>" + merge + " would <span class=\"good\">succeed</span>: " +
             groupedCount(totals.records, "record") + " of " +
             groupedCount(totals.objects, "object") + " to add.</p>\n";
    }
    return "<p>" + merge + " would <span class=\"bad\">fail</span> with exit code " +
           std::to_string(plan_.exitCode()) + ": " + grouped(totals.refused) + " of " +
           groupedCount(totals.records, "record") +
           " cannot be added, their keys are taken. The others would be added all the same.</p>\n";
  }

  [[nodiscard]] std::string warnings() const {
    const std::vector<std::string> sentences = warningsOf(plan_);
    if (sentences.empty()) return "";
    std::string html = "<h3>Mind</h3>\n<ul>\n";
    for (const std::string& sentence : sentences) {
      html += "<li>" + escaped(shortened(sentence, longestText)) + "</li>\n";
    }
    return html + "</ul>\n";
  }

  [[nodiscard]] std::string refused() const {
    if (plan_.succeeds()) return "";
    HtmlTable table("Keys that are taken",
                    {{"object"}, {"parent"}, {"record", number}, {"in the backup"}, {"taken"}});
    for (const RefusedRecord& record : plan_.refused) {
      table.row({shortName(record.key.object), shortName(record.key.parent),
                 std::to_string(record.key.recn), nameInBackup(plan_, record.key.object),
                 wordsOf(record.why)});
    }
    return table.take() + moreWords(plan_.totals().refused, plan_.refused.size());
  }

  [[nodiscard]] std::string types() const {
    if (plan_.types.empty()) return "";
    HtmlTable table("To add, by record type",
                    {{"record type"}, {"objects", number}, {"records", number}, {"taken", number}});
    for (const auto& [type, count] : plan_.types) {
      table.row(
          {typeName(type), grouped(count.objects), grouped(count.records), grouped(count.refused)});
    }
    return table.take();
  }

  // A row for each range: it moves as a whole.
  [[nodiscard]] std::string identifiers() const {
    if (plan_.identifiers.empty()) return "";
    HtmlTable table("Identifiers by handle type", {{"handle type"},
                                                   {"identifiers of the type", number},
                                                   {"in the backup", number},
                                                   {"in the database", number}});
    for (const TypeIdentifiers& type : plan_.identifiers) addRanges(type, table);
    return table.take();
  }

  void addRanges(const TypeIdentifiers& type, HtmlTable& table) const {
    const std::size_t shown = shownOf(type.ranges.size());
    for (std::size_t i = 0; i < shown; ++i) {
      table.row({typeName(type.type), grouped(type.count), rangeWords(type.ranges[i], 0),
                 type.isRenumbered ? rangeWords(type.ranges[i], type.shift) : "kept"});
    }
    if (shown == type.ranges.size()) return;
    table.row({typeName(type.type), "", groupedCount(type.ranges.size() - shown, "more range"),
               "\"--limit 0\" shows them"});
  }

  [[nodiscard]] std::string counters() const {
    HtmlTable table("Counters that change",
                    {{"handle type"}, {"before", number}, {"after", number}});
    std::size_t changed = 0;
    for (std::size_t i = 0; i < handlerTypes.size(); ++i) {
      const auto& [before, after] = plan_.counters[i];
      if (before == after) continue;
      ++changed;
      table.row({typeName(handlerTypes[i]), before ? std::to_string(*before) : "none",
                 std::to_string(after)});
    }
    return changed == 0 ? paragraph("No counter changes.") : table.take();
  }

  [[nodiscard]] std::string parameters() const {
    if (plan_.parameters.empty()) return "";
    HtmlTable table("Parameters", {{"name"}, {"in the database"}, {"in the backup"}, {"outcome"}});
    const std::size_t shown = shownOf(plan_.parameters.size());
    for (std::size_t i = 0; i < shown; ++i) {
      const ParameterPlan& parameter = plan_.parameters[i];
      table.row({shortened(parameter.name, longestText),
                 shortened(parameter.ofDatabase.value_or(""), longestText),
                 shortened(parameter.ofBackup.value_or(""), longestText), outcomeOf(parameter)});
    }
    return table.take() + moreWords(plan_.parameters.size(), shown);
  }

  [[nodiscard]] std::string_view outcomeOf(const ParameterPlan& parameter) const {
    switch (fateOf(parameter)) {
      case ParameterFate::differs:
        return "the database's value stays";
      case ParameterFate::added:
        return plan_.mergesParameters ? "added" : "not added";
      case ParameterFate::kept:
        return "kept";
      case ParameterFate::equal:
        return "equal in both";
    }
    return "";
  }

  const MergePlan& plan_;
  std::size_t limit_;
};

}  // namespace

std::string planSection(const ReportData& data) {
  return section("plan", "Plan of a merge",
                 PlanPart(*data.plan, data.limit).all(*data.backup, data.database));
}

}  // namespace orx::orxkdb
