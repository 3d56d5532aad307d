#include "model/sym_parm.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "model/sym_parm_trace.h"

namespace orx {

constexpr TraceUnit symParmTraceUnit =
    makeTraceUnit("orxccmsp.cpp", "ORXCCMSP", __DATE__, __TIME__);

namespace {

constexpr const TraceUnit& traceUnit = symParmTraceUnit;

constexpr std::string_view productOptions[] = {"UNIQSYS",
                                               "DISCLITE",
                                               "AutoDiscover",
                                               "ORX_AGENT_RETRY",
                                               "ORX_LONG_RUNNING",
                                               "LIMIT_RG_SIZE",
                                               "SEPARATE_RG_BY_PREFIX",
                                               "ORX_COPY_PROTO_SEMANTICS",
                                               "ORX_DROPDOWN_SOURCE",
                                               "ORX_RESOURCE_VALID",
                                               "NODE_FILTER",
                                               "QUEUE_MANAGER_FILTER",
                                               "LQDELPURGE"};

constexpr std::uint32_t resourceBase = 0x420000;
struct DescriptionResource {
  std::uint32_t descriptionId;
  std::uint32_t number;
};
constexpr DescriptionResource descriptionResources[] = {
    {1, 6350}, {2, 6351}, {3, 6352}, {4, 6353}, {5, 6354}};

}  // namespace

CMSymParm::CMSymParm(const char* name, const char* value, std::uint32_t kind,
                     std::uint32_t descriptionId, const char* description)
    : kind_(kind), descriptionId_(descriptionId) {
  ORX_TRACE("Constructor");
  std::memcpy(name_, name, strnlen(name, nameCapacity - 1));
  storeValue(value);
  if (isProductOptionVarName()) kind_ = sym_parm_kind::productOption;
  if (description != nullptr) description_ = description;
}

CMSymParm::CMSymParm(const CMSymParm& other)
    : CMCollectable(other),
      kind_(other.kind_),
      descriptionId_(other.descriptionId_),
      description_(other.description_) {
  ORX_TRACE("CopyConstructor");
  std::memcpy(name_, other.name_, nameCapacity);
  storeValue(other.value());
}

CMSymParm::~CMSymParm() {
  ORX_TRACE("Destructor");
}

ClassId CMSymParm::isA() const {
  ORX_TRACE("isA");
  return trace.exit(class_id::symParm);
}

bool CMSymParm::isEqual(const RWCollectable* other) const {
  ORX_TRACE("isEqual");
  if (other == nullptr || other->isA() != class_id::symParm) return trace.exit(false);
  return trace.exit(*this == static_cast<const CMSymParm&>(*other));
}

bool CMSymParm::operator==(const CMSymParm& other) const {
  ORX_TRACE("EqualityOperator");
  return trace.exit(std::strcmp(name_, other.name_) == 0);
}

void CMSymParm::setValue(const char* value) {
  ORX_TRACE("setValue");
  if (value == nullptr) heap_ = CountedBuffer();
  storeValue(value == nullptr ? "" : value);
}

// A value that does not fit goes into a block of its exact size. `value` may lie in the old place,
// which is given up last.
void CMSymParm::storeValue(std::string_view value) {
  const bool symbolic = value.find('&') != std::string_view::npos;
  CountedBuffer block;
  if (value.size() >= valueSize()) block = CountedBuffer(value.size() + 1);
  char* place = block.size() > 0 ? block.data() : heap_.size() > 0 ? heap_.data() : valueBuffer_;
  std::memmove(place, value.data(), value.size());
  place[value.size()] = '\0';
  if (block.size() > 0) heap_ = std::move(block);
  valueLength_ = value.size();
  symbolicRefs_ = symbolic;
}

bool CMSymParm::isProductOptionVarName() const {
  ORX_TRACE("isProductOptionVarName");
  if (kind_ == sym_parm_kind::productOption) return trace.exit(true);
  const bool listed = std::find(std::begin(productOptions), std::end(productOptions), name_) !=
                      std::end(productOptions);
  return trace.exit(kind_ == sym_parm_kind::fromText && listed);
}

std::uint32_t CMSymParm::getDescriptionResid() const {
  ORX_TRACE("getDescriptionResid");
  for (const DescriptionResource& row : descriptionResources) {
    if (row.descriptionId == descriptionId_) return trace.exit(resourceBase + row.number);
  }
  return trace.exit(std::uint32_t{0});
}

}  // namespace orx
