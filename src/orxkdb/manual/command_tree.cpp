#include "orxkdb/manual/command_tree.h"

#include <CLI/CLI.hpp>
#include <string_view>

namespace orx::orxkdb {

namespace {

constexpr std::string_view rangeMark = " in [";

// The parser describes a value as TYPE, TYPE:{a,b} or TYPE:TYPE in [low - high].
std::vector<std::string> choicesOf(std::string_view type) {
  const auto begin = type.find(":{");
  if (begin == std::string_view::npos || !type.ends_with('}')) return {};
  return CLI::detail::split(std::string(type.substr(begin + 2, type.size() - begin - 3)), ',');
}

std::string rangeOf(const std::string& type) {
  const auto begin = type.find(rangeMark);
  if (begin == std::string::npos) return {};
  const std::string range = type.substr(begin + rangeMark.size());
  const auto middle = range.find(" - ");
  return range.substr(0, middle) + " to " + range.substr(middle + 3, range.size() - middle - 4);
}

std::string valueName(const std::string& type) {
  if (type.starts_with("UINT")) return "N";
  const std::vector<std::string> choices = choicesOf(type);
  if (!choices.empty()) return CLI::detail::join(choices, "|");
  return type.starts_with("TEXT") ? "" : type;
}

ValueKind kindOfOption(const CommandOption& option) {
  if (option.value.empty()) return ValueKind::none;
  if (!option.choices.empty()) return ValueKind::choice;
  return option.value.starts_with("FILE") ? ValueKind::file : ValueKind::text;
}

ValueKind kindOfArgument(std::string_view name) {
  if (name == "DIR") return ValueKind::directory;
  return name == "HANDLE" ? ValueKind::text : ValueKind::file;
}

CommandOption readOption(const CLI::Option& option) {
  CommandOption read;
  for (const std::string& name : option.get_snames()) read.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) read.names.push_back("--" + name);
  read.description = option.get_description();
  read.defaultValue = option.get_default_str();
  if (option.get_items_expected_max() > 0) {
    const std::string type = option.get_type_name();
    read.choices = choicesOf(type);
    read.range = rangeOf(type);
    read.value = valueName(type);
  }
  read.kind = kindOfOption(read);
  return read;
}

CommandOption readArgument(const CLI::Option& option) {
  CommandOption read;
  read.names.push_back(option.get_single_name());
  read.description = option.get_description();
  read.kind = kindOfArgument(read.names.front());
  read.required = option.get_required();
  return read;
}

std::string synopsisOf(const CommandTree& tree) {
  std::string synopsis = "[OPTIONS]";
  if (!tree.commands.empty()) synopsis += " SUBCOMMAND";
  for (const CommandOption& argument : tree.arguments) {
    const std::string& name = argument.names.front();
    synopsis += argument.required ? " " + name : " [" + name + "]";
  }
  return synopsis;
}

}  // namespace

CommandTree readCommandTree(const CLI::App& app) {
  CommandTree tree;
  tree.name = app.get_name();
  tree.description = app.get_description();
  tree.footer = app.get_footer();
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_group().empty()) continue;
    if (option->get_positional()) {
      tree.arguments.push_back(readArgument(*option));
    } else {
      tree.options.push_back(readOption(*option));
    }
  }
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    tree.commands.push_back(readCommandTree(*command));
  }
  tree.synopses.push_back(synopsisOf(tree));
  return tree;
}

}  // namespace orx::orxkdb
