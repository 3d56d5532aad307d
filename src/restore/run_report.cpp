#include "restore/run_report.h"

namespace orx {

RunReport& runReport() {
  static RunReport report;
  return report;
}

}  // namespace orx
