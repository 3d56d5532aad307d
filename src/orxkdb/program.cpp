#include "orxkdb/program.h"

#include <unicode/uversion.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstdio>
#include <map>
#include <new>

#include "orxkdb/cmd_diff.h"
#include "orxkdb/commands.h"
#include "orxkdb/manual/manual_options.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"
#include "platform/interruption.h"
#include "terminal/color.h"
#include "terminal/file_words.h"
#include "terminal/progress_line.h"

namespace orx::orxkdb {

namespace {

constexpr const char* description =
    "orxkdb makes, reads and copies the configuration databases that orxrestore works on.";

constexpr const char* footer =
    "\"orxkdb SUBCOMMAND --help\" tells more about a subcommand and shows examples.\n\n"
    "Databases are changed in one step, whole or not at all; what was there before stays as\n"
    "DB.orx-previous, see \"orxkdb undo --help\". Reading is safe while other programs work.\n\n"
    "Exit codes:\n"
    "  0  done; diff: the two are the same\n"
    "  1  the command line is unusable; diff: the two differ\n"
    "  2  the input or the database is not what it should be; diff: the command line neither\n"
    "  5  a database or a file could not be opened\n"
    "  6  a failure on the way: disk, memory, closed output";

std::string versionText() {
  std::array<std::uint8_t, U_MAX_VERSION_LENGTH> number{};
  u_getVersion(number.data());
  std::array<char, U_MAX_VERSION_STRING_LENGTH> icu{};
  u_versionToString(number.data(), icu.data());
  return std::string("orxkdb " ORX_VERSION "\n") + kdb::engineVersion() + "\nICU " + icu.data();
}

const std::map<std::string, ColorChoice> colorChoices{{"auto", ColorChoice::automatic},
                                                      {"always", ColorChoice::always},
                                                      {"never", ColorChoice::never}};

// Before or behind the subcommand.
void addColor(CLI::App& program) {
  program.fallthrough();
  program
      .add_option_function<std::string>(
          "--color", [](const std::string& name) { chooseColor(colorChoices.at(name)); },
          "Paint reports and failures: auto (on a terminal, and NO_COLOR is not set), always, "
          "never")
      ->check(CLI::IsMember(colorChoices))
      ->type_name("WHEN");
}

// The parser takes whatever follows an option for its value, another option too, and would make a
// file of the name "--json".
std::string optionAsValue(const std::string& value) {
  if (value.size() < 2 || !value.starts_with('-')) return {};
  return "its value is missing, \"" + value +
         "\" counts as an option; a file of that name is \"./" + value + "\"";
}

void refuseOptionsAsValues(CLI::App& app) {
  for (CLI::Option* const option : app.get_options([](const CLI::Option* each) {
         return !each->get_positional() && each->get_items_expected_max() > 0;
       })) {
    option->check(CLI::Validator(optionAsValue, ""));
  }
  for (CLI::App* const command : app.get_subcommands([](const CLI::App*) { return true; })) {
    refuseOptionsAsValues(*command);
  }
}

void describeProgram(CommandLine& line) {
  CLI::App& program = line.program;
  program.set_version_flag("--version", versionText, "Print the versions of orxkdb and its parts");
  addColor(program);
  program.require_subcommand(1);
  program.footer(footer);
  addCommands(line);
  addManualOptions(line);
  refuseOptionsAsValues(program);
}

// A failure of diff must not look like a difference.
ExitCode usageCode(const CLI::App& program) {
  return program.got_subcommand(diffCommand) ? exitNotAsExpected : exitUsage;
}

// The parser calls a word that is no subcommand a missing one.
Result usageFailure(const CLI::App& program, const CLI::ParseError& error,
                    std::string_view firstWord) {
  std::string what = error.what();
  std::string help = "orxkdb";
  const auto commands = program.get_subcommands();
  if (!commands.empty()) {
    help += " " + commands.front()->get_name();
  } else if (!firstWord.empty() && !firstWord.starts_with('-')) {
    what = "there is no subcommand \"" + std::string(firstWord) + "\"";
  }
  return fail(usageCode(program), what, "command line", "see \"" + help + " --help\"");
}

// What the command line asks for; the help and the version are printed here.
Result readCommandLine(CLI::App& program, int argc, const char* const argv[]) {
  try {
    program.parse(argc, argv);
    return {};
  } catch (const CLI::CallForHelp&) {
    return writeStandardOutput(program.help());
  } catch (const CLI::CallForVersion& version) {
    return writeStandardOutput(std::string(version.what()) + "\n");
  } catch (const CLI::ParseError& error) {
    return usageFailure(program, error, argc > 1 ? argv[1] : "");
  }
}

Result runSteps(int argc, const char* const argv[]) {
  Action action;
  CLI::App program(description, "orxkdb");
  CommandLine line{program, action};
  describeProgram(line);
  Result read = readCommandLine(program, argc, argv);
  if (!read.ok() || !action) return read;
  const ProgressScope progress(true);
  return action();
}

// Also where the command line could not be read to its end.
bool wantsJson(int argc, const char* const argv[]) {
  return std::any_of(argv, argv + argc, [](std::string_view word) { return word == "--json"; });
}

// A subcommand that told its outcome in a document of its own needs no second one.
void reportAsJson(const Result& result) {
  if (!hasWrittenStandardOutput()) say(failureJson(result));
}

void reportFailure(const Result& result) {
  const std::string name = painted("orxkdb:", Paint::red, STDERR_FILENO);
  (void)std::fprintf(stderr, "%s %s\n", name.c_str(), onOneLine(result.text).c_str());
}

// Without taking memory.
void reportOutOfMemory(bool asJson) {
  constexpr const char* document =
      R"({"format": "orxkdb-failure", "version": 1, "code": 6, )"
      R"("text": "memory ran out, no database and no file was changed", )"
      R"("hint": "free memory and run this again"})"
      "\n";
  constexpr const char* documentBehind =
      R"({"format": "orxkdb-failure", "version": 1, "code": 6, )"
      R"("text": "memory ran out behind the change", "hint": "the result has its name already"})"
      "\n";
  const bool isPublished = hasPublished();
  if (asJson && !hasWrittenStandardOutput()) say(isPublished ? documentBehind : document);
  (void)std::fputs(
      isPublished ? "orxkdb: memory ran out behind the change, the result has its name already\n"
                  : "orxkdb: memory ran out, no database and no file was changed, free memory and "
                    "run this again\n",
      stderr);
}

}  // namespace

int run(int argc, const char* const argv[]) {
  try {
    const Result result = runSteps(argc, argv);
    if (!result.ok() && wantsJson(argc, argv)) reportAsJson(result);
    if (!result.ok()) reportFailure(result);
    return result.code;
  } catch (const std::bad_alloc&) {
    reportOutOfMemory(wantsJson(argc, argv));
    return exitFailed;
  }
}

}  // namespace orx::orxkdb
