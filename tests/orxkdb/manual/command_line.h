// The command line of orxkdb, to compare its manual pages and completions with.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "orxkdb/commands.h"
#include "orxkdb/manual/command_tree.h"
#include "tests/support/program_runs.h"

namespace orx::test {

// The parser's own view of the subcommands.
struct CommandLine {
  orxkdb::Action action;
  CLI::App program{"", "orxkdb"};

  CommandLine() {
    orxkdb::CommandLine line{program, action};
    orxkdb::addCommands(line);
  }
  [[nodiscard]] std::vector<CLI::App*> commands() {
    return program.get_subcommands([](CLI::App*) { return true; });
  }
};

inline std::vector<std::string> optionNames(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

}  // namespace orx::test
