#include "orxkdb/manual/completion.h"

namespace orx::orxkdb {

namespace {

// Reads the words before the current one: which subcommand it is, how many arguments it has got,
// and whether the word before was an option that takes the current one as its value. bash has made
// words of their own of "=".
constexpr const char* begin = R"sh(_@_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
}

_@_names() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <(compgen "$1" -- "$current")
}

_@() {
  local current=${COMP_WORDS[COMP_CWORD]} command="" arguments=0 option="" word
  COMPREPLY=()
  [ "$current" = "=" ] && current=""
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [ "$word" = "=" ] && continue
    if [ -n "$option" ]; then
      option=""
      continue
    fi
    case "$command $word" in
      @OPTIONS) option="$command $word" ;;
      *" -"?*) ;;
      *) if [ -z "$command" ]; then command=$word; else arguments=$((arguments + 1)); fi ;;
    esac
  done
)sh";

constexpr const char* end = R"sh(}

complete -F _@ @
)sh";

std::string withName(std::string text, const std::string& name) {
  for (auto at = text.find('@'); at != std::string::npos; at = text.find('@', at)) {
    // "${COMP_WORDS[@]" is the shell's own.
    if (at > 0 && text[at - 1] == '[') {
      ++at;
      continue;
    }
    text.replace(at, 1, name);
  }
  return text;
}

std::string actionOf(const CommandOption& option) {
  switch (option.kind) {
    case ValueKind::choice:
      return "words " + shell::quoted(shell::joined(option.choices));
    case ValueKind::file:
      return "names -f";
    case ValueKind::directory:
      return "names -d";
    default:
      return {};
  }
}

// A case of the shell: where `pattern` holds, the words or names of `option`.
std::string branch(const std::string& program, const std::string& pattern,
                   const CommandOption& option) {
  const std::string action = actionOf(option);
  if (action.empty()) return {};
  return "    " + shell::quoted(pattern) + ") _" + program + "_" + action + " ;;\n";
}

// Calls visit(words, option) for every option that takes a value and each of its names, "COMMAND
// OPTION". The program's own may stand before the subcommand and behind it.
template <typename Visit>
void forEachValueOption(const CommandTree& tree, Visit visit) {
  const auto visitAll = [&](const std::string& command, const CommandTree& owner) {
    for (const CommandOption& option : owner.options) {
      if (option.kind == ValueKind::none) continue;
      for (const std::string& name : option.names)
        visit(std::string(command).append(" ").append(name), option);
    }
  };
  visitAll("", tree);
  for (const CommandTree& command : tree.commands) {
    visitAll(command.name, tree);
    visitAll(command.name, command);
  }
}

std::string valueOptions(const CommandTree& tree) {
  std::string patterns;
  forEachValueOption(tree, [&patterns](const std::string& words, const CommandOption&) {
    patterns.append(patterns.empty() ? "" : " | ").append(shell::quoted(words));
  });
  return patterns.empty() ? "''" : patterns;
}

std::string values(const CommandTree& tree) {
  std::string text = "  case $option in\n    '') ;;\n";
  forEachValueOption(tree, [&](const std::string& words, const CommandOption& option) {
    text += branch(tree.name, words, option);
  });
  return text + "  esac\n  [ -n \"$option\" ] && return\n";
}

std::string options(const CommandTree& tree) {
  std::string text = "  if [[ $current == -* ]]; then\n    case $command in\n";
  const auto add = [&](const std::string& name, const CommandTree& command) {
    text += "      " + shell::quoted(name) + ") _" + tree.name + "_words " +
            shell::quoted(shell::joined(shell::namesOf(command.options))) + " ;;\n";
  };
  add("", tree);
  for (const CommandTree& command : tree.commands) add(command.name, command);
  return text + "    esac\n    return\n  fi\n";
}

// What may stand first: a subcommand, or an option where there are none.
std::string firstWords(const CommandTree& tree) {
  return shell::joined(tree.commands.empty() ? shell::namesOf(tree.options)
                                             : shell::namesOf(tree.commands));
}

std::string arguments(const CommandTree& tree) {
  std::string text = "  case \"$command $arguments\" in\n    ' 0') _" + tree.name + "_words " +
                     shell::quoted(firstWords(tree)) + " ;;\n";
  for (const CommandTree& command : tree.commands) {
    for (std::size_t i = 0; i < command.arguments.size(); ++i) {
      text += branch(tree.name, command.name + " " + std::to_string(i), command.arguments[i]);
    }
  }
  return text + "  esac\n";
}

}  // namespace

std::string bashCompletion(const CommandTree& tree) {
  std::string head = begin;
  head.replace(head.find("@OPTIONS"), std::string_view("@OPTIONS").size(), valueOptions(tree));
  return withName("# bash completion for @\n\n" + head, tree.name) + values(tree) + options(tree) +
         arguments(tree) + withName(end, tree.name);
}

}  // namespace orx::orxkdb
