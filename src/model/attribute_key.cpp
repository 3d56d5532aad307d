#include "model/attribute_key.h"

#include "model/attribute_trace.h"

namespace orx {

static constexpr const TraceUnit& traceUnit = attributeTraceUnit;

CMAttributeKey::CMAttributeKey() {
  ORX_TRACE_VALUE("Constructor0");
}

CMAttributeKey::CMAttributeKey(int number) : number_(number) {
  ORX_TRACE_VALUE("Constructor1");
}

CMAttributeKey::CMAttributeKey(short attrId, short attrGroup)
    : number_(attrGroup * groupSize + attrId) {
  ORX_TRACE_VALUE("Constructor2");
}

CMAttributeKey::CMAttributeKey(const CMAttributeKey& other)
    : CMMemoryManager(other), number_(other.number_) {
  ORX_TRACE_VALUE("CopyConstructor");
}

// Nothing but a number: assigning a key to itself needs no care.
CMAttributeKey& CMAttributeKey::operator=(const CMAttributeKey& other) {
  ORX_TRACE_VALUE("AssignmentOperator");
  number_ = other.number_;
  return *trace.exit(this);
}

CMAttributeKey::~CMAttributeKey() {
  ORX_TRACE_VALUE("Destructor");
}

int CMAttributeKey::number() const {
  ORX_TRACE_VALUE("number");
  return trace.exit(number_);
}

int CMAttributeKey::attrId() const {
  ORX_TRACE_VALUE("attrId");
  return trace.exit(number_ % groupSize);
}

int CMAttributeKey::attrGroup() const {
  ORX_TRACE_VALUE("attrGroup");
  return trace.exit(number_ / groupSize);
}

bool CMAttributeKey::operator==(const CMAttributeKey& other) const {
  ORX_TRACE_VALUE("EqualityOperator");
  return trace.exit(number_ == other.number_);
}

}  // namespace orx
