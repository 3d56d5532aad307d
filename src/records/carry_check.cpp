#include "records/carry_check.h"

#include "records/backup_layout.h"
#include "records/data_buffer.h"
#include "records/record_trace.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = recordTraceUnit;

bool fitsColumn(std::int32_t value) {
  return value >= backup_layout::lowestNumber && value <= backup_layout::highestNumber;
}

}  // namespace

CarryProblem checkCarry(const DataBuffer& buffer) {
  ORX_TRACE("checkCarry");
  using enum CarryProblem;
  if (!fitsColumn(static_cast<std::int32_t>(buffer.recn()))) return trace.exit(recordNumber);
  if (!fitsColumn(buffer.recType())) return trace.exit(recordType);
  if (!fitsColumn(buffer.auxValue1())) return trace.exit(firstAuxiliary);
  if (!fitsColumn(buffer.auxValue2())) return trace.exit(secondAuxiliary);
  if (buffer.text().find('\n') != std::string_view::npos) return trace.exit(lineFeed);
  return trace.exit(none);
}

const char* describe(CarryProblem problem) {
  switch (problem) {
    case CarryProblem::none:
      break;
    case CarryProblem::recordNumber:
      return "the record number needs more than the 8 characters of its column";
    case CarryProblem::recordType:
      return "the record type needs more than the 8 characters of its column";
    case CarryProblem::firstAuxiliary:
      return "the first auxiliary value needs more than the 8 characters of its column";
    case CarryProblem::secondAuxiliary:
      return "the second auxiliary value needs more than the 8 characters of its column";
    case CarryProblem::lineFeed:
      return "the data holds a line feed, which would end the backup line";
  }
  return "nothing is lost";
}

}  // namespace orx
