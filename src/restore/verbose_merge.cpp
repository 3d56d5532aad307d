#include "restore/verbose_merge.h"

#include <cstdio>
#include <string>
#include <string_view>

#include "model/attribute.h"
#include "model/config_handle.h"
#include "model/sym_parm_set.h"
#include "records/backup_reader.h"
#include "records/data_buffer.h"
#include "restore/merge_types.h"
#include "restore/verbose_object.h"

namespace orx {

namespace {

void printRule() {
  constexpr std::size_t ruleWidth = 71;
  (void)std::printf("%s\n", std::string(ruleWidth, '=').c_str());
}

void printParameters(const char* where, const CMSymParmSet& parameters,
                     const CMAttribute* attribute) {
  const std::string text = attribute == nullptr ? std::string() : attribute->text();
  (void)std::printf("%s contains %d system parms:\n%s\n", where,
                    static_cast<int>(parameters.entries()), text.c_str());
}

std::int32_t asSigned(std::uint32_t value) {
  return static_cast<std::int32_t>(value);
}

}  // namespace

void VerboseMerge::currentParameters(const CMSymParmSet& parameters, const CMAttribute* attribute) {
  printParameters("Current database", parameters, attribute);
}

void VerboseMerge::alienParameters(const CMSymParmSet& parameters, const CMAttribute* attribute) {
  printParameters("Alien database", parameters, attribute);
}

void VerboseMerge::mergedParameters(const CMSymParmSet& parameters, const CMAttribute& attribute) {
  printParameters("After merge, database", parameters, &attribute);
}

void VerboseMerge::currentCounter(std::size_t handler, std::uint32_t counter) {
  (void)std::printf("Current handler No.%02d -------- %d\n", static_cast<int>(handler),
                    asSigned(counter));
}

void VerboseMerge::tablesReady(const MergeTables& tables) {
  for (std::size_t i = 0; i < handlerTypes.size(); ++i) {
    const int type = handlerTypes[i];
    (void)std::printf("merge matrics:   %02d        %02d        %02d\n", static_cast<int>(i), type,
                      tables.mergeTypes[handlerTypes[i]]);
  }
}

void VerboseMerge::finalCounters(const MergeTables& tables) {
  for (std::size_t i = 0; i < handlerTypes.size(); ++i) {
    (void)std::printf("Final handler No.%02d -------- %d\n", static_cast<int>(i),
                      asSigned(tables.nextId[handlerTypes[i]]));
  }
}

void VerboseMerge::backupRecord(const BackupLine& line, const DataBuffer& record) {
  const std::string_view text = record.text();
  printRule();
  (void)std::printf("%s\n", line.text().data());
  (void)std::printf("%s\n%s\n%d\n%d\n%s\n%d\n%.*s\n%d\n",
                    record.parentHandle().exportText().c_str(),
                    record.objectHandle().exportText().c_str(), asSigned(record.recn()),
                    record.recType(), record.modelHandle().exportText().c_str(), record.auxValue1(),
                    static_cast<int>(text.size()), text.data(), record.auxValue2());
  printRule();
}

void VerboseMerge::searchedAttribute(int attrId) {
  (void)std::printf("search attr %d\n", attrId);
}

void VerboseMerge::foundAttribute(int attrId) {
  (void)std::printf("found attr %d\n", attrId);
}

void VerboseMerge::renumberedValue(const CMConfigHandle& old, const CMConfigHandle& moved) {
  (void)std::printf("old handler=%d, new handler=%d\n", static_cast<std::int32_t>(old),
                    static_cast<std::int32_t>(moved));
}

void VerboseMerge::mergedObject(const DataBuffer& head, const std::string& text) {
  printObject(head, text);
}

void VerboseMerge::remainingRecords(std::size_t list, std::size_t records) {
  (void)std::printf("after add records to database, the remain records in list %02d are: %d\n",
                    static_cast<int>(list), static_cast<int>(records));
}

}  // namespace orx
