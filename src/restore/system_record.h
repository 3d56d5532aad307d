// SystemRecord: the system record of a configuration database, as a merge reads and changes it.
//
// It is made of the records whose object handle is null and whose `auxValue2` is 0, whatever their
// parent is; it is written as a chain whose handles are both null. Two attributes of its text
// matter here:
//   1  the system parameters, one value (model/sym_parm_set.h)
//   9  the identifier counters: value i is the next identifier of handle type handlerTypes[i]
// All others stay as they are. Nothing here writes to a database.
//
// Order of calls: takeRecord for every record; readText; when that was true, readTables,
// mergeParameters and writeCounters, once each.
#pragma once

#include <string>

#include "model/attribute_set.h"
#include "model/sym_parm_set.h"
#include "records/data_buffer.h"
#include "records/merge_tables.h"
#include "restore/merge_observer.h"

namespace orx {

class SystemRecord {
 public:
  // Whether `record` is one of the system record.
  [[nodiscard]] static bool holds(const DataBuffer& record) {
    return record.auxValue2() == 0 && record.hasNullObject();
  }

  // Takes a record of the database; those of the system record add to its text. To be called in
  // database order. True when it was one of the system record.
  bool takeRecord(const DataBuffer& record);

  // Reads the text that was taken. False when it has no counters: there is nothing to merge into.
  [[nodiscard]] bool readText();
  // Sets `idBase` and `nextId` from the counters; one that is no number leaves its type at 0.
  void readTables(MergeTables& tables, MergeObserver& observer);

  // Adds the parameters of another database's system record, given as its text (null: there is
  // none), to those here; of two with one name the one here stays. Nothing is added when the
  // database has no attribute for parameters.
  void mergeParameters(const std::string* alienText, MergeObserver& observer);
  // Makes `nextId` the new counters, one for each of handlerTypes.
  void writeCounters(const MergeTables& tables, MergeObserver& observer);

  // As read, and as merged once mergeParameters and writeCounters were called.
  [[nodiscard]] const CMAttributeSet& attributes() const { return attributes_; }
  [[nodiscard]] const CMSymParmSet& parameters() const { return parameters_; }

 private:
  [[nodiscard]] CMAttribute* counters();
  [[nodiscard]] CMAttribute* parameterAttribute();

  std::string text_;
  CMAttributeSet attributes_;
  CMSymParmSet parameters_;
};

}  // namespace orx
