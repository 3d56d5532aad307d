#include "orxkdb/limit_option.h"

#include <CLI/CLI.hpp>
#include <algorithm>

namespace orx::orxkdb {

namespace {

// The parser itself takes "-1" for a very large number and "" for 0.
std::string limitFault(const std::string& text) {
  const bool isCount =
      !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
  return isCount ? "" : "\"" + text + "\" is no number of entries to show";
}

}  // namespace

void addLimit(CLI::App& command, std::size_t& limit, const std::string& description) {
  command.add_option("--limit", limit, description)
      ->check(CLI::Validator(limitFault, ""))
      ->capture_default_str();
}

}  // namespace orx::orxkdb
