// CMConfigHandle::dump.
#include "model/config_handle.h"
#include "model/handle_layout.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = configHandleTraceUnit;

const char* trueOrFalse(bool value) {
  return value ? "True" : "False";
}

const char* kindText(ModelInheritedKind kind) {
  switch (kind) {
    case ModelInheritedKind::none:
      return "Not Model Inherited";
    case ModelInheritedKind::inheritedGroup:
      return "Prototype inherited resource group";
    case ModelInheritedKind::resourceInInherited:
      return "Prototype inherited resource with PIRG as a parent";
    case ModelInheritedKind::resourceInGroup:
      return "Prototype inherited resource with normal resource group as a parent";
  }
  return "Unknown";
}

void dumpHeader(TraceAnchor& anchor, const char* label, const HandleText& hex) {
  if (label == nullptr) {
    DIAG_Printf(anchor, __LINE__, "-----Dump of Handle=%s------", hex.c_str());
  } else {
    DIAG_Printf(anchor, __LINE__, "-----%s=%s------", label, hex.c_str());
  }
}

void dumpValue(TraceAnchor& anchor, const CMConfigHandle& handle) {
  const auto id = static_cast<std::int32_t>(handle);
  const std::int32_t type = handle.getType();
  DIAG_Printf(anchor, __LINE__, "  Format  = %s", handle.isNewFormat() ? "New" : "Old");
  DIAG_Printf(anchor, __LINE__, "  Id      = %d(0x%x)", id, static_cast<unsigned>(id));
  DIAG_Printf(anchor, __LINE__, "  Type    = %d(0x%x)", type, static_cast<unsigned>(type));
  DIAG_Printf(anchor, __LINE__, "  Temp    = %s", trueOrFalse(handle.isTemporary()));
  DIAG_Printf(anchor, __LINE__, "  ModelInh= %s", trueOrFalse(handle.isModelInherited()));
}

void dumpReferences(TraceAnchor& anchor, const CMConfigHandle& handle) {
  const CMConfigHandle resource = handle.getResourceRefId();
  DIAG_Printf(anchor, __LINE__, "  MgSys   = %s",
              handle.getManagedSystemHandle().externText().c_str());
  if (!resource.isNull()) {
    DIAG_Printf(anchor, __LINE__, "  ResRefID= %s", resource.externText().c_str());
  }
  DIAG_Printf(anchor, __LINE__, "  TypeModelInh= %s", kindText(handle.getModelInheritedKind()));
}

}  // namespace

void CMConfigHandle::dump(const char* label) const {
  ORX_TRACE_VALUE("CMConfigHandle::dump");
  if (isNull()) return;
  dumpHeader(trace.anchor(), label, externText());
  dumpValue(trace.anchor(), *this);
  dumpReferences(trace.anchor(), *this);
  DIAG_Printf(trace.anchor(), __LINE__, "-------------------------------------------");
}

}  // namespace orx
