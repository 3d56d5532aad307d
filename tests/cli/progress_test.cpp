// Progress and colours on a pseudo-terminal: what is drawn while a run goes on, and that nothing of
// it is left.
#include <gmock/gmock.h>

#include "restore/exit_codes.h"
#include "terminal/progress_text.h"
#include "tests/support/program_runs.h"
#include "tests/support/small_fleet.h"
#include "tests/support/terminal_run.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::ContainsRegex, testing::HasSubstr, testing::Not;

// A restore from a pipe that gives its lines in two halves, then `rest` after a while.
std::string slowRestore(const std::string& command = "orxrestore -i pipe -o db",
                        const std::string& rest = "true") {
  return "rm -f pipe; mkfifo pipe; "
         "{ head -n 2500 lines; sleep 0.9; tail -n 2500 lines; sleep 0.6; " +
         rest + "; } > pipe 2>/dev/null & exec " + command;
}

const std::string slowLoad =
    "orxkdb dump db > dump; { sed '$d' dump; sleep 1; tail -n 1 dump; } | orxkdb load new";

class Progress : public testing::Test {
 protected:
  Progress() {
    writeEchoBundle(directory_.path());
    createDatabase(directory_.file("db"), 3);
    writeFile(directory_ / "lines", resourceLines(5000));
  }

  TerminalResult shell(const std::string& script, const TerminalRun& run) {
    return runOnTerminal(directory_, script, run);
  }

  TempDir directory_;
};

TEST_F(Progress, FitsTheTerminalAndLeavesNothing) {
  const struct {
    unsigned short columns;
    std::string script;
    std::size_t widest;
    const char* drawn;
  } cases[] = {{80, slowRestore(), 79, "adding  [0-9]+ records/s  0:01"},
               {20, slowRestore(), 19, "adding  "},
               {80, slowRestore("env COLUMNS=20 orxrestore -i pipe -o db"), 19, "adding  "},
               {80, slowLoad, 79, "adding  "}};
  for (const auto& row : cases) {
    SCOPED_TRACE(row.script);
    const auto result = shell(row.script, {.columns = row.columns, .outputIsFile = true});
    EXPECT_EQ(result.exitCode, exitSuccess);
    EXPECT_THAT(result.drawn, ContainsRegex(row.drawn));
    EXPECT_LE(result.widest, row.widest) << result.drawn;
    EXPECT_EQ(result.screen, "") << result.drawn;
    EXPECT_LE(std::ranges::count(result.drawn, '\r'), 25) << "more than ten in a second";
  }
}

TEST_F(Progress, MessagesAndHintsStandAlone) {
  const auto together = shell(slowRestore(), {.columns = 200});
  EXPECT_THAT(together.drawn, HasSubstr("adding  "));
  EXPECT_THAT(together.screen,
              ContainsRegex(
                  "\nIDS_MAIN_THIRD\\(db\\)\nIDS_MAIN_FIFTH\\(3\\)\nIDS_MAIN_EIGHTH\\(5000\\)\n$"));
  EXPECT_THAT(together.screen, Not(HasSubstr("adding")));

  const auto failed = shell(slowRestore("orxrestore -i pipe -o db", "head -n 1 lines"),
                            {.columns = 200, .outputIsFile = true});
  EXPECT_EQ(failed.exitCode, exitFailed);
  EXPECT_THAT(failed.drawn, HasSubstr("adding  "));
  EXPECT_TRUE(failed.screen.starts_with("orxrestore: ")) << failed.screen;
  EXPECT_THAT(failed.screen, Not(HasSubstr("adding ")));

  const auto interrupted = shell(slowRestore("orxrestore -i pipe -o db", "sleep 30"),
                                 {.outputIsFile = true, .isInterrupted = true});
  EXPECT_THAT(interrupted.drawn, HasSubstr("adding"));
  EXPECT_EQ(interrupted.exitCode, 130);
  EXPECT_EQ(interrupted.screen, "orxrestore: interrupted: the database is unchanged\n");
}

TEST_F(Progress, IsNotDrawnInAShortRunNorWithVOrOnADumbTerminal) {
  for (const std::string& script :
       {std::string("exec orxrestore -i lines -o db"), slowRestore("orxrestore -i pipe -o db -v"),
        "export TERM=dumb; " + slowLoad}) {
    EXPECT_EQ(shell(script, {.outputIsFile = true}).drawn, "") << script;
  }
}

TEST(ProgressText, LeavesOutWhatDoesNotFit) {
  const ProgressView known{.phase = "adding", .share = 0.425, .rate = 61234.4, .secondsLeft = 72.9};
  const ProgressView waiting{.phase = "syncing", .seconds = 3725};
  const struct {
    const ProgressView& view;
    std::size_t width;
    const char* text;
  } cases[] = {
      {known, 79, "adding   42 %  [########------------]  61234 records/s  1:12 left"},
      {known, 50, "adding   42 %  61234 records/s  1:12 left"},
      {known, 19, "adding   42 %"},
      {waiting, 79, "syncing  1:02:05"},
  };
  for (const auto& row : cases) EXPECT_EQ(progressText(row.view, row.width), row.text);
}

// Findings and differences; JSON and files stay plain.
TEST_F(Progress, ColourFollowsOptionEnvironmentAndTerminal) {
  makeDatabase(directory_.file("bad"), {plainLine(1), referringLine(2)});
  const std::pair<const char*, bool> cases[] = {
      {"orxkdb check bad", true},
      {"orxkdb --color always check bad | cat", true},
      {"orxkdb diff --color always db bad | cat", true},
      {"orxkdb check --color never bad", false},
      {"NO_COLOR=1 orxkdb check bad", false},
      {"TERM=dumb orxkdb check bad", false},
      {"orxkdb check bad 2>&1 | cat", false},
      {"orxkdb check --json --color always bad 2>/dev/null | cat", false},
  };
  for (const auto& [command, painted] : cases) {
    const std::string drawn = shell(command, {}).drawn;
    EXPECT_EQ(drawn.find("\033[") != std::string::npos, painted) << command << drawn;
  }
  EXPECT_THAT(shell("orxkdb --color sometimes check bad", {}).drawn, HasSubstr("--help\""));
}

}  // namespace
}  // namespace orx::test
