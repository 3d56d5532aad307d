#include "orxkdb/manual/completion.h"

namespace orx::orxkdb {

namespace {

// In the words of _arguments "[", "]" and ":" have a meaning.
std::string escaped(std::string_view text) {
  std::string word;
  for (const char character : text) {
    if (character == '[' || character == ']' || character == ':' || character == '\\') word += '\\';
    word += character;
  }
  return word;
}

std::string actionOf(const CommandOption& option) {
  switch (option.kind) {
    case ValueKind::choice:
      return "(" + shell::joined(option.choices) + ")";
    case ValueKind::file:
      return "_files";
    case ValueKind::directory:
      return "_files -/";
    default:
      return " ";
  }
}

// '(-h --help)--help[words]:VALUE:action', a line for each name.
std::string optionWords(const CommandOption& option, const std::string& indent) {
  std::string text;
  for (const std::string& name : option.names) {
    std::string word;
    if (option.names.size() > 1) word += "(" + shell::joined(option.names) + ")";
    word += name;
    if (option.kind != ValueKind::none && name.starts_with("--")) word += "=";
    word += "[" + escaped(option.description) + "]";
    if (option.kind != ValueKind::none) {
      word += ":" + escaped(option.value) + ":" + actionOf(option);
    }
    text += " \\\n" + indent + shell::quoted(word);
  }
  return text;
}

std::string argumentWords(const CommandOption& argument, const std::string& indent) {
  const std::string separator = argument.required ? ":" : "::";
  return " \\\n" + indent +
         shell::quoted(separator + escaped(argument.names.front()) + ":" + actionOf(argument));
}

std::string commandList(const CommandTree& tree) {
  std::string text = "  local -a commands=(\n";
  for (const CommandTree& command : tree.commands) {
    text += "    " + shell::quoted(command.name + ":" + escaped(command.description)) + "\n";
  }
  return text + "  )\n";
}

std::string branch(const CommandTree& command) {
  std::string text = "        " + command.name + ")\n          _arguments -s";
  const std::string indent(12, ' ');
  for (const CommandOption& option : command.options) text += optionWords(option, indent);
  for (const CommandOption& argument : command.arguments) text += argumentWords(argument, indent);
  return text + " ;;\n";
}

std::string ownOptions(const CommandTree& tree) {
  std::string text;
  for (const CommandOption& option : tree.options) text += optionWords(option, "    ");
  return text;
}

std::string withoutSubcommands(const CommandTree& tree) {
  return "  _arguments -s" + ownOptions(tree) + "\n";
}

std::string withSubcommands(const CommandTree& tree) {
  std::string text = "  local curcontext=$curcontext state line\n" + commandList(tree) +
                     "  _arguments -C" + ownOptions(tree);
  text +=
      " \\\n    '1:subcommand:->subcommand' \\\n    '*::argument:->arguments'\n"
      "  case $state in\n    subcommand) _describe subcommand commands ;;\n"
      "    arguments)\n      case $line[1] in\n";
  for (const CommandTree& command : tree.commands) text += branch(command);
  return text + "      esac ;;\n  esac\n";
}

}  // namespace

std::string zshCompletion(const CommandTree& tree) {
  const std::string body = tree.commands.empty() ? withoutSubcommands(tree) : withSubcommands(tree);
  return "#compdef " + tree.name + "\n\n_" + tree.name + "() {\n" + body + "}\n\n_" + tree.name +
         " \"$@\"\n";
}

}  // namespace orx::orxkdb
