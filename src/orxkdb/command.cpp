#include "orxkdb/command.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <utility>

namespace orx::orxkdb {

namespace {

// The parser itself takes "-1" for a very large number and "" for 0.
std::string limitFault(const std::string& text) {
  const bool isCount =
      !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
  return isCount ? "" : "\"" + text + "\" is no number of entries to show";
}

}  // namespace

Command::Command(CommandLine& line, const std::string& name, const std::string& description,
                 Action work)
    : command_(*line.program.add_subcommand(name, description)) {
  command_.callback([&action = line.action, work = std::move(work)] { action = work; });
}

void Command::argument(const std::string& name, std::string& value,
                       const std::string& description) {
  command_.add_option(name, value, description)->required()->type_name("");
}

void Command::optionalArgument(const std::string& name, std::string& value,
                               const std::string& description) {
  command_.add_option(name, value, description)->type_name("");
}

void Command::option(const std::string& name, std::optional<std::string>& value,
                     const std::string& valueName, const std::string& description) {
  command_.add_option(name, value, description)->type_name(valueName);
}

void Command::requiredOption(const std::string& name, std::string& value,
                             const std::string& valueName, const std::string& description) {
  command_.add_option(name, value, description)->required()->type_name(valueName);
}

void Command::flag(const std::string& name, bool& value, const std::string& description) {
  command_.add_flag(name, value, description);
}

void Command::choice(const std::string& name, std::string& value,
                     const std::vector<std::string>& choices, const std::string& description) {
  command_.add_option(name, value, description)
      ->check(CLI::IsMember(choices))
      ->capture_default_str();
}

void Command::number(const std::string& name, std::uint64_t& value,
                     const std::string& description) {
  command_.add_option(name, value, description)->capture_default_str();
}

void Command::number(const std::string& name, std::uint32_t& value, const std::string& description,
                     std::uint32_t lowest, std::uint32_t highest) {
  command_.add_option(name, value, description)
      ->check(CLI::Range(lowest, highest))
      ->capture_default_str();
}

void Command::limit(std::size_t& value, const std::string& description) {
  command_.add_option("--limit", value, description)
      ->check(CLI::Validator(limitFault, ""))
      ->capture_default_str();
}

void Command::json(bool& value) {
  flag("--json", value, "Print JSON, for scripts; its \"version\" is 1");
}

void Command::footer(const std::string& text) {
  command_.footer(text);
}

}  // namespace orx::orxkdb
