// Resolving the values of an attribute against a parameter set.
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "model/sym_parm_set.h"
#include "model/sym_parm_set_trace.h"
#include "model/symbol_resolution.h"

namespace orx {

namespace {
constexpr const TraceUnit& traceUnit = symParmSetTraceUnit;
}

// One copy of the set serves all values: after each of them the parameters that the resolution has
// changed get their values back. Their order may stay changed, since it decides nothing.
std::unique_ptr<CMAttribute> CMSymParmSet::resolveSymbols(const CMAttribute* attribute) const {
  ORX_TRACE("CMSymParmSet::resolveSymbols");
  if (attribute == nullptr) return trace.exit(std::unique_ptr<CMAttribute>());
  auto resolved = std::make_unique<CMAttribute>(attribute->key());
  const int utf8Mode = CMAttribute::isUTF8DescAttr(attribute->key().number()) ? 1 : 0;
  CMSymParmSet scratch(*this);
  std::vector<CMSymParm*> changed;
  for (const std::string_view value : attribute->values()) {
    resolved->setValue(
        ResolveSymbolsInString(std::string(value).c_str(), &scratch, utf8Mode, &changed));
    for (CMSymParm* parameter : changed)
      parameter->setValue(lookUp(parameter->name())->value().data());
    changed.clear();
  }
  return trace.exit(std::move(resolved));
}

}  // namespace orx
