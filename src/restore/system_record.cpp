#include "restore/system_record.h"

#include <cstddef>
#include <cstdint>

#include "messages/trace_unit.h"
#include "model/attribute_iterator.h"
#include "restore/known_attributes.h"
#include "restore/merge_types.h"
#include "restore/sym_parm_attribute.h"

namespace orx {

bool SystemRecord::takeRecord(const DataBuffer& record) {
  ORX_TRACE("SystemRecord::takeRecord");
  if (!holds(record)) return trace.exit(false);
  text_ += record.text();
  return trace.exit(true);
}

bool SystemRecord::readText() {
  ORX_TRACE("SystemRecord::readText");
  attributes_ = text_.c_str();  // keeps two attributes of one key
  if (const CMAttribute* attribute = parameterAttribute()) parameters_ = *attribute;
  return trace.exit(counters() != nullptr);
}

void SystemRecord::readTables(MergeTables& tables, MergeObserver& observer) {
  ORX_TRACE("SystemRecord::readTables");
  observer.currentParameters(parameters_, parameterAttribute());
  CMAttributeIterator value(*counters());
  for (std::size_t i = 0; i < handlerTypes.size() && !value.done(); ++i, (void)value.next()) {
    int isNumeric = 0;
    const auto counter = static_cast<std::uint32_t>(value.getValueInt(&isNumeric));
    if (isNumeric == 0) continue;
    tables.idBase[handlerTypes[i]] = counter;
    tables.nextId[handlerTypes[i]] = counter;
    observer.currentCounter(i, counter);
  }
  observer.tablesReady(tables);
}

void SystemRecord::mergeParameters(const std::string* alienText, MergeObserver& observer) {
  ORX_TRACE("SystemRecord::mergeParameters");
  CMSymParmSet alien;
  if (alienText != nullptr) {
    CMAttributeSet attributes(alienText->c_str(), 1);
    const CMAttribute* attribute =
        attributes.findAttrKey(CMAttributeKey(known_attribute::systemParameters));
    if (attribute != nullptr) alien = *attribute;
    observer.alienParameters(alien, attribute);
  }
  CMAttribute* own = parameterAttribute();
  if (own == nullptr) return;
  parameters_.merge(alien);
  *own = makeSymParmAttribute(parameters_);
  observer.mergedParameters(parameters_, *own);
}

void SystemRecord::writeCounters(const MergeTables& tables, MergeObserver& observer) {
  ORX_TRACE("SystemRecord::writeCounters");
  observer.finalCounters(tables);
  CMAttribute* attribute = counters();
  attribute->clearValues();
  for (const std::size_t type : handlerTypes) attribute->setValue(long{tables.nextId[type]});
}

CMAttribute* SystemRecord::counters() {
  return attributes_.findAttrKey(CMAttributeKey(known_attribute::counters));
}

CMAttribute* SystemRecord::parameterAttribute() {
  return attributes_.findAttrKey(known_attribute::systemParameters, 0);
}

}  // namespace orx
