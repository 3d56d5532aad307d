#include <algorithm>
#include <vector>

#include "orxkdb/plan/plan_report.h"
#include "orxkdb/plan/plan_words.h"
#include "orxkdb/words/counted.h"
#include "orxkdb/words/printable.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

using Cells = std::vector<std::string>;

constexpr std::size_t nameWidth = 24;
constexpr std::size_t cellWidth = 12;

// The cells stand below each other, flush right.
std::string row(std::string name, const Cells& cells) {
  name.resize(std::max(name.size(), nameWidth), ' ');
  for (const std::string& cell : cells) {
    name.append(cell.size() < cellWidth ? cellWidth - cell.size() : 1, ' ').append(cell);
  }
  return name + "\n";
}

std::string heading(std::string_view name, const Cells& cells = {}) {
  return cells.empty() ? "\n" + std::string(name) + "\n" : "\n" + row(std::string(name), cells);
}

std::string typeName(std::int32_t type) {
  return "  type " + std::to_string(type);
}

std::string moreLine(std::size_t all, std::size_t shown, std::string_view indent) {
  if (shown == all) return "";
  return std::string(indent) + "and " + std::to_string(all - shown) +
         " more, which \"--limit 0\" shows\n";
}

class Text {
 public:
  Text(const PlanNames& names, const MergePlan& plan, std::size_t limit)
      : names_(names), plan_(plan), totals_(plan.totals()), limit_(limit) {}

  [[nodiscard]] std::string all() const {
    return verdict() + refused() + warnings() + added() + parameters() + counters() +
           identifiers() + systemRecord() + read();
  }

 private:
  [[nodiscard]] std::size_t shownOf(std::size_t count) const {
    return limit_ == 0 ? count : std::min(limit_, count);
  }

  [[nodiscard]] std::string verdict() const {
    const std::string merge =
        "The merge of " + onOneLine(names_.backup) + " into " + onOneLine(names_.database);
    if (plan_.succeeds()) {
      return merge + " would succeed: " + counted(totals_.records, "record") + " of " +
             counted(totals_.objects, "object") + " to add.\n";
    }
    return merge + " would FAIL with exit code " + std::to_string(plan_.exitCode()) + ":\n" +
           std::to_string(totals_.refused) + " of " + counted(totals_.records, "record") +
           " cannot be added, their keys are taken. The others would be added all the same.\n";
  }

  [[nodiscard]] std::string refused() const {
    if (plan_.succeeds()) return "";
    std::string text = heading("Keys that are taken");
    for (const RefusedRecord& record : plan_.refused) text += refusedLine(record);
    return text + moreLine(totals_.refused, plan_.refused.size(), "  ");
  }

  [[nodiscard]] std::string refusedLine(const RefusedRecord& record) const {
    return "  " + std::string(wordsOf(record.why)) + ": parent " + exportedForm(record.key.parent) +
           " object " + exportedForm(record.key.object) + " recn " +
           std::to_string(record.key.recn) + ", object " + nameInBackup(plan_, record.key.object) +
           " of the backup\n";
  }

  [[nodiscard]] std::string warnings() const {
    const std::vector<std::string> sentences = warningsOf(plan_);
    std::string text = sentences.empty() ? "" : heading("Mind");
    for (const std::string& sentence : sentences) text += "  " + printable(sentence) + "\n";
    return text;
  }

  [[nodiscard]] std::string added() const {
    if (plan_.types.empty()) return "";
    std::string text = heading("To add, by record type", addedCells("objects", "records", "taken"));
    for (const auto& [type, count] : plan_.types) text += row(typeName(type), totalCells(count));
    return text + row("  all", totalCells(totals_));
  }

  [[nodiscard]] Cells totalCells(const TypeTotals& count) const {
    return addedCells(std::to_string(count.objects), std::to_string(count.records),
                      std::to_string(count.refused));
  }

  [[nodiscard]] Cells addedCells(std::string objects, std::string records,
                                 std::string refused) const {
    Cells cells{std::move(objects), std::move(records)};
    if (!plan_.succeeds()) cells.push_back(std::move(refused));
    return cells;
  }

  [[nodiscard]] std::string parameters() const {
    if (plan_.parameters.empty()) return "";
    return heading("Parameters") +
           parametersOf(ParameterFate::differs, "  differ; the database's value stays") +
           parametersOf(ParameterFate::added,
                        plan_.mergesParameters ? "  added" : "  only in the backup, not added") +
           parametersOf(ParameterFate::kept, "  kept, only in the database") +
           parametersOf(ParameterFate::equal, "  equal in both");
  }

  [[nodiscard]] std::string parametersOf(ParameterFate fate, std::string_view title) const {
    std::string lines;
    std::size_t count = 0;
    for (const ParameterPlan& parameter : plan_.parameters) {
      if (fateOf(parameter) != fate) continue;
      ++count;
      if (shownOf(count) == count) lines += "    " + parameterWords(parameter) + "\n";
    }
    if (count == 0) return "";
    return std::string(title) + ": " + std::to_string(count) + "\n" + lines +
           moreLine(count, shownOf(count), "    ");
  }

  [[nodiscard]] static std::string parameterWords(const ParameterPlan& parameter) {
    const auto quoted = [](const std::string& value) { return "\"" + printable(value) + "\""; };
    const std::string name = printable(parameter.name);
    if (fateOf(parameter) != ParameterFate::differs) {
      return name + " = " +
             quoted(parameter.ofDatabase ? *parameter.ofDatabase : *parameter.ofBackup);
    }
    return name + " = " + quoted(*parameter.ofDatabase) + ", in the backup " +
           quoted(*parameter.ofBackup);
  }

  [[nodiscard]] std::string counters() const {
    std::string text = heading("Counters", {"before", "after"});
    std::size_t unchanged = 0;
    for (std::size_t i = 0; i < handlerTypes.size(); ++i) {
      const auto& [before, after] = plan_.counters[i];
      if (before == after) {
        ++unchanged;
      } else {
        text += row(typeName(handlerTypes[i]),
                    {before ? std::to_string(*before) : "none", std::to_string(after)});
      }
    }
    return text + "  " + std::to_string(unchanged) + " unchanged\n";
  }

  [[nodiscard]] std::string identifiers() const {
    if (plan_.identifiers.empty()) return "";
    std::string text = heading("Identifiers", {"count"});
    text.insert(text.size() - 1, "  in the backup -> in the database");
    for (const TypeIdentifiers& type : plan_.identifiers) text += rangesOf(type);
    return text;
  }

  [[nodiscard]] std::string rangesOf(const TypeIdentifiers& type) const {
    std::string text;
    const std::size_t shown = shownOf(type.ranges.size());
    for (std::size_t i = 0; i < shown; ++i) {
      std::string line =
          i == 0 ? row(typeName(type.type), {std::to_string(type.count)}) : row("", {""});
      line.insert(line.size() - 1, "  " + rangeWords(type.ranges[i], type));
      text += line;
    }
    return text + moreLine(type.ranges.size(), shown, std::string(nameWidth + cellWidth + 2, ' '));
  }

  [[nodiscard]] static std::string rangeWords(const IdentifierRange& range,
                                              const TypeIdentifiers& type) {
    const auto words = [&](std::uint32_t by) {
      const std::string first = std::to_string(range.first + by);
      return range.first == range.last ? first : first + "-" + std::to_string(range.last + by);
    };
    return words(0) + (type.isRenumbered ? " -> " + words(type.shift) : " kept");
  }

  [[nodiscard]] std::string systemRecord() const {
    const SystemRecordSize& before = plan_.systemBefore;
    const SystemRecordSize& after = plan_.systemAfter;
    return heading("System record", {"before", "after"}) +
           row("  records", {std::to_string(before.records), std::to_string(after.records)}) +
           row("  bytes of text",
               {std::to_string(before.textBytes), std::to_string(after.textBytes)});
  }

  [[nodiscard]] std::string read() const {
    std::string text = heading("Read", {"records"}) +
                       row("  database", {std::to_string(plan_.databaseRecords)}) +
                       row("  backup", {std::to_string(plan_.backupRecords)});
    for (const auto& [type, count] : plan_.leftOut) {
      text += row("    type " + std::to_string(type) + ", not merged", {std::to_string(count)});
    }
    if (plan_.alienSystemRecords == 0) return text;
    return text + row("    its system record", {std::to_string(plan_.alienSystemRecords)});
  }

  const PlanNames& names_;
  const MergePlan& plan_;
  TypeTotals totals_;
  std::size_t limit_;
};

}  // namespace

std::string planText(const PlanNames& names, const MergePlan& plan, std::size_t limit) {
  return Text(names, plan, limit).all();
}

}  // namespace orx::orxkdb
