// What every subcommand has in common. A subcommand NAME lives in cmd_NAME.h and cmd_NAME.cpp: a
// struct of its options, a function that does its work, and a function of the type Registration
// that describes it to the command line. commands.cpp lists them all.
//
// The function that does the work prints its product and what was done on standard output, as JSON
// when `json` is set, and returns a failure without printing it: program.cpp does that. Every name
// of a database or file in the options is one of the file system, "-" where the header says so.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "orxkdb/result.h"

namespace CLI {
class App;
}

namespace orx::orxkdb {

// The work of the subcommand that the command line names, ready to run.
using Action = std::function<Result()>;

// The command line that subcommands are added to: the parser, and where the work of the subcommand
// that is named goes. Both outlive the parsing.
struct CommandLine {
  CLI::App& program;
  Action& action;
};

using Registration = void(CommandLine& line);

// A subcommand while it is described. Only command.cpp sees the parser for the subcommands: it is
// all in headers, which take long to compile. A `value` holds the default until the command line is
// read, and what was given afterwards; it must live as long as `work`, which shares it.
class Command {
 public:
  // `work` goes into line.action when the command line names the subcommand.
  Command(CommandLine& line, const std::string& name, const std::string& description, Action work);

  // Names in capital letters, "DB"; in the order of the command line, those that may be left out
  // last.
  void argument(const std::string& name, std::string& value, const std::string& description);
  void optionalArgument(const std::string& name, std::string& value,
                        const std::string& description);

  // Options have their names with the dashes, "--html". `valueName` is what the help calls the
  // value: "FILE". A value that does not fit is a usage failure.
  void option(const std::string& name, std::optional<std::string>& value,
              const std::string& valueName, const std::string& description);
  void requiredOption(const std::string& name, std::string& value, const std::string& valueName,
                      const std::string& description);
  void flag(const std::string& name, bool& value, const std::string& description);
  void choice(const std::string& name, std::string& value, const std::vector<std::string>& choices,
              const std::string& description);
  void number(const std::string& name, std::uint64_t& value, const std::string& description);
  void number(const std::string& name, std::uint32_t& value, const std::string& description,
              std::uint32_t lowest, std::uint32_t highest);

  // --limit of the subcommands that show lists; 0 stands for all.
  void limit(std::size_t& value, const std::string& description);
  // --json.
  void json(bool& value);

  // What the help shows last: paragraphs and examples.
  void footer(const std::string& text);

 private:
  CLI::App& command_;
};

}  // namespace orx::orxkdb
