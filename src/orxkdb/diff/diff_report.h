// DiffReport: writes the report of a comparison on standard output while it goes on, as text or as
// JSON. All objects are counted, the first of each kind are shown. A failure is that of writing
// (output.h), and ends the report.
#pragma once

#include <string_view>

#include "orxkdb/diff/change_words.h"
#include "orxkdb/diff/diff_counts.h"
#include "orxkdb/diff/diff_options.h"
#include "orxkdb/output/output.h"

namespace orx::orxkdb {

class DiffReport {
 public:
  explicit DiffReport(const DiffOptions& options) : options_(options) {}

  // These take the objects in key order.
  Result addOneSided(ObjectChange change, const Chain& chain);
  Result addChanged(const Chain& before, const Chain& after);
  void addUnchanged() { ++counts_.unchanged; }

  // The last call, when all objects have been seen: what was read, and the totals.
  Result finish(const ChainReader& before, const ChainReader& after);
  [[nodiscard]] const DiffCounts& counts() const { return counts_; }

 private:
  // Counts the object; whether it is to be shown.
  [[nodiscard]] bool count(ObjectChange change);
  Result writeObjectJson(const nlohmann::ordered_json& object);
  Result writeJsonStart();
  // `members` stand behind the objects.
  Result writeJsonEnd(const nlohmann::ordered_json& members);

  DiffOptions options_;
  DiffCounts counts_;
  Output output_;
  bool hasJsonStart_ = false;
  std::string_view separator_ = "\n";
};

}  // namespace orx::orxkdb
