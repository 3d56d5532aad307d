// Census: what a page shows of the objects of a database, gathered in one pass in database order:
// add() for every record, finish(), then the rest. Memory grows with the models and the record
// types alone.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "orxkdb/report/bar_chart.h"
#include "orxkdb/report/model_uses.h"
#include "orxkdb/report/object_list.h"
#include "orxkdb/result.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

class Census {
 public:
  void add(const DataBuffer& record);
  // Behind the last record.
  void finish();

  // Different pairs of parent and object handle.
  [[nodiscard]] std::uint64_t objects() const { return objects_; }
  // By the type of an object's first record.
  [[nodiscard]] const std::map<std::int32_t, std::uint64_t>& objectsOfType() const {
    return objectsOfType_;
  }
  [[nodiscard]] const SizeClasses& chainLengths() const { return chainLengths_; }
  [[nodiscard]] const SizeClasses& textSizes() const { return textSizes_; }  // of whole objects
  [[nodiscard]] const ModelUses& uses() const { return uses_; }
  // For whoever takes the list out.
  [[nodiscard]] ObjectList& list() { return list_; }

 private:
  void endObject();
  void countUses(bool isModel);

  DataBuffer head_;  // of the object that is being read
  std::uint64_t records_ = 0;
  std::uint64_t textBytes_ = 0;

  std::uint64_t objects_ = 0;
  std::map<std::int32_t, std::uint64_t> objectsOfType_;
  SizeClasses chainLengths_;
  SizeClasses textSizes_;
  ModelUses uses_;
  ObjectList list_;
};

// The whole pass. `census` is new, and of no use after a failure.
Result takeCensus(const std::string& database, Census& census);

// What tells an operator which object this is: the first value of its first attribute, as bytes,
// cut to 48; "system record" for that; may be empty. `head` is its first record.
[[nodiscard]] std::string labelOf(const DataBuffer& head);

}  // namespace orx::orxkdb
