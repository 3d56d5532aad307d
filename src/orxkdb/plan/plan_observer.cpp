#include "orxkdb/plan/plan_observer.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "model/sym_parm_set.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

namespace {

bool readsBack(const CMSymParm& parameter, const CMSymParmSet& readBack) {
  const CMSymParm* const found = readBack.findSymbolName1(parameter.name());
  return found != nullptr && found->value() == parameter.value();
}

std::vector<std::string> namesMissing(const CMSymParmSet& written, const CMSymParmSet& readBack) {
  std::vector<std::string> names;
  written.forEach([&](const CMSymParm& parameter) {
    if (!readsBack(parameter, readBack)) names.emplace_back(parameter.name());
  });
  return names;
}

}  // namespace

void PlanObserver::currentRecord(const DataBuffer& record, bool isOfSystemRecord) {
  ++plan_.databaseRecords;
  if (!isOfSystemRecord) {
    if (record.hasNullHandles()) others_.push_back(record.recn());
    return;
  }
  SystemRecordSize& size = record.hasNullHandles() ? plan_.systemBefore : plan_.strays;
  ++size.records;
  size.textBytes += record.text().size();
}

std::uint64_t PlanObserver::othersBelow(std::size_t length) const {
  const auto isBelow = [length](std::uint32_t recn) { return recn < length; };
  return static_cast<std::uint64_t>(std::ranges::count_if(others_, isBelow));
}

void PlanObserver::currentParameters(const CMSymParmSet& parameters, const CMAttribute*) {
  parameters.forEach([this](const CMSymParm& parameter) {
    plan_.parameters.push_back(
        {.name = parameter.name(), .ofDatabase = std::string(parameter.value())});
  });
}

void PlanObserver::alienParameters(const CMSymParmSet& parameters, const CMAttribute*) {
  plan_.hasAlienSystemRecord = true;
  std::unordered_map<std::string, std::size_t> places;
  for (std::size_t i = 0; i < plan_.parameters.size(); ++i) places[plan_.parameters[i].name] = i;
  parameters.forEach([&](const CMSymParm& parameter) {
    const auto found = places.find(parameter.name());
    if (found != places.end()) {
      plan_.parameters[found->second].ofBackup = parameter.value();
    } else {
      plan_.parameters.push_back(
          {.name = parameter.name(), .ofBackup = std::string(parameter.value())});
    }
  });
}

// "," and "=" are written without being doubled, so texts that hold them come back as others.
void PlanObserver::mergedParameters(const CMSymParmSet& parameters, const CMAttribute& attribute) {
  plan_.mergesParameters = true;
  CMSymParmSet readBack;
  readBack = attribute;
  plan_.changedParameters = namesMissing(parameters, readBack);
}

void PlanObserver::currentCounter(std::size_t handler, std::uint32_t counter) {
  plan_.counters[handler].before = counter;
}

void PlanObserver::finalCounters(const MergeTables& tables) {
  tables_ = tables;
  for (std::size_t i = 0; i < handlerTypes.size(); ++i) {
    plan_.counters[i].after = tables.nextId[handlerTypes[i]];
  }
}

void PlanObserver::backupRecord(const BackupLine&, const DataBuffer&) {
  ++plan_.backupRecords;
}

void PlanObserver::skippedRecord(const BackupLine&, std::int32_t recType) {
  ++plan_.backupRecords;
  ++plan_.leftOut[recType];
}

}  // namespace orx::orxkdb
