#include "orxkdb/manual/manual_options.h"

#include <CLI/CLI.hpp>

#include "orxkdb/input/line_reader.h"
#include "orxkdb/manual/completion.h"
#include "orxkdb/manual/formats_page.h"
#include "orxkdb/manual/program_notes.h"
#include "orxkdb/manual/program_page.h"
#include "orxkdb/manual/restore_help.h"
#include "orxkdb/output/output.h"

namespace orx::orxkdb {

namespace {

constexpr const char* ownPage = "orxkdb";
constexpr const char* restorePage = "orxrestore";
constexpr const char* formatsPageName = "orxkdb-formats";

Result readFailure(const LineReader& reader, LineOutcome outcome) {
  if (outcome == LineOutcome::error) return reader.failure("the document cannot be read");
  return fail(exitNotAsExpected, "a line of the document is too long", reader.place(),
              "break it into lines");
}

Result readDocument(std::vector<std::string>& lines) {
  LineReader reader;
  (void)reader.open(std::string(standardStream));
  std::string_view line;
  LineOutcome outcome = LineOutcome::line;
  while ((outcome = reader.next(line)) == LineOutcome::line) lines.emplace_back(line);
  return outcome == LineOutcome::end ? Result() : readFailure(reader, outcome);
}

Result writeRestorePage() {
  CommandTree tree;
  if (Result result = readRestoreHelp(tree); !result.ok()) return result;
  return writeStandardOutput(programPage(tree, restoreNotes()));
}

Result writeFormatsPage() {
  std::vector<std::string> lines;
  if (Result result = readDocument(lines); !result.ok()) return result;
  return writeStandardOutput(formatsPage(lines));
}

Result writePage(const CommandTree& tree, const std::string& page) {
  if (page == restorePage) return writeRestorePage();
  if (page == formatsPageName) return writeFormatsPage();
  return writeStandardOutput(programPage(tree, ownNotes()));
}

Result writeCompletion(const CommandTree& tree, const std::string& shell) {
  if (shell == "bash") return writeStandardOutput(bashCompletion(tree));
  return writeStandardOutput(shell == "zsh" ? zshCompletion(tree) : fishCompletion(tree));
}

Result writeRestoreCompletion(const CommandTree& /*own*/, const std::string& shell) {
  CommandTree tree;
  if (Result result = readRestoreHelp(tree); !result.ok()) return result;
  return writeCompletion(tree, shell);
}

using Writer = Result(const CommandTree& tree, const std::string& choice);

void addHidden(CommandLine& line, const std::string& name, Writer* write,
               const std::vector<std::string>& choices) {
  const auto take = [line, write](const std::string& choice) {
    line.program.require_subcommand(0);
    line.action = [write, tree = readCommandTree(line.program), choice] {
      return write(tree, choice);
    };
  };
  line.program.add_option_function<std::string>(name, take)
      ->check(CLI::IsMember(choices))
      ->group("");
}

}  // namespace

void addManualOptions(CommandLine& line) {
  const std::vector<std::string> shells{"bash", "zsh", "fish"};
  addHidden(line, "--man", writePage, {ownPage, restorePage, formatsPageName});
  addHidden(line, "--completion", writeCompletion, shells);
  addHidden(line, "--restore-completion", writeRestoreCompletion, shells);
}

}  // namespace orx::orxkdb
