// PlanObserver: writes down in a MergePlan what a merge reads and decides. What comes of adding,
// and the system record's new size, is left to whoever runs the merge (plan_run.cpp).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "orxkdb/plan/merge_plan.h"
#include "records/merge_tables.h"
#include "restore/merge_observer.h"

namespace orx::orxkdb {

class PlanObserver : public MergeObserver {
 public:
  // The plan outlives the observer.
  explicit PlanObserver(MergePlan& plan) : plan_(plan) {}

  void currentRecord(const DataBuffer& record, bool isOfSystemRecord) override;
  void currentParameters(const CMSymParmSet& parameters, const CMAttribute* attribute) override;
  void alienParameters(const CMSymParmSet& parameters, const CMAttribute* attribute) override;
  void mergedParameters(const CMSymParmSet& parameters, const CMAttribute& attribute) override;
  void currentCounter(std::size_t handler, std::uint32_t counter) override;
  void finalCounters(const MergeTables& tables) override;
  void backupRecord(const BackupLine& line, const DataBuffer& record) override;
  void skippedRecord(const BackupLine& line, std::int32_t recType) override;

  // How many records that are none of the system record have the null handles and a number below
  // `length`: a system record of that many records takes their places.
  [[nodiscard]] std::uint64_t othersBelow(std::size_t length) const;
  // A copy of those of the merge, made when the whole backup is read.
  [[nodiscard]] const MergeTables& tables() const { return tables_; }

 private:
  MergePlan& plan_;
  MergeTables tables_;
  std::vector<std::uint32_t> others_;  // their numbers
};

}  // namespace orx::orxkdb
