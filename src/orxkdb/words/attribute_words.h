// The attributes of an object in words and as JSON.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "records/data_buffer.h"

namespace orx::orxkdb {

// `text` is the joined text of an object's records, `head` the first of them. Words are lines with
// their line ends and printable; the JSON is an array.
[[nodiscard]] std::string attributesText(std::string_view text, const DataBuffer& head);
[[nodiscard]] nlohmann::ordered_json attributesJson(std::string_view text, const DataBuffer& head);

// What reading leaves over of `text`, a view of it; empty when it is read to its end.
[[nodiscard]] std::string_view unreadText(std::string_view text);

}  // namespace orx::orxkdb
