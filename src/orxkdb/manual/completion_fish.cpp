#include "orxkdb/manual/completion.h"

namespace orx::orxkdb {

namespace {

// In fish a backslash escapes within single quotes as well.
std::string quoted(std::string_view text) {
  std::string word = "'";
  for (const char character : text) {
    if (character == '\'' || character == '\\') word += '\\';
    word += character;
  }
  return word + "'";
}

// -s h -l help
std::string nameWords(const CommandOption& option) {
  std::string words;
  for (const std::string& name : option.names) {
    words += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + quoted(name.substr(1));
  }
  return words;
}

std::string valueWords(const CommandOption& option) {
  switch (option.kind) {
    case ValueKind::choice:
      return " -x -a " + quoted(shell::joined(option.choices));
    case ValueKind::file:
      return " -r -F";
    case ValueKind::directory:
      return " -x -a '(__fish_complete_directories)'";
    case ValueKind::text:
      return " -x";
    default:
      return {};
  }
}

std::string optionLines(const std::string& start, const CommandTree& command) {
  std::string lines;
  for (const CommandOption& option : command.options) {
    lines += start + nameWords(option) + valueWords(option) + " -d " + quoted(option.description);
    lines += "\n";
  }
  return lines;
}

// fish does not count arguments: a subcommand that takes a file somewhere offers files everywhere.
std::string argumentLine(const std::string& start, const CommandTree& command) {
  for (const CommandOption& argument : command.arguments) {
    if (argument.kind == ValueKind::file) return start + " -F\n";
    if (argument.kind == ValueKind::directory) {
      return start + " -a '(__fish_complete_directories)'\n";
    }
  }
  return {};
}

}  // namespace

std::string fishCompletion(const CommandTree& tree) {
  const std::string complete = "complete -c " + tree.name;
  std::string text = "# fish completion for " + tree.name + "\n\n" + complete + " -f\n";
  const std::string first = complete + (tree.commands.empty() ? "" : " -n __fish_use_subcommand");
  text += optionLines(first, tree);
  for (const CommandTree& command : tree.commands) {
    const std::string start =
        complete + " -n " + quoted("__fish_seen_subcommand_from " + command.name);
    text += "\n" + first + " -a " + command.name + " -d " + quoted(command.description) + "\n";
    text += argumentLine(start, command) + optionLines(start, command);
  }
  return text;
}

}  // namespace orx::orxkdb
