// ErrorMsg: the one line that reports a failed call of the keyed database.
#pragma once

#include <cstdint>
#include <string_view>

namespace orx {

// The operator's names of the database's codes and reasons (platform/kdb_codes.h), literals;
// "Unknown" outside their tables.
[[nodiscard]] std::string_view returnCodeName(std::int32_t returnCode);
[[nodiscard]] std::string_view reasonName(std::int32_t reason);

// Prints "text, RC=code(name), RSN=reason(name)" and a line end on standard output.
void ErrorMsg(std::int32_t returnCode, std::int32_t reason, const char* text);

}  // namespace orx
