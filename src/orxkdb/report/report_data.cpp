#include "orxkdb/report/report_data.h"

#include <sys/stat.h>

#include "orxkdb/check/check_run.h"
#include "orxkdb/plan/plan_run.h"
#include "platform/file.h"

namespace orx::orxkdb {

namespace {

// False when there is none; the passes over the database tell why.
bool look(const std::string& name, struct stat& file) {
  return ::stat(name.c_str(), &file) == 0;
}

Result gatherPlan(ReportData& data) {
  if (!data.backup) return {};
  return planMerge(data.database, *data.backup, data.limit, data.plan.emplace());
}

Result gatherParts(ReportData& data) {
  if (Result result = gatherStatistics(data.database, data.statistics); !result.ok()) return result;
  if (Result result = runCheck(data.database, data.findings, data.counts); !result.ok()) {
    return result;
  }
  if (Result result = takeCensus(data.database, data.census); !result.ok()) return result;
  return gatherPlan(data);
}

}  // namespace

Result gather(ReportData& data) {
  struct stat before {};
  struct stat after {};
  const bool wasThere = look(data.database, before);
  if (Result result = gatherParts(data); !result.ok()) return result;
  if (wasThere && look(data.database, after) && sameFile(before, after)) return {};
  return fail(exitFailed, "the database was replaced while it was read", data.database,
              "run this again");
}

}  // namespace orx::orxkdb
