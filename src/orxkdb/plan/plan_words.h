// What the text and the JSON of a plan have in common.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/plan/merge_plan.h"

namespace orx::orxkdb {

// Where a parameter of a plan comes from, and what becomes of it.
enum class ParameterFate : std::uint8_t {
  differs,  // in both; the database's value stays
  added,    // only in the backup
  kept,     // only in the database
  equal,    // in both
};

[[nodiscard]] ParameterFate fateOf(const ParameterPlan& parameter);

// "in the database" or "twice in the backup", literals.
[[nodiscard]] std::string_view wordsOf(KeyTaken why);

// What does not keep the merge from going on, but may not be what the operator wants; a sentence
// each.
[[nodiscard]] std::vector<std::string> warningsOf(const MergePlan& plan);

// The handle that an object of the plan has in the backup, as "TYPE:ID".
[[nodiscard]] std::string nameInBackup(const MergePlan& plan, HandleNumber object);

}  // namespace orx::orxkdb
