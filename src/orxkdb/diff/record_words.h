// What became of a record of a chain, in words and as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "orxkdb/diff/object_changes.h"
#include "orxkdb/words/head_fields.h"

namespace orx::orxkdb {

// The value of the field: a number, or a handle as in words/handle_words.h.
[[nodiscard]] std::string fieldWords(HeadField field, const DataBuffer& record);
[[nodiscard]] nlohmann::ordered_json fieldJson(HeadField field, const DataBuffer& record);

// "record 1: recType 3 -> 4, text of 20 -> 22 bytes, from byte 7 on "A=1;>" -> "A=222;>"".
[[nodiscard]] std::string recordText(const RecordChange& change);

// "recn" and "change"; of a changed record the "fields", each with "old" and "new".
[[nodiscard]] nlohmann::ordered_json recordJson(const RecordChange& change);

}  // namespace orx::orxkdb
