#include "driver/hints.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

#include "driver/backup_hints.h"
#include "driver/failure_meaning.h"
#include "driver/obstacle_hint.h"
#include "messages/message_print.h"
#include "platform/interruption.h"
#include "platform/kdb_files.h"
#include "platform/kdb_obstacle.h"
#include "platform/taken_name.h"
#include "restore/exit_codes.h"
#include "terminal/color.h"

namespace orx {

namespace {

void addMissingMessages(HintList& hints) {
  hints.add("the messages are missing or cannot be read: {MESSAGES}", "orxkdb messages",
            {{"{MESSAGES}", absolutePath("PRESTORE_restore")}});
}

void addUnusable(HintList& hints) {
  hints.add("the command line cannot be used, nothing was done; the help is above",
            "orxrestore -i BACKUP -o DATABASE");
}

// The same run, its options with it, with the directory of `database` as the current one.
std::string commandThere(const RestoreSettings& settings, const std::filesystem::path& database) {
  std::string command = "orxrestore";
  if (settings.mode != modeUseCount) {
    std::error_code error;
    const auto backup = std::filesystem::absolute(settings.backupFileName, error);
    command += " -i " + shellWord(backup.lexically_normal());
  }
  command += settings.mode == modeUseCount ? " -u " : settings.mode == modeMerge ? " -m " : " -o ";
  command += shellWord(database.filename());
  if (settings.prototypesOnly != 0) command += " -p";
  if (settings.verbose != 0) command += " -v";
  return command;
}

void addPathInName(const RestoreSettings& settings, HintList& hints) {
  const std::filesystem::path path(settings.databaseName);
  std::error_code error;
  if (path.has_filename() && path.has_parent_path() &&
      std::filesystem::is_directory(path.parent_path(), error)) {
    hints.add(
        "the database is named without a path and opened in the current directory, not as {DB}",
        "cd {there} && {command}",
        {{"{there}", shellWord(path.parent_path())}, {"{command}", commandThere(settings, path)}});
  } else {
    hints.add(
        "the database is named without a path and opened in the current directory; there is no "
        "directory for {DB}",
        "ls -l .");
  }
}

void addFailure(const RunOutcome& outcome, HintList& hints) {
  if (outcome.report.failure.returnCode == 0) return;
  if (outcome.published) hints.addUndo("{DB} has what the run did before it failed");
  if (!addWrongBackup(outcome.settings, hints)) {
    addFailureMeaning(outcome, hints);
    if (!outcome.published) hints.append("; the database is unchanged");
  }
  if (outcome.report.backupChanged) addChangedBackup(hints);
}

void addSuspectSuccess(const RunOutcome& outcome, HintList& hints) {
  const RunReport& report = outcome.report;
  const bool removedAll = outcome.settings.mode == modeReplace && outcome.published &&
                          report.deletedCount > 1 && report.addedCount <= 1;
  if (report.backupChanged && outcome.published) {
    hints.addUndo(
        "{BACKUP} changed while it was read, {DB} may have a part of it; undo that, and run "
        "this again when nobody writes to the backup any more");
  } else if (report.backupChanged) {
    addChangedBackup(hints);
  } else if (removedAll) {
    hints.addUndo(
        "{DB} had {deleted} records and has {added} now; if that is not what you want, undo it",
        {{"{deleted}", std::to_string(report.deletedCount)},
         {"{added}", std::to_string(report.addedCount)}});
  }
}

// The change is made, and its last step is not.
void addReplaced(const RunOutcome& outcome, HintList& hints) {
  const kdb::Obstacle replaced = kdb::replacedBy(outcome.settings.databaseName);
  if (replaced.kind == kdb::ObstacleKind::none) return;
  if (!isTaken(kdb::previousName(outcome.settings.databaseName))) {
    addObstacle(replaced, hints);
    return;
  }
  hints.add(
      "{FILE} is the database before this change, and could not become {PREVIOUS}; the next change "
      "makes it that, or \"orxkdb undo\" takes it back, once what has that name is moved away",
      "ls -ld {previous}", {{"{FILE}", absolutePath(replaced.path)}});
}

// Whoever wants to undo the run would undo the one before it.
void addNoChange(HintList& hints) {
  hints.add("{DB} had nothing to change: it is as it was, and so is its previous generation", "");
}

void addSuccess(const RunOutcome& outcome, HintList& hints) {
  addSuspectSuccess(outcome, hints);
  addWrongBackup(outcome.settings, hints);
  if (outcome.published) {
    addReplaced(outcome, hints);
  } else if (outcome.settings.mode != modeReplace) {
    addNoChange(hints);
  }
}

void print(const Hint& hint) {
  (void)std::fprintf(stderr, "orxrestore: %s\n", hint.what.c_str());
  if (hint.next.empty()) return;
  (void)std::fprintf(stderr, "  next: %s\n",
                     painted(hint.next, Paint::bold, STDERR_FILENO).c_str());
}

}  // namespace

std::vector<Hint> hintsFor(const RunOutcome& outcome) {
  HintList hints(outcome.settings);
  if (outcome.messagesMissing) addMissingMessages(hints);
  switch (outcome.exitCode) {
    case exitSuccess:
      addSuccess(outcome, hints);
      break;
    case exitUsage:
      addUnusable(hints);
      break;
    case exitNameHasPath:
      addPathInName(outcome.settings, hints);
      break;
    case exitBackupNotOpened:
      addUnopenedBackup(outcome, hints);
      break;
    case exitDatabaseNotOpened:
      addFailureMeaning(outcome, hints);
      break;
    case exitFailed:
      addFailure(outcome, hints);
      break;
    default:
      break;
  }
  return hints.take();
}

void giveHints(int exitCode) {
  const RunOutcome outcome{.exitCode = exitCode,
                           .published = hasPublished(),
                           .messagesMissing = !MessageCatalogue().isOpen(),
                           .settings = restoreSettings(),
                           .report = runReport()};
  (void)std::fflush(stdout);
  for (const Hint& hint : hintsFor(outcome)) print(hint);
}

}  // namespace orx
