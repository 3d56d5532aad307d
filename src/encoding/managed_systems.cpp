// The operations of code_pages.h that keep the code pages of managed systems.
#include <functional>
#include <unordered_map>

#include "encoding/code_pages.h"
#include "encoding/text_trace.h"
#include "platform/memory_manager.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = textTraceUnit;

using CountedString = std::basic_string<char, std::char_traits<char>, CountingAllocator<char>>;

struct NameHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view name) const {
    return std::hash<std::string_view>()(name);
  }
};

using ManagedSystems = std::unordered_map<CountedString, int, NameHash, std::equal_to<>,
                                          CountingAllocator<std::pair<const CountedString, int>>>;

// Never destroyed, since static objects may still ask when the process ends.
ManagedSystems& managedSystems() {
  static auto& systems = *new ManagedSystems;
  return systems;
}

}  // namespace

int findCodedCharSetId(std::string_view managedSystem) {
  ORX_TRACE("findCodedCharSetId");
  const auto found = managedSystems().find(managedSystem);
  return trace.exit(found == managedSystems().end() ? 0 : found->second);
}

void insertCodedCharSetId(std::string_view managedSystem, int ccsid) {
  ORX_TRACE("insertCodedCharSetId");
  ManagedSystems& systems = managedSystems();
  if (systems.find(managedSystem) != systems.end()) return;
  if (trace.on(0x08) && !systems.empty()) {
    DIAG_Printf(trace.anchor(), __LINE__,
                "Inserting CCSID!! Managed System is = %.*s. Its CCSID is = %d\n",
                static_cast<int>(managedSystem.size()), managedSystem.data(), ccsid);
  }
  systems.emplace(managedSystem, ccsid);
}

}  // namespace orx
