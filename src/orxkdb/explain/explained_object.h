// An object of a database, taken apart: its records, its attributes and what their values mean.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/keys/handle_number.h"
#include "orxkdb/result.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

// Which object is asked for: "<1;1;4;0;0;0;9;>", "0900000000000401" or "4:9".
struct ObjectQuery {
  HandleNumber handle = nullHandle;
  bool exact = false;  // all 8 bytes have to be the same, else only the exported form

  [[nodiscard]] bool matches(HandleNumber object) const {
    return exact ? object == handle : normalForm(object) == normalForm(handle);
  }
};

// Reads one of these three forms; exitUsage for any other text. Only the hexadecimal one is exact.
Result readQuery(std::string_view text, ObjectQuery& query);

// The records with one parent and one object handle, in order, one at least.
using ObjectRecords = std::vector<DataBuffer>;

// Adds every object of that handle to `objects`: there may be one below each of several parents, or
// none, which is no failure. Reads the whole database.
Result findObjects(const std::string& database, const ObjectQuery& query,
                   std::vector<ObjectRecords>& objects);

[[nodiscard]] std::string objectText(const ObjectRecords& records);
[[nodiscard]] nlohmann::ordered_json objectJson(const ObjectRecords& records);

}  // namespace orx::orxkdb
