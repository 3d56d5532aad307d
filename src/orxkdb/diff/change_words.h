// What became of an object, in words and as JSON. Words are lines with their line ends; texts of
// records come printable in them.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "orxkdb/diff/chain.h"
#include "orxkdb/diff/object_changes.h"

namespace orx::orxkdb {

enum class ObjectChange { added, removed, changed };

// "added", "removed", "changed".
[[nodiscard]] const char* nameOf(ObjectChange change);

// An object that only one side has, added or removed: its heading line.
[[nodiscard]] std::string oneSidedText(ObjectChange change, const Chain& chain);
[[nodiscard]] nlohmann::ordered_json oneSidedJson(ObjectChange change, const Chain& chain);

// A heading line and a line for each change. The records are shown `withRecords`, and where nothing
// else tells what differs.
[[nodiscard]] std::string changedText(const ObjectChanges& changes, bool withRecords);
[[nodiscard]] nlohmann::ordered_json changedJson(const ObjectChanges& changes, bool withRecords);

}  // namespace orx::orxkdb
