#include "orxkdb/plan/plan_words.h"

#include <algorithm>

#include "orxkdb/words/counted.h"

namespace orx::orxkdb {

namespace {

bool passesHighest(const TypeIdentifiers& type) {
  return std::ranges::any_of(type.ranges, [&](const IdentifierRange& range) {
    return range.first + type.shift < range.first;
  });
}

std::string keptWarning(const TypeIdentifiers& type) {
  const bool wantsCounter = type.type < mergedTypes.size() && mergedTypes[type.type] != 0;
  return "objects of type " + std::to_string(type.type) + " keep their identifiers: " +
         (wantsCounter ? "the database has no counter for them"
                       : "a merge does not renumber this type");
}

void addIdentifierWarnings(const MergePlan& plan, std::vector<std::string>& warnings) {
  for (const TypeIdentifiers& type : plan.identifiers) {
    if (!type.isRenumbered) warnings.push_back(keptWarning(type));
    if (passesHighest(type)) {
      warnings.push_back("identifiers of type " + std::to_string(type.type) +
                         " pass 4294967295 and go on at 0");
    }
  }
}

std::string changedWarning(const std::vector<std::string>& names) {
  std::string text =
      "parameters do not read back as they are, because their \",\" and \"=\" are written once:";
  for (const std::string& name : names) text.append(text.ends_with(':') ? " " : ", ").append(name);
  return text;
}

void addParameterWarnings(const MergePlan& plan, std::vector<std::string>& warnings) {
  const bool hasNew = std::ranges::any_of(
      plan.parameters, [](const auto& p) { return fateOf(p) == ParameterFate::added; });
  if (hasNew && !plan.mergesParameters) {
    warnings.emplace_back(
        "no parameters are added: the database has no attribute 1 to hold parameters");
  }
  if (!plan.changedParameters.empty()) warnings.push_back(changedWarning(plan.changedParameters));
}

std::string strayWarning(const MergePlan& plan) {
  const SystemRecordSize& strays = plan.strays;
  const std::string count = std::to_string(strays.records);
  if (plan.systemBefore.records != 0) {
    return "records of the database that have a parent, but are read as part of the system "
           "record: " +
           count + ", with " + counted(strays.textBytes, "byte") +
           " of text, which each merge writes there once more";
  }
  return "records of the database that have a parent, but are read as the system record: " + count +
         "; the merge writes a new one beside them, of " +
         counted(plan.systemAfter.records, "record");
}

void addStrayWarnings(const MergePlan& plan, std::vector<std::string>& warnings) {
  if (plan.strays.records != 0) warnings.push_back(strayWarning(plan));
  if (plan.addedStrays != 0) {
    warnings.push_back(
        "objects to add that have a parent, but that the next merge reads as part of the system "
        "record: " +
        std::to_string(plan.addedStrays));
  }
}

void addReplacedWarning(const MergePlan& plan, std::vector<std::string>& warnings) {
  if (plan.replaced == 0) return;
  warnings.push_back(
      "records of the database that are lost, because the system record is written in their place "
      "(null handles, but an auxValue2 other than 0): " +
      std::to_string(plan.replaced));
}

}  // namespace

ParameterFate fateOf(const ParameterPlan& parameter) {
  if (!parameter.ofBackup) return ParameterFate::kept;
  if (!parameter.ofDatabase) return ParameterFate::added;
  return parameter.ofDatabase == parameter.ofBackup ? ParameterFate::equal : ParameterFate::differs;
}

std::string_view wordsOf(KeyTaken why) {
  return why == KeyTaken::inDatabase ? "in the database" : "twice in the backup";
}

std::vector<std::string> warningsOf(const MergePlan& plan) {
  std::vector<std::string> warnings;
  if (plan.backupRecords == 0) {
    warnings.emplace_back("the backup holds no records");
  } else if (!plan.hasAlienSystemRecord) {
    warnings.emplace_back("the backup has no system record, so no parameters come from it");
  }
  addIdentifierWarnings(plan, warnings);
  addParameterWarnings(plan, warnings);
  addStrayWarnings(plan, warnings);
  addReplacedWarning(plan, warnings);
  return warnings;
}

std::string nameInBackup(const MergePlan& plan, HandleNumber object) {
  const std::uint8_t type = typeOf(object);
  const auto found = std::ranges::find(plan.identifiers, type, &TypeIdentifiers::type);
  const std::uint32_t shift = found == plan.identifiers.end() ? 0 : found->shift;
  return std::to_string(type) + ":" + std::to_string(identifierOf(object) - shift);
}

}  // namespace orx::orxkdb
