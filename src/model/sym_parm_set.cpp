#include "model/sym_parm_set.h"

#include <iterator>
#include <utility>

#include "model/attribute_set.h"
#include "model/sym_parm_set_trace.h"

namespace orx {

constexpr TraceUnit symParmSetTraceUnit =
    makeTraceUnit("orxccmps.cpp", "ORXCCMPS", __DATE__, __TIME__);

namespace {
constexpr const TraceUnit& traceUnit = symParmSetTraceUnit;
}

CMSymParmSet::CMSymParmSet() {
  ORX_TRACE("Constructor");
}

CMSymParmSet::CMSymParmSet(const CMSymParmSet& other) : CMMemoryManager(other) {
  ORX_TRACE("CopyConstructor");
  AssignCMSymParmSet(other);
}

CMSymParmSet::~CMSymParmSet() {
  ORX_TRACE("Destructor");
}

void CMSymParmSet::AssignCMSymParmSet(const CMSymParmSet& other) {
  ORX_TRACE("AssignCMSymParmSet");
  if (this == &other) return;
  clearAndDestroy();
  merge(other);
}

void CMSymParmSet::operator=(const CMAttributeSet& attributes) {
  ORX_TRACE("AssignmentOperator1");
  (void)attributes.beginAccess(0, 0);
  const CMAttribute* attribute = attributes.findAttrKey(CMAttributeKey(attributeKey));
  if (attribute != nullptr) *this = *attribute;
  attributes.endAccess(0);
}

const CMSymParm* CMSymParmSet::findSymbolName1(const char* name) const {
  ORX_TRACE("findSymbolName1");
  return trace.exit(static_cast<const CMSymParm*>(lookUp(name)));
}

CMSymParm* CMSymParmSet::findSymbolName2(const char* name) {
  ORX_TRACE("findSymbolName2");
  return trace.exit(lookUp(name));
}

CMSymParm* CMSymParmSet::lookUp(std::string_view name) const {
  const auto found = byName_.find(name);
  return found == byName_.end() ? nullptr : found->second->get();
}

const CMSymParm* CMSymParmSet::at(std::size_t position) const {
  if (position >= parameters_.size()) return nullptr;
  return std::next(parameters_.begin(), static_cast<std::ptrdiff_t>(position))->get();
}

void CMSymParmSet::forEach(const std::function<void(const CMSymParm&)>& visit) const {
  for (const auto& parameter : parameters_) visit(*parameter);
}

bool CMSymParmSet::contains(const CMSymParm& parameter) const {
  return lookUp(parameter.name()) != nullptr;
}

int CMSymParmSet::insertUniqueParm(std::unique_ptr<CMSymParm>& parameter) {
  ORX_TRACE("insertUniqueParm");
  if (parameter == nullptr || contains(*parameter)) return trace.exit(0);
  const auto place = parameters_.emplace(parameters_.end());
  byName_.emplace(parameter->name(), place);
  *place = std::move(parameter);
  return trace.exit(1);
}

std::unique_ptr<CMSymParm> CMSymParmSet::remove(const CMSymParm& parameter) {
  const auto found = byName_.find(parameter.name());
  if (found == byName_.end()) return nullptr;
  const auto place = found->second;
  byName_.erase(found);
  std::unique_ptr<CMSymParm> taken = std::move(*place);
  parameters_.erase(place);
  return taken;
}

void CMSymParmSet::clearAndDestroy() {
  byName_.clear();
  parameters_.clear();
}

void CMSymParmSet::merge(const CMSymParmSet& other) {
  ORX_TRACE("merge");
  for (const auto& parameter : other.parameters_) {
    if (contains(*parameter)) continue;
    auto copy = std::make_unique<CMSymParm>(*parameter);
    (void)insertUniqueParm(copy);
  }
}

void CMSymParmSet::dump() const {
  ORX_TRACE("CMSymParmSet::dump");
  for (const auto& parameter : parameters_) {
    DIAG_Printf(trace.anchor(), __LINE__, "SymParm Name is [%s], value is [%s]", parameter->name(),
                parameter->value().data());
  }
}

}  // namespace orx
