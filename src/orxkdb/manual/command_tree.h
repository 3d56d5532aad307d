// CommandTree: what the command line of a program takes, as plain values. The manual page and the
// completions are written from it, so that they cannot differ from what the program accepts.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace orx::orxkdb {

// What stands behind an option or in the place of an argument, as far as a shell can help with it.
enum class ValueKind : std::int32_t { none, text, choice, file, directory };

struct CommandOption {
  std::vector<std::string> names;  // "-h", "--help"; of an argument its one name, "DB"
  std::string value;               // what the value of an option is called; empty for a flag
  std::string description;
  std::string range;         // "20 to 50000000", or empty
  std::string defaultValue;  // or empty
  std::vector<std::string> choices;
  ValueKind kind = ValueKind::none;
  bool required = false;
};

struct CommandTree {
  std::string name;
  std::string description;
  std::string footer;                 // paragraphs between empty lines, see help_text.h
  std::vector<std::string> synopses;  // what stands behind the name, a line each
  std::vector<CommandOption> arguments;
  std::vector<CommandOption> options;
  std::vector<CommandTree> commands;
};

// Everything that the help of `app` shows, in its order; hidden options are left out.
[[nodiscard]] CommandTree readCommandTree(const CLI::App& app);

}  // namespace orx::orxkdb
