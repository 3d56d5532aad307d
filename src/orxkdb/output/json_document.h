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

// The first members of the document of `name`; the subcommand adds the others.
[[nodiscard]] nlohmann::ordered_json jsonDocument(std::string_view name);
// The same with the members of `more` behind them.
[[nodiscard]] nlohmann::ordered_json jsonDocument(std::string_view name,
                                                  const nlohmann::ordered_json& more);

// Members on lines of their own, indented by 2, with a line end; or all on one line without one.
// What is no UTF-8 becomes U+FFFD.
[[nodiscard]] std::string jsonText(const nlohmann::ordered_json& document);
[[nodiscard]] std::string jsonLine(const nlohmann::ordered_json& value);

// The document of a failure: "code", its exit code; "text", what happened where; "hint", what to do
// next.
[[nodiscard]] std::string failureJson(const Result& failure);

// Tells on standard output what was done, as the document or in words. The words are one line:
// names may stand in them as they are, control bytes become "?"; empty words print nothing. A
// script needs its document: exitFailed when it cannot be written, though all is done. Whether the
// words can be written does not matter.
Result tellOutcome(bool json, const nlohmann::ordered_json& document, std::string_view words);

// The usage failure of --json where standard output is taken by what the subcommand writes.
Result jsonNeedsFile(std::string_view command);

}  // namespace orx::orxkdb
