#include "restore/handle_attributes.h"

#include "messages/trace_unit.h"
#include "model/attribute_iterator.h"

namespace orx {

namespace {

void renumberValues(CMAttribute& attribute, const MergeTables& tables, MergeObserver& observer) {
  const CMAttribute before(attribute);
  attribute.clearValues();
  CMConfigHandle old;
  for (CMAttributeIterator value(before); !value.done(); (void)value.next()) {
    (void)value.getValueHandle(old);
    const CMConfigHandle moved = tables.renumbered(old);
    attribute.setValue(moved.exportText().view());
    observer.renumberedValue(old, moved);
  }
}

}  // namespace

void renumberHandles(CMAttributeSet& attributes, const MergeTables& tables,
                     MergeObserver& observer) {
  ORX_TRACE("renumberHandles");
  for (const HandleAttribute& wanted : handleAttributes) {
    observer.searchedAttribute(wanted.attrId);
    CMAttribute* attribute = attributes.findAttrKey(wanted.attrId, wanted.attrGroup);
    if (attribute == nullptr) continue;
    observer.foundAttribute(wanted.attrId);
    renumberValues(*attribute, tables, observer);
  }
}

void searchInVain(MergeObserver& observer) {
  for (const HandleAttribute& wanted : handleAttributes) observer.searchedAttribute(wanted.attrId);
}

}  // namespace orx
