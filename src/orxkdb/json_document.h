// The JSON that the subcommands print with --json. A document is one object; it begins with
//
//   "format": "orxkdb-NAME", "version": 1
//
// NAME is the subcommand, or "failure" for one that failed. The version changes when a member goes
// away or means something else, not when one is added.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "orxkdb/result.h"

namespace orx::orxkdb {

// Its first members; the subcommand adds the others.
[[nodiscard]] nlohmann::ordered_json jsonDocument(std::string_view name);
// `document` with the members of `more` behind its own.
[[nodiscard]] nlohmann::ordered_json jsonDocument(std::string_view name,
                                                  const nlohmann::ordered_json& more);

// On lines of their own, indented by 2; what is no UTF-8 becomes U+FFFD.
[[nodiscard]] std::string jsonText(const nlohmann::ordered_json& document);
[[nodiscard]] std::string jsonLine(const nlohmann::ordered_json& value);

// The document of a failure: its exit code, what happened where, and what to do next.
[[nodiscard]] std::string failureJson(const Result& failure);

// Tells what was done, as JSON or in words, one line that names may stand in as they are; without
// words nothing. A script needs its document: exitFailed when it cannot
// be written, though all is done. Whether anybody reads the words does not matter.
Result tellOutcome(bool json, const nlohmann::ordered_json& document, std::string_view words);

// The usage failure of --json where standard output is taken by what the subcommand writes.
Result jsonNeedsFile(std::string_view command);

}  // namespace orx::orxkdb
