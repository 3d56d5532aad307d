#include "orxkdb/command.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <limits>
#include <utility>

namespace orx::orxkdb {

namespace {

template <typename Number>
bool readNumber(const std::string& text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  return read.ec == std::errc() && read.ptr == end;
}

// The parser itself takes "-1" for a very large number, "" for 0 and "010" for 8.
template <typename Number>
CLI::Option* addNumber(CLI::App& command, const std::string& name, Number& value,
                       const std::string& description, Number lowest, Number highest) {
  const auto fault = [lowest, highest](const std::string& text) {
    Number number{};
    const bool fits = readNumber(text, number) && number >= lowest && number <= highest;
    return fits ? ""
                : "\"" + text + "\" is no number from " + std::to_string(lowest) + " to " +
                      std::to_string(highest);
  };
  const auto take = [&value](const std::string& text) { (void)readNumber(text, value); };
  return command.add_option_function<std::string>(name, take, description)
      ->check(CLI::Validator(fault, ""))
      ->type_name("UINT")
      ->default_str(std::to_string(value));
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
  addNumber(command_, name, value, description, std::uint64_t{0},
            std::numeric_limits<std::uint64_t>::max());
}

void Command::number(const std::string& name, std::uint32_t& value, const std::string& description,
                     std::uint32_t lowest, std::uint32_t highest) {
  addNumber(command_, name, value, description, lowest, highest)
      ->type_name("UINT in [" + std::to_string(lowest) + " - " + std::to_string(highest) + "]");
}

void Command::limit(std::size_t& value, const std::string& description) {
  number("--limit", value, description);
}

void Command::json(bool& value) {
  flag("--json", value, "Print JSON, for scripts; its \"version\" is 1");
}

void Command::footer(const std::string& text) {
  command_.footer(text);
}

}  // namespace orx::orxkdb
