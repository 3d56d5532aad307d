// Progress and colours on a pseudo-terminal: what is drawn while a run goes on, and that nothing of
// it is left.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "restore/exit_codes.h"
#include "terminal/progress_text.h"
#include "tests/support/places.h"
#include "tests/support/small_fleet.h"
#include "tests/support/temp_dir.h"
#include "tests/support/terminal_run.h"
#include "tests/support/test_bundle.h"

namespace orx::test {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class Progress : public testing::Test {
 protected:
  Progress() {
    writeEchoBundle(directory_.path());
    createDatabase(directory_.file("db"), 3);
    writeFile(directory_ / "lines", resourceLines(5000));
  }

  // A restore from a pipe that gives its lines at once, then `rest` after a while.
  TerminalResult restore(const TerminalRun& run, const std::string& rest = "true",
                         const std::string& options = "", const char* columns = "") {
    const std::string environment = *columns == '\0' ? "" : std::string("env COLUMNS=") + columns;
    return shell(
        "rm -f pipe; mkfifo pipe; "
        "{ head -n 2500 lines; sleep 0.9; tail -n 2500 lines; sleep 0.6; " +
            rest + "; } > pipe 2>/dev/null & exec " + environment + " orxrestore -i pipe -o db " +
            options,
        run);
  }

  TerminalResult shell(const std::string& script, const TerminalRun& run) {
    return runOnTerminal(
        {.file = "/bin/bash",
         .arguments = {"-c", script},
         .directory = directory_.path(),
         .environment = {"PATH=" + programsDirectory().string() + ":/usr/bin:/bin", "TERM=xterm"}},
        run);
  }

  TempDir directory_;
};

TEST_F(Progress, FitsTheTerminalAndLeavesNothing) {
  const struct {
    unsigned short columns;
    const char* variable;
    std::size_t widest;
  } cases[] = {{80, "", 79}, {20, "", 19}, {80, "20", 19}, {3, "", 2}};
  for (const auto& row : cases) {
    const auto result =
        restore({.columns = row.columns, .outputIsFile = true}, "true", "", row.variable);
    EXPECT_EQ(result.exitCode, exitSuccess);
    EXPECT_THAT(result.drawn, HasSubstr(row.columns < 6 ? "ad" : "adding  "));
    EXPECT_LE(result.widest, row.widest) << result.drawn;
    EXPECT_EQ(result.screen, "") << result.drawn;
    const auto draws = std::count(result.drawn.begin(), result.drawn.end(), '\r');
    EXPECT_LE(draws, 25) << "more than ten in a second";
    const char* const whole = "adding  [0-9]+ records/s  0:01";
    if (row.widest == 79) {
      EXPECT_THAT(result.drawn, ContainsRegex(whole));
    }
  }
}

TEST_F(Progress, MessagesAndHintsStandAlone) {
  const auto together = restore({.columns = 200});
  EXPECT_THAT(together.drawn, HasSubstr("adding  "));
  EXPECT_THAT(together.screen,
              ContainsRegex(
                  "\nIDS_MAIN_THIRD\\(db\\)\nIDS_MAIN_FIFTH\\(3\\)\nIDS_MAIN_EIGHTH\\(5000\\)\n$"));
  EXPECT_THAT(together.screen, Not(HasSubstr("adding")));

  const auto failed = restore({.columns = 200, .outputIsFile = true}, "head -n 1 lines");
  EXPECT_EQ(failed.exitCode, exitFailed);
  EXPECT_THAT(failed.drawn, HasSubstr("adding  "));
  EXPECT_TRUE(failed.screen.starts_with("orxrestore: ")) << failed.screen;
  EXPECT_THAT(failed.screen, Not(HasSubstr("adding ")));

  bool sent = false;
  const auto interrupted =
      restore({.outputIsFile = true, .onDrawn = [&](int process, const auto& drawn) {
                 if (sent || drawn.find("adding") == std::string::npos) return;
                 sent = kill(process, SIGINT) == 0;
               }});
  EXPECT_EQ(interrupted.exitCode, 130);
  EXPECT_EQ(interrupted.screen, "orxrestore: interrupted: the database is unchanged\n");
}

TEST_F(Progress, IsNotDrawnInAShortRunNorWithVOrOnADumbTerminal) {
  const TerminalRun quiet{.outputIsFile = true};
  EXPECT_EQ(shell("exec orxrestore -i lines -o db", quiet).drawn, "");
  EXPECT_EQ(restore(quiet, "true", "-v").drawn, "");
  EXPECT_EQ(shell("export TERM=dumb; orxkdb dump db > dump; "
                  "{ sed '$d' dump; sleep 1; tail -n 1 dump; } | orxkdb load new",
                  quiet)
                .drawn,
            "");
}

TEST_F(Progress, OfOrxkdbShowsItsPhaseToo) {
  const auto result = shell(
      "orxkdb dump db > dump; { sed '$d' dump; sleep 1; tail -n 1 dump; } | "
      "orxkdb load new",
      {.outputIsFile = true});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_THAT(result.drawn, HasSubstr("adding  "));
  EXPECT_EQ(result.screen, "");
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
      {known, 30, "adding   42 %  1:12 left"},
      {known, 19, "adding   42 %"},
      {known, 4, "addi"},
      {known, 0, ""},
      {waiting, 79, "syncing  1:02:05"},
      {waiting, 10, "syncing"},
  };
  for (const auto& row : cases) EXPECT_EQ(progressText(row.view, row.width), row.text);
}

// Findings and differences; JSON and files stay plain.
TEST_F(Progress, ColourFollowsOptionEnvironmentAndTerminal) {
  makeDatabase(directory_.file("bad"), {plainLine(1), referringLine(2)});
  const struct {
    const char* command;
    bool painted;
  } cases[] = {
      {"orxkdb check bad", true},
      {"orxkdb --color always check bad | cat", true},
      {"orxkdb check --color=always bad | cat", true},
      {"orxkdb diff --color always db bad | cat", true},
      {"orxkdb check --color never bad", false},
      {"NO_COLOR=1 orxkdb check bad", false},
      {"TERM=dumb orxkdb check bad", false},
      {"NO_COLOR= orxkdb check bad", true},
      {"orxkdb check bad 2>&1 | cat", false},
      {"orxkdb check --json --color always bad 2>/dev/null | cat", false},
  };
  for (const auto& row : cases) {
    const std::string drawn = shell(row.command, {}).drawn;
    EXPECT_EQ(drawn.find("\033[") != std::string::npos, row.painted) << row.command << drawn;
  }
  EXPECT_THAT(shell("orxkdb --color sometimes check bad", {}).drawn, HasSubstr("--help\""));
}

}  // namespace
}  // namespace orx::test
