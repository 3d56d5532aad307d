#include <algorithm>
#include <nlohmann/json.hpp>

#include "orxkdb/output/json_document.h"
#include "orxkdb/plan/plan_report.h"
#include "orxkdb/plan/plan_words.h"

namespace orx::orxkdb {

namespace {

using Json = nlohmann::ordered_json;

// "count", and as many entries as are to be shown under "shown".
template <typename Entries, typename Describe>
Json listOf(const Entries& entries, std::size_t count, std::size_t limit, Describe describe) {
  Json shown = Json::array();
  for (const auto& entry : entries) {
    if (limit != 0 && shown.size() == limit) break;
    shown.push_back(describe(entry));
  }
  return {{"count", count}, {"shown", std::move(shown)}};
}

Json refusedJson(const MergePlan& plan, std::size_t limit) {
  return listOf(plan.refused, plan.totals().refused, limit, [&](const RefusedRecord& record) {
    return Json{{"parentHandle", exportedForm(record.key.parent)},
                {"objectHandle", exportedForm(record.key.object)},
                {"recn", record.key.recn},
                {"inBackup", nameInBackup(plan, record.key.object)},
                {"why", wordsOf(record.why)}};
  });
}

Json backupJson(const MergePlan& plan) {
  Json leftOut = Json::array();
  for (const auto& [type, count] : plan.leftOut) {
    leftOut.push_back({{"recType", type}, {"records", count}});
  }
  return {{"records", plan.backupRecords},
          {"systemRecord", plan.alienSystemRecords},
          {"notMerged", std::move(leftOut)}};
}

Json typesJson(const MergePlan& plan) {
  Json types = Json::array();
  for (const auto& [type, count] : plan.types) {
    types.push_back({{"recType", type},
                     {"objects", count.objects},
                     {"records", count.records},
                     {"refused", count.refused}});
  }
  return types;
}

Json identifiersJson(const MergePlan& plan, std::size_t limit) {
  Json types = Json::array();
  for (const TypeIdentifiers& type : plan.identifiers) {
    types.push_back(
        {{"type", type.type},
         {"renumbered", type.isRenumbered},
         {"count", type.count},
         {"ranges", listOf(type.ranges, type.ranges.size(), limit, [&](const auto& range) {
            return Json{{"first", range.first},
                        {"last", range.last},
                        {"newFirst", range.first + type.shift},
                        {"newLast", range.last + type.shift}};
          })}});
  }
  return types;
}

Json countersJson(const MergePlan& plan) {
  Json counters = Json::array();
  for (std::size_t i = 0; i < handlerTypes.size(); ++i) {
    const CounterChange& change = plan.counters[i];
    counters.push_back({{"type", handlerTypes[i]},
                        {"before", change.before ? Json(*change.before) : Json()},
                        {"after", change.after}});
  }
  return counters;
}

Json parameterJson(const ParameterPlan& parameter) {
  Json json{{"name", parameter.name}};
  if (parameter.ofDatabase) json["database"] = *parameter.ofDatabase;
  if (parameter.ofBackup) json["backup"] = *parameter.ofBackup;
  return json;
}

Json parametersOf(const MergePlan& plan, ParameterFate fate, std::size_t limit) {
  std::vector<ParameterPlan> parameters;
  std::ranges::copy_if(plan.parameters, std::back_inserter(parameters),
                       [fate](const ParameterPlan& p) { return fateOf(p) == fate; });
  return listOf(parameters, parameters.size(), limit, parameterJson);
}

// Where both have a parameter, the database's value stays.
Json parametersJson(const MergePlan& plan, std::size_t limit) {
  return {{"merged", plan.mergesParameters},
          {"differing", parametersOf(plan, ParameterFate::differs, limit)},
          {"added", parametersOf(plan, ParameterFate::added, limit)},
          {"kept", parametersOf(plan, ParameterFate::kept, limit)},
          {"equal", parametersOf(plan, ParameterFate::equal, limit)}};
}

Json sizeJson(const SystemRecordSize& size) {
  return {{"records", size.records}, {"textBytes", size.textBytes}};
}

}  // namespace

std::string planJson(const PlanNames& names, const MergePlan& plan, std::size_t limit) {
  const TypeTotals totals = plan.totals();
  const Json members{
      {"database", names.database},
      {"backup", names.backup},
      {"succeeds", plan.succeeds()},
      {"exitCode", plan.exitCode()},
      {"recordsAdded", plan.addedRecords()},
      {"refused", refusedJson(plan, limit)},
      {"warnings", warningsOf(plan)},
      {"objects", totals.objects},
      {"records", totals.records},
      {"types", typesJson(plan)},
      {"parameters", parametersJson(plan, limit)},
      {"counters", countersJson(plan)},
      {"identifiers", identifiersJson(plan, limit)},
      {"systemRecord",
       {{"before", sizeJson(plan.systemBefore)},
        {"after", sizeJson(plan.systemAfter)},
        {"strays", sizeJson(plan.strays)},
        {"straysAdded", plan.addedStrays},
        {"replaced", plan.replaced}}},
      {"read", {{"database", {{"records", plan.databaseRecords}}}, {"backup", backupJson(plan)}}},
  };
  return jsonText(jsonDocument("plan", members));
}

}  // namespace orx::orxkdb
