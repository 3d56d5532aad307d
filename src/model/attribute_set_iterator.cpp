#include "model/attribute_set_iterator.h"

#include "model/attribute_set_trace.h"

namespace orx {

static constexpr const TraceUnit& traceUnit = attributeSetTraceUnit;

CMAttributeSetIterator::CMAttributeSetIterator(CMAttributeSet& set, int mode)
    : RWHashTableIterator(set), attributeSet_(&set), mode_(mode) {
  ORX_TRACE_VALUE("IteratorConstructor");
  (void)attributeSet_->beginIteration(mode_, 0);
}

CMAttributeSetIterator::~CMAttributeSetIterator() {
  ORX_TRACE_VALUE("IteratorDestructor");
  attributeSet_->endIteration(mode_);
}

// A set holds attributes only, as far as its own operations put them there; anything else that came
// in through the table's operations is passed over.
CMAttribute* CMAttributeSetIterator::operator()() {
  ORX_TRACE_VALUE("IteratorOperator");
  while (RWCollectable* entry = RWHashTableIterator::operator()()) {
    if (entry->isA() == class_id::attribute) return trace.exit(static_cast<CMAttribute*>(entry));
  }
  return trace.exit(static_cast<CMAttribute*>(nullptr));
}

}  // namespace orx
