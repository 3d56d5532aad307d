#include "model/attribute_set.h"

#include <memory>

#include "model/attribute_set_trace.h"

namespace orx {

constexpr TraceUnit attributeSetTraceUnit =
    makeTraceUnit("orxccmas.cpp", "ORXCCMAS", __DATE__, __TIME__);

namespace {

constexpr const TraceUnit& traceUnit = attributeSetTraceUnit;

CMAttribute* asAttribute(RWCollectable* entry) {
  if (entry == nullptr || entry->isA() != class_id::attribute) return nullptr;
  return static_cast<CMAttribute*>(entry);
}

class IterationGuard {
 public:
  explicit IterationGuard(const CMAttributeSet& set) : set_(set) {
    (void)set_.beginIteration(0, 0);
  }
  IterationGuard(const IterationGuard&) = delete;
  IterationGuard& operator=(const IterationGuard&) = delete;
  ~IterationGuard() { set_.endIteration(0); }

 private:
  const CMAttributeSet& set_;
};

class AccessGuard {
 public:
  explicit AccessGuard(const CMAttributeSet& set) : set_(set) { (void)set_.beginAccess(0, 0); }
  AccessGuard(const AccessGuard&) = delete;
  AccessGuard& operator=(const AccessGuard&) = delete;
  ~AccessGuard() { set_.endAccess(0); }

 private:
  const CMAttributeSet& set_;
};

}  // namespace

CMAttributeSet::CMAttributeSet() {
  ORX_TRACE("Constructor0");
}

CMAttributeSet::CMAttributeSet(const CMAttributeSet& other) : CMAttributeSet() {
  ORX_TRACE("CopyConstructor");
  *this = other;
}

ClassId CMAttributeSet::isA() const {
  ORX_TRACE("isA");
  return trace.exit(class_id::attributeSet);
}

CMAttributeSet::~CMAttributeSet() {
  ORX_TRACE("Destructor");
  RWHashTable::clearAndDestroy();
}

CMAttribute* CMAttributeSet::findAttrKey(int attrId, int attrGroup) {
  ORX_TRACE("findAttrKey4");
  return trace.exit(findAttrKey(static_cast<short>(attrId), static_cast<short>(attrGroup)));
}

CMAttribute* CMAttributeSet::findAttrKey(short attrId, short attrGroup) {
  ORX_TRACE("findAttrKey3");
  return trace.exit(findAttrKey(CMAttributeKey(attrId, attrGroup)));
}

CMAttribute* CMAttributeSet::findAttrKey(const CMAttributeKey& key) {
  ORX_TRACE("findAttrKey2");
  return trace.exit(lookUp(key));
}

const CMAttribute* CMAttributeSet::findAttrKey(const CMAttributeKey& key) const {
  ORX_TRACE("findAttrKey1");
  return trace.exit(lookUp(key));
}

CMAttribute* CMAttributeSet::lookUp(const CMAttributeKey& key) const {
  const CMAttribute probe(key);
  return asAttribute(find(&probe));
}

bool CMAttributeSet::insertIfUnique(CMAttribute* attribute) {
  ORX_TRACE("insertIfUnique");
  if (attribute == nullptr || contains(attribute)) return trace.exit(false);
  return trace.exit(insert(attribute) != nullptr);
}

void CMAttributeSet::operator=(const CMAttributeSet& other) {
  ORX_TRACE("AssignmentOperator2");
  if (this == &other) return;
  CMAttributeSet fresh;
  fresh.copyInto(other);
  swapEntries(fresh);
}

bool CMAttributeSet::operator==(const CMAttributeSet& other) const {
  ORX_TRACE("EqualityOperator");
  const AccessGuard access(other);
  bool equal = entries() == other.entries();
  if (!equal) return trace.exit(false);
  walk([&](const CMAttribute& attribute) {
    const CMAttribute* counterpart = other.findAttrKey(attribute.key());
    equal = counterpart != nullptr && attribute == *counterpart;
    return equal;
  });
  return trace.exit(equal);
}

void CMAttributeSet::copyInto(const CMAttributeSet& other) {
  ORX_TRACE("copyInto");
  other.forEach([&](const CMAttribute& attribute) {
    auto copy = std::make_unique<CMAttribute>(attribute);
    if (insertIfUnique(copy.get())) (void)copy.release();
  });
}

CMAttribute* CMAttributeSet::getFirst() {
  ORX_TRACE("getFirst2");
  return trace.exit(first());
}

const CMAttribute* CMAttributeSet::getFirst() const {
  ORX_TRACE("getFirst1");
  return trace.exit(first());
}

CMAttribute* CMAttributeSet::first() const {
  const IterationGuard iteration(*this);
  RWHashTableIterator next(*this);
  RWCollectable* entry = next();
  while (entry != nullptr && asAttribute(entry) == nullptr) entry = next();
  return asAttribute(entry);
}

int CMAttributeSet::beginAccess(int, int) const {
  ORX_TRACE("beginAccess");
  return trace.exit(0);
}

int CMAttributeSet::beginIteration(int, int) const {
  ORX_TRACE("beginIteration");
  return trace.exit(0);
}

void CMAttributeSet::endAccess(int) const {
  ORX_TRACE("endAccess");
}

void CMAttributeSet::endIteration(int) const {
  ORX_TRACE("endIteration");
}

std::string CMAttributeSet::getAttributeValue(const CMAttributeKey& key) const {
  ORX_TRACE("getAttributeValue");
  std::string value;
  if (const CMAttribute* attribute = findAttrKey(key)) attribute->getValue3(value, 0);
  return trace.exit(value);
}

int CMAttributeSet::getNumericAttributeValue(const CMAttributeKey& key) const {
  ORX_TRACE("getNumericAttributeValue");
  const CMAttribute* attribute = findAttrKey(key);
  int isNumeric = 0;
  return trace.exit(attribute == nullptr ? 0 : attribute->getValue(&isNumeric, 0));
}

void CMAttributeSet::print() const {
  ORX_TRACE("print");
  DIAG_Printf(trace.anchor(), __LINE__, "----- Print of %d Attributes for Attribute Set @%p -----",
              static_cast<int>(entries()), static_cast<const void*>(this));
  forEach([](const CMAttribute& attribute) { attribute.print(); });
  DIAG_Printf(trace.anchor(), __LINE__, "----- End of Attributes -----");
}

void CMAttributeSet::forEach(const std::function<void(const CMAttribute&)>& visit) const {
  walk([&](const CMAttribute& attribute) {
    visit(attribute);
    return true;
  });
}

// Visits attributes in order until the visit returns false.
void CMAttributeSet::walk(const std::function<bool(const CMAttribute&)>& visit) const {
  const IterationGuard iteration(*this);
  RWHashTableIterator next(*this);
  while (RWCollectable* entry = next()) {
    const CMAttribute* attribute = asAttribute(entry);
    if (attribute != nullptr && !visit(*attribute)) return;
  }
}

}  // namespace orx
