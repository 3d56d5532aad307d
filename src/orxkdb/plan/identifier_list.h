// IdentifierList: the identifiers that the objects of a merge get, brought into ranges.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "orxkdb/plan/merge_plan.h"
#include "records/merge_tables.h"

namespace orx::orxkdb {

class IdentifierList {
 public:
  // The handle of an object under its new identifier; 4 bytes are kept. The null handle has none.
  void add(const CMConfigHandle& object);

  // What became of them, ascending by type; `tables`, those of the merge, lead back to the
  // identifiers in the backup. The list is empty afterwards.
  [[nodiscard]] std::vector<TypeIdentifiers> take(const MergeTables& tables);

 private:
  std::array<std::vector<std::uint32_t>, 256> byType_;
};

}  // namespace orx::orxkdb
