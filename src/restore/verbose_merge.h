// VerboseMerge: what a verbose merge prints on standard output besides its messages. The merge then
// runs in one thread.
#pragma once

#include "restore/merge_observer.h"
#include "restore/verbose_lists.h"

namespace orx {

class VerboseMerge : public VerboseLists<MergeObserver> {
 public:
  void currentParameters(const CMSymParmSet& parameters, const CMAttribute* attribute) override;
  void alienParameters(const CMSymParmSet& parameters, const CMAttribute* attribute) override;
  void mergedParameters(const CMSymParmSet& parameters, const CMAttribute& attribute) override;
  void currentCounter(std::size_t handler, std::uint32_t counter) override;
  void tablesReady(const MergeTables& tables) override;
  void finalCounters(const MergeTables& tables) override;
  void backupRecord(const BackupLine& line, const DataBuffer& record) override;
  void searchedAttribute(int attrId) override;
  void foundAttribute(int attrId) override;
  void renumberedValue(const CMConfigHandle& old, const CMConfigHandle& moved) override;
  void mergedObject(const DataBuffer& head, const std::string& text) override;
  void remainingRecords(std::size_t list, std::size_t records) override;
};

}  // namespace orx
