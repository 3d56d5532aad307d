#include "model/attribute.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstring>
#include <new>
#include <utility>

#include "model/attribute_iterator.h"
#include "model/attribute_trace.h"
#include "model/description_attributes.h"

namespace orx {

constexpr TraceUnit attributeTraceUnit =
    makeTraceUnit("orxccmat.cpp", "ORXCCMAT", __DATE__, __TIME__);

namespace {

constexpr const TraceUnit& traceUnit = attributeTraceUnit;

constexpr std::size_t tabAndNul = 2;

std::string_view withoutTrailingBlanks(std::string_view value) {
  return value.substr(0, value.find_last_not_of(' ') + 1);
}

// The capacity that takes `length` more bytes with their TAB and NUL.
std::size_t grownCapacity(std::size_t used, std::size_t capacity, std::size_t length) {
  if (used + length + tabAndNul > INT_MAX) throw std::bad_alloc();
  while (capacity - used < length + tabAndNul) {
    capacity = std::max(2 * capacity, used + 2 * length);
  }
  return std::min<std::size_t>(capacity, INT_MAX);
}

}  // namespace

CMAttribute::CMAttribute() {
  ORX_TRACE("Constructor0");
}

CMAttribute::CMAttribute(short attrId, short attrGroup) : key_(attrId, attrGroup) {
  ORX_TRACE("Constructor");
}

CMAttribute::CMAttribute(const CMAttributeKey& key) : key_(key) {
  ORX_TRACE("ConstructorFromKey");
}

CMAttribute::CMAttribute(const CMAttribute& other) : CMCollectable(other) {
  ORX_TRACE("CopyConstructor");
  *this = other;
}

CMAttribute& CMAttribute::operator=(const CMAttribute& other) {
  ORX_TRACE("AssignmentOperator");
  if (this == &other) return *trace.exit(this);
  const int capacity = other.nextAvail_ + other.storageFree_;
  CountedBuffer heap;
  if (capacity > localCapacity) heap = CountedBuffer(static_cast<std::size_t>(capacity));
  heap_ = std::move(heap);
  key_ = other.key_;
  attrCount_ = other.attrCount_;
  symbolicRefs_ = other.symbolicRefs_;
  allocated_ = capacity;
  std::memcpy(storage(), other.storage(), static_cast<std::size_t>(other.nextAvail_) + 1);
  nextAvail_ = other.nextAvail_;
  storageFree_ = other.storageFree_;
  sizeOfCharAttr_ = other.sizeOfCharAttr_;
  return *trace.exit(this);
}

CMAttribute::~CMAttribute() {
  ORX_TRACE("Destructor");
}

ClassId CMAttribute::isA() const {
  ORX_TRACE("isA");
  return trace.exit(class_id::attribute);
}

std::uint32_t CMAttribute::hash() const {
  ORX_TRACE("hash");
  return trace.exit(static_cast<std::uint32_t>(key_.number()));
}

bool CMAttribute::isEqual(const RWCollectable* other) const {
  ORX_TRACE("isEqual");
  if (other == nullptr || other->isA() != class_id::attribute) return trace.exit(false);
  return trace.exit(static_cast<const CMAttribute*>(other)->key_ == key_);
}

void CMAttribute::setKey(const CMAttributeKey& key) {
  ORX_TRACE("setKey");
  key_ = key;
  sizeOfCharAttr_ = -1;  // the header's length may be another
}

void CMAttribute::setValue(std::string_view value) {
  ORX_TRACE("setValue");
  append(value.substr(0, value.find('\0')));
  if (trace.on(TraceScope::detail)) print();
}

void CMAttribute::setValue(const char* value) {
  setValue(value == nullptr ? std::string_view() : std::string_view(value));
}

void CMAttribute::setValue(long number) {
  char digits[24];
  const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  setValue(std::string_view(digits, static_cast<std::size_t>(end - digits)));
}

void CMAttribute::setValue3(const CMConfigHandle& handle) {
  ORX_TRACE("setValue3");
  char digits[17];
  setValue(handle.getExternChar(digits, sizeof digits));
}

void CMAttribute::append(std::string_view value) {
  const std::string_view kept = withoutTrailingBlanks(value);
  const bool symbolic = value.find('&') != std::string_view::npos;
  const CountedBuffer before = makeRoom(kept.size());  // the value may lie in it
  char* place = storage() + nextAvail_;
  std::copy(kept.begin(), kept.end(), place);
  std::replace(place, place + kept.size(), '\t', ' ');
  place[kept.size()] = '\t';
  place[kept.size() + 1] = '\0';
  const int used = static_cast<int>(kept.size()) + 1;
  storageFree_ -= used;
  nextAvail_ += used;
  ++attrCount_;
  sizeOfCharAttr_ = -1;
  symbolicRefs_ = symbolicRefs_ || symbolic;
}

// Grows the storage where the value and its two end marks do not fit; returns the counted memory
// that it leaves.
CountedBuffer CMAttribute::makeRoom(std::size_t length) {
  const auto used = static_cast<std::size_t>(nextAvail_);
  const auto capacity = used + static_cast<std::size_t>(storageFree_);
  const std::size_t grown = grownCapacity(used, capacity, length);
  if (grown == capacity) return {};
  CountedBuffer larger(grown);
  std::memcpy(larger.data(), storage(), used + 1);
  std::swap(heap_, larger);
  allocated_ = static_cast<int>(grown);
  storageFree_ = static_cast<int>(grown - used);
  return larger;
}

bool CMAttribute::operator==(const CMAttribute& other) const {
  ORX_TRACE("EqualityOperator");
  if (!(key_ == other.key_) || attrCount_ != other.attrCount_) return trace.exit(false);
  return trace.exit(stored() == other.stored());
}

void CMAttribute::removeValue(int index) {
  ORX_TRACE("removeValue");
  CMAttributeIterator value(*this);
  if (value.set(index) && !value.done()) value.remove();
}

void CMAttribute::removeAt(int offset, int length) {
  char* value = storage() + offset;
  const auto rest = static_cast<std::size_t>(nextAvail_ - offset - length);
  std::memmove(value, value + length, rest + 1);
  --attrCount_;
  storageFree_ += length;
  nextAvail_ -= length;
  sizeOfCharAttr_ = -1;
}

void CMAttribute::clearValues() {
  ORX_TRACE("clearValues");
  storageFree_ += nextAvail_;
  clearState();
}

void CMAttribute::reset() {
  ORX_TRACE("reset");
  CountedBuffer released;
  std::swap(heap_, released);
  storageFree_ = localCapacity;
  clearState();
}

void CMAttribute::clearState() {
  attrCount_ = 0;
  nextAvail_ = 0;
  sizeOfCharAttr_ = -1;
  symbolicRefs_ = false;
  storage()[0] = '\0';
}

void CMAttribute::print() const {
  ORX_TRACE("print");
  TraceAnchor& anchor = trace.anchor();
  const int number = key_.number();
  DIAG_Printf(anchor, __LINE__, "----- Attribute @%p -----", static_cast<const void*>(this));
  if (number > CMAttributeKey::groupSize) {
    DIAG_Printf(anchor, __LINE__, "Key           = %d (%d + 4096)", number,
                number - CMAttributeKey::groupSize);
  } else {
    DIAG_Printf(anchor, __LINE__, "Key           = %d", number);
  }
  DIAG_Printf(anchor, __LINE__, "Value         ='%s'", storage());
  DIAG_Printf(anchor, __LINE__, "Allocated     = %d", allocated_);
  DIAG_Printf(anchor, __LINE__, "AttrCount     = %d", attrCount_);
  DIAG_Printf(anchor, __LINE__, "StorageFree   = %d", storageFree_);
  DIAG_Printf(anchor, __LINE__, "NextAvail     = %d", nextAvail_);
  DIAG_Printf(anchor, __LINE__, "SizeOfCharAttr= %d", sizeOfCharAttr_);
  DIAG_Printf(anchor, __LINE__, "SymbolicRefs  = %s", symbolicRefs_ ? "Yes" : "No");
}

bool CMAttribute::isUTF8DescAttr(int keyNumber) {
  ORX_TRACE("isUTF8DescAttr");
  return trace.exit(isDescriptionAttribute(keyNumber));
}

const int* CMAttribute::getUTF8DescAttrID(int* count) {
  ORX_TRACE("getUTF8DescAttrID");
  if (count != nullptr) *count = static_cast<int>(descriptionAttributeKeys.size());
  return trace.exit(descriptionAttributeKeys.data());
}

}  // namespace orx
