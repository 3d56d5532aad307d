// Completions: scripts that let a shell complete the subcommands, options, values and file names of
// a command line. They need nothing beside their shell.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/manual/command_tree.h"

namespace orx::orxkdb {

// To be read by the shell: completions/NAME of bash, _NAME of zsh, NAME.fish of fish. A program has
// either subcommands, with its own options before them and behind them, or nothing but options.
[[nodiscard]] std::string bashCompletion(const CommandTree& tree);
[[nodiscard]] std::string zshCompletion(const CommandTree& tree);
[[nodiscard]] std::string fishCompletion(const CommandTree& tree);

// What the three have in common.
namespace shell {

// `text` as one word of a shell command: in single quotes.
[[nodiscard]] std::string quoted(std::string_view text);
// With blanks between them.
[[nodiscard]] std::string joined(const std::vector<std::string>& words);
[[nodiscard]] std::vector<std::string> namesOf(const std::vector<CommandOption>& options);
[[nodiscard]] std::vector<std::string> namesOf(const std::vector<CommandTree>& commands);

}  // namespace shell

}  // namespace orx::orxkdb
