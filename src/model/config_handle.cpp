#include "model/config_handle.h"

#include <algorithm>

#include "model/handle_layout.h"
#include "platform/bytes.h"

namespace orx {

constexpr TraceUnit configHandleTraceUnit =
    makeTraceUnit("orxccmci.cpp", "ORXCCMCI", __DATE__, __TIME__);

namespace {

constexpr const TraceUnit& traceUnit = configHandleTraceUnit;

HandleBytes copyBytes(const std::uint8_t* bytes) {
  HandleBytes copy{};
  if (bytes != nullptr) std::copy_n(bytes, copy.size(), copy.begin());
  return copy;
}

void copy16(HandleBytes& to, std::size_t at, const HandleBytes& from) {
  std::copy_n(from.begin(), 2, to.begin() + static_cast<std::ptrdiff_t>(at));
}

}  // namespace

CMConfigHandle::CMConfigHandle() {
  ORX_TRACE_VALUE("Constructor1");
}

CMConfigHandle::CMConfigHandle(CMHandleType type, std::uint32_t id) {
  ORX_TRACE_VALUE("Constructor2");
  storeLE32(bytes_.data(), id);
  storeLE16(bytes_.data() + 6, handle_layout::typeAndFlags(type, 0));
}

CMConfigHandle::CMConfigHandle(const std::uint8_t* bytes) : bytes_(copyBytes(bytes)) {
  ORX_TRACE_VALUE("CMConfigHandle");
}

CMConfigHandle::CMConfigHandle(const HandleBytes& bytes) : bytes_(bytes) {
  ORX_TRACE_VALUE("CMConfigHandle");
}

CMConfigHandle::CMConfigHandle(const CMConfigHandle& managedSystem, const CMConfigHandle& group) {
  ORX_TRACE_VALUE("Constructor3");
  copy16(bytes_, 4, managedSystem.bytes_);
  copy16(bytes_, 2, group.bytes_);
  constexpr unsigned flags = handle_layout::modelInherited | handle_layout::flag2;
  bytes_[6] = handle_type::resourceGroup | flags << handle_layout::oldFlagShift;
}

CMConfigHandle::CMConfigHandle(const CMConfigHandle& managedSystem, const CMConfigHandle& group,
                               const CMConfigHandle& resource) {
  ORX_TRACE_VALUE("Constructor4");
  unsigned flags = handle_layout::modelInherited;
  if (managedSystem.isNull()) {
    std::copy_n(group.bytes_.begin(), 4, bytes_.begin());
    copy16(bytes_, 4, resource.bytes_);
  } else {
    flags |= handle_layout::flag3;
    copy16(bytes_, 4, managedSystem.bytes_);
    copy16(bytes_, 2, group.bytes_);
    copy16(bytes_, 0, resource.bytes_);
  }
  bytes_[6] =
      static_cast<std::uint8_t>(handle_type::resource | flags << handle_layout::oldFlagShift);
}

CMConfigHandle::CMConfigHandle(const CMConfigHandle& other)
    : CMCollectable(other), bytes_(other.bytes_) {
  ORX_TRACE_VALUE("CopyConstructor");
}

CMConfigHandle& CMConfigHandle::operator=(const CMConfigHandle& other) {
  ORX_TRACE_VALUE("Assignment operator");
  if (this != &other) bytes_ = other.bytes_;
  return *trace.exit(this);
}

CMConfigHandle::~CMConfigHandle() {
  ORX_TRACE_VALUE("CMConfigHandle destructor");
}

void CMConfigHandle::set(const std::uint8_t* bytes) {
  ORX_TRACE_VALUE("set");
  bytes_ = copyBytes(bytes);
}

CMConfigHandle CMConfigHandle::createPermanentHandle(CMHandleType type, std::uint32_t id) {
  ORX_TRACE_VALUE("CMConfigHandle::createPermanentHandle");
  return trace.exit(CMConfigHandle(type, id));
}

CMConfigHandle CMConfigHandle::createTemporaryHandle(CMHandleType type, std::uint32_t id) {
  ORX_TRACE_VALUE("CMConfigHandle::createTemporaryHandle");
  CMConfigHandle handle;
  storeLE32(handle.bytes_.data(), id);
  handle.bytes_[6] = static_cast<std::uint8_t>(type);
  handle.bytes_[7] = handle_layout::newFormat | handle_layout::temporary;
  return trace.exit(handle);
}

CMConfigHandle CMConfigHandle::createPrototypeInheritedGroupHandle(
    const CMConfigHandle& managedSystem, const CMConfigHandle& group) {
  ORX_TRACE_VALUE("CMConfigHandle::createPrototypeInheritedGroupHandle");
  return trace.exit(CMConfigHandle(managedSystem, group));
}

CMConfigHandle CMConfigHandle::createPrototypeInheritedResourceHandle(
    const CMConfigHandle& managedSystem, const CMConfigHandle& group,
    const CMConfigHandle& resource) {
  ORX_TRACE_VALUE("CMConfigHandle::createPrototypeInheritedResourceHandle");
  return trace.exit(CMConfigHandle(managedSystem, group, resource));
}

bool CMConfigHandle::isNewFormat() const {
  ORX_TRACE_VALUE("isNewFormat");
  return trace.exit(handle_layout::isNewFormat(bytes_));
}

CMHandleType CMConfigHandle::getType() const {
  ORX_TRACE_VALUE("getType");
  return trace.exit(CMHandleType(handle_layout::type(bytes_)));
}

CMConfigHandle::operator std::int32_t() const {
  ORX_TRACE_VALUE("intOperator");
  return trace.exit(static_cast<std::int32_t>(loadLE32(bytes_.data())));
}

bool CMConfigHandle::isModelInherited() const {
  ORX_TRACE_VALUE("isModelInherited");
  return trace.exit((handle_layout::flags(bytes_) & handle_layout::modelInherited) != 0);
}

bool CMConfigHandle::isTemporary() const {
  ORX_TRACE_VALUE("CMConfigHandle::isTemporary");
  constexpr std::uint8_t both = handle_layout::newFormat | handle_layout::temporary;
  return trace.exit((bytes_[7] & both) == both);
}

ModelInheritedKind CMConfigHandle::getModelInheritedKind() const {
  ORX_TRACE_VALUE("getModelInheritedKind");
  using enum ModelInheritedKind;
  if (!isModelInherited()) return trace.exit(none);
  const CMHandleType type = getType();
  if (type == handle_type::resourceGroup) return trace.exit(inheritedGroup);
  if (type != handle_type::resource) return trace.exit(none);
  const bool parentInherited = (handle_layout::flags(bytes_) & handle_layout::flag3) != 0;
  return trace.exit(parentInherited ? resourceInInherited : resourceInGroup);
}

CMConfigHandle CMConfigHandle::reference(CMHandleType type, std::size_t at) const {
  return CMConfigHandle(type, loadLE16(bytes_.data() + at));
}

CMConfigHandle CMConfigHandle::getManagedSystemHandle() const {
  ORX_TRACE_VALUE("getManagedSystemHandle");
  switch (getModelInheritedKind()) {
    case ModelInheritedKind::inheritedGroup:
    case ModelInheritedKind::resourceInInherited:
      return trace.exit(reference(handle_type::managedSystem, 4));
    default:
      return trace.exit(CMConfigHandle());
  }
}

CMConfigHandle CMConfigHandle::getGroupRefId() const {
  ORX_TRACE_VALUE("getGroupRefId");
  switch (getModelInheritedKind()) {
    case ModelInheritedKind::inheritedGroup:
    case ModelInheritedKind::resourceInInherited:
      return trace.exit(reference(handle_type::groupReference, 2));
    case ModelInheritedKind::resourceInGroup:
      return trace.exit(CMConfigHandle(handle_type::resourceGroup, loadLE32(bytes_.data())));
    default:
      return trace.exit(CMConfigHandle());
  }
}

CMConfigHandle CMConfigHandle::getResourceRefId() const {
  ORX_TRACE_VALUE("getResourceRefId");
  switch (getModelInheritedKind()) {
    case ModelInheritedKind::resourceInInherited:
      return trace.exit(reference(handle_type::resourceReference, 0));
    case ModelInheritedKind::resourceInGroup:
      return trace.exit(reference(handle_type::resourceReference, 4));
    default:
      return trace.exit(CMConfigHandle());
  }
}

bool CMConfigHandle::isNull() const {
  ORX_TRACE_VALUE("isNull");
  return trace.exit(loadLE64(bytes_.data()) == 0);
}

const std::uint8_t* CMConfigHandle::getHandleBytes() const {
  ORX_TRACE_VALUE("getHandleBytes");
  return trace.exit(bytes_.data());
}

bool CMConfigHandle::operator==(const CMConfigHandle& other) const {
  ORX_TRACE_VALUE("operator==");
  return trace.exit(bytes_ == other.bytes_);
}

bool CMConfigHandle::operator==(const std::uint8_t* bytes) const {
  ORX_TRACE_VALUE("EqualityOperator2");
  return trace.exit(bytes_ == copyBytes(bytes));
}

bool CMConfigHandle::operator!=(const std::uint8_t* bytes) const {
  ORX_TRACE_VALUE("InequalityOperator2");
  return trace.exit(bytes_ != copyBytes(bytes));
}

ClassId CMConfigHandle::isA() const {
  ORX_TRACE_VALUE("isA");
  return trace.exit(class_id::configHandle);
}

int CMConfigHandle::compareTo(const RWCollectable* other) const {
  ORX_TRACE_VALUE("CMConfigHandle::compareTo");
  if (other == nullptr || other->isA() != class_id::configHandle) return trace.exit(1);
  const HandleBytes& theirs = static_cast<const CMConfigHandle*>(other)->bytes_;
  for (std::size_t i = 0; i < handleSize; ++i) {
    if (bytes_[i] != theirs[i]) return trace.exit(bytes_[i] - theirs[i]);
    if (bytes_[i] == 0) break;
  }
  return trace.exit(0);
}

std::uint32_t CMConfigHandle::hash() const {
  ORX_TRACE_VALUE("hash");
  return trace.exit(loadLE32(bytes_.data()) ^ loadLE32(bytes_.data() + 4));
}

bool CMConfigHandle::isEqual(const RWCollectable* other) const {
  ORX_TRACE_VALUE("isEqual");
  if (other == nullptr || other->isA() != class_id::configHandle) return trace.exit(false);
  return trace.exit(bytes_ == static_cast<const CMConfigHandle*>(other)->bytes_);
}

}  // namespace orx
