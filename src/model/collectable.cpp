#include "model/collectable.h"

#include "platform/trace.h"

namespace orx {

ORX_TRACE_UNIT("orxccmcc.cpp", "ORXCCMCC");

CMCollectable::CMCollectable() {
  ORX_TRACE_VALUE("CMCollectable default constructor");
}

CMCollectable::CMCollectable(const CMCollectable& other) : RWCollectable(other) {
  ORX_TRACE_VALUE("CMCollectable copy constructor");
}

CMCollectable* CMCollectable::newSpecies() const {
  ORX_TRACE_VALUE("CMCollectable::newSpecies");
  return trace.exit(new CMCollectable);
}

CMCollectable* CMCollectable::copy() const {
  ORX_TRACE_VALUE("CMCollectable::copy");
  return trace.exit(new CMCollectable(*this));
}

ClassId CMCollectable::isA() const {
  ORX_TRACE_VALUE("CMCollectable::isA");
  return trace.exit(class_id::collectable);
}

CMCollectable::~CMCollectable() {
  ORX_TRACE_VALUE("CMCollectable destructor");
}

}  // namespace orx
