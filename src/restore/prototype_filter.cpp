#include "restore/prototype_filter.h"

#include "messages/trace_unit.h"

namespace orx {

namespace {
// Set in the record type of a model, and in the object type of a prototype's handle.
constexpr std::int32_t prototypeBit = 8;
constexpr std::int32_t rootRecord = 1;
}  // namespace

bool belongsToPrototypes(const DataBuffer& record) {
  ORX_TRACE("belongsToPrototypes");
  if ((record.recType() & prototypeBit) != 0) return trace.exit(true);
  if (record.hasNullObject()) return trace.exit(true);
  const CMConfigHandle parent = record.parentHandle();
  if (parent.isNull()) return trace.exit(record.recType() != rootRecord);
  return trace.exit((static_cast<std::int32_t>(parent.getType()) & prototypeBit) != 0);
}

}  // namespace orx
