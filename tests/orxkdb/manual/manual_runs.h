// Runs of orxkdb that print pages and completions, and its command line to compare them with.
#pragma once

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "orxkdb/commands.h"
#include "orxkdb/manual/command_tree.h"
#include "tests/support/places.h"
#include "tests/support/run_program.h"
#include "tests/support/temp_dir.h"

namespace orx::test {

inline ProgramResult runOrxkdb(std::vector<std::string> arguments, const TempDir& directory,
                               const std::string& input = "") {
  return runProgram({.file = builtProgram("orxkdb"),
                     .arguments = std::move(arguments),
                     .directory = directory.path(),
                     .input = input});
}

// The parser's own view of the subcommands.
struct CommandLine {
  orxkdb::Action action;
  CLI::App program{"", "orxkdb"};

  CommandLine() { orxkdb::addCommands(program, action); }
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
