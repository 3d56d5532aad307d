#include "orxkdb/diff/diff_run.h"

#include <compare>
#include <memory>

#include "orxkdb/diff/diff_report.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "platform/run_progress.h"

namespace orx::orxkdb {

namespace {

class DiffRun {
 public:
  DiffRun(const DiffOptions& options, RecordSource& before, RecordSource& after)
      : before_(before), after_(after), report_(options) {}

  Result run(DiffCounts& counts) {
    Result result = compareObjects();
    if (result.ok()) result = report_.finish(before_, after_);
    counts = report_.counts();
    return result;
  }

 private:
  // A merge of two sequences in ascending order. An input that failed looks as if it had ended.
  Result compareObjects() {
    runProgress().enter("comparing",
                        before_.source().expectedRecords() + after_.source().expectedRecords());
    Result result;
    (void)before_.next();
    (void)after_.next();
    while (result.ok() && inputs().ok() && (before_.hasChain() || after_.hasChain())) {
      result = compareNext();
    }
    return result.ok() ? inputs() : result;
  }

  [[nodiscard]] const Result& inputs() const {
    const Result& result = before_.source().result();
    return result.ok() ? after_.source().result() : result;
  }

  Result compareNext() {
    const std::strong_ordering order = orderOfNext();
    Result result;
    if (std::is_lt(order)) {
      result = report_.addOneSided(ObjectChange::removed, before_.chain());
    } else if (std::is_gt(order)) {
      result = report_.addOneSided(ObjectChange::added, after_.chain());
    } else if (sameRecords(before_.chain(), after_.chain())) {
      report_.addUnchanged();
    } else {
      result = report_.addChanged(before_.chain(), after_.chain());
    }
    if (std::is_lteq(order)) (void)before_.next();
    if (std::is_gteq(order)) (void)after_.next();
    return result;
  }

  [[nodiscard]] std::strong_ordering orderOfNext() const {
    if (!after_.hasChain()) return std::strong_ordering::less;
    if (!before_.hasChain()) return std::strong_ordering::greater;
    return before_.chain().key <=> after_.chain().key;
  }

  ChainReader before_;
  ChainReader after_;
  DiffReport report_;
};

}  // namespace

Result runDiff(const DiffOptions& options, DiffCounts& counts) {
  const bool bothAreDatabases = kdb::looksLikeDatabase(options.before.c_str()) &&
                                kdb::looksLikeDatabase(options.after.c_str());
  const Content content = bothAreDatabases ? Content::whole : Content::carried;
  std::unique_ptr<RecordSource> before;
  std::unique_ptr<RecordSource> after;
  Result result = openSource(options.before, content, options.limit, before);
  if (result.ok()) result = openSource(options.after, content, options.limit, after);
  return result.ok() ? DiffRun(options, *before, *after).run(counts) : result;
}

}  // namespace orx::orxkdb
