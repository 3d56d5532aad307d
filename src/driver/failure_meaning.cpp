#include "driver/failure_meaning.h"

#include <array>
#include <cstddef>

#include "driver/obstacle_hint.h"
#include "platform/kdb_diagnosis.h"
#include "restore/exit_codes.h"

namespace orx {

namespace {

using kdb::Situation;

// What a situation means, and the command to type next, with the places of HintList.
struct FailureMeaning {
  Situation situation;
  HintTemplate what;
  HintTemplate next;
};

constexpr std::array meanings{
    FailureMeaning{Situation::refused, "the call on {DB} was refused", "orxkdb check {db}"},
    FailureMeaning{Situation::noDatabase, "there is no database {DB}", "orxkdb create {db}"},
    FailureMeaning{Situation::onlyPrevious,
                   "there is no database {DB}, but its previous generation {PREVIOUS}",
                   "mv {previous} {db}"},
    FailureMeaning{Situation::brokenLink, "{DB} is a symbolic link that leads to no database",
                   "ls -l {db}"},
    FailureMeaning{Situation::noDirectory, "there is no directory for {DB}", "ls -l ."},
    FailureMeaning{Situation::notADatabase, "{DB} is not a database", "ls -ld {db}"},
    FailureMeaning{Situation::damaged,
                   "{DB} is damaged; see what can be read, then move it away and make a new one",
                   "orxkdb stat {db}"},
    FailureMeaning{Situation::inUse, "{DB} is being changed by another program; wait for its end",
                   "fuser -v {db}"},
    FailureMeaning{
        Situation::lostName,
        "{DB} was moved, removed or replaced by somebody else while this ran, or is a mount point",
        "ls -l {db}*"},
    FailureMeaning{Situation::noPermission,
                   "no permission to change {DB} and its directory; run this as their owner",
                   "ls -ld . {db}"},
    FailureMeaning{
        Situation::nameTaken,
        "another file stands in the place of {PREVIOUS} or of the next database, {DB}.orx-new; "
        "move it away",
        "ls -ld {db}.orx-*"},
    FailureMeaning{
        Situation::nameTooLong,
        "the name is too long for the file system with \".orx-previous\" behind it: {DB}",
        "ls -l ."},
    FailureMeaning{Situation::nameEmpty, "the name of the database is empty", "ls -l ."},
    FailureMeaning{
        Situation::nameOfAnother,
        "{DB} has the name of a file that belongs to another database, whose next change would "
        "replace it; give it a name of its own",
        "ls -l {db}"},
    FailureMeaning{Situation::noRecords,
                   "{DB} is empty, and a merge needs its counters; restore a backup of it first",
                   "orxrestore -i BACKUP -o {db}"},
    FailureMeaning{Situation::noRecord,
                   "the system record of {DB} has no identifier counters, which a merge needs",
                   "orxkdb check {db}"},
    FailureMeaning{Situation::keyTaken,
                   "records of {BACKUP} have keys that are taken and were not added",
                   "orxkdb plan {db} {backup}"},
    FailureMeaning{Situation::noSpace,
                   "no space, quota or file-size limit is left for a second {DB} beside the first",
                   "df -h ."},
    FailureMeaning{Situation::noInodes,
                   "the file system of {DB} can hold no more files, whatever space it has; remove "
                   "some that are not needed",
                   "df -i ."},
    FailureMeaning{Situation::noMemory, "memory ran out while {DB} was written", "free -m"},
    FailureMeaning{Situation::tooManyFiles,
                   "too many files are open for {DB} to be read and written; raise the limit",
                   moreFiles},
    FailureMeaning{Situation::noExchange,
                   "the file system of {DB} can neither exchange nor link names; keep the database "
                   "on another",
                   "df -T {db}"},
    FailureMeaning{Situation::ioError, "the disk of {DB} could not be read or written; see its log",
                   "journalctl -k"},
};
static_assert(kdb::coversSituations(meanings));

}  // namespace

void addFailureMeaning(const RunOutcome& outcome, HintList& hints) {
  if (outcome.report.backupFailed) {
    return hints.add("{BACKUP} could not be read to its end; see the system's log",
                     "journalctl -k");
  }
  const RestoreSettings& settings = outcome.settings;
  const bool opening = outcome.exitCode == exitDatabaseNotOpened;
  const kdb::Diagnosis found = kdb::diagnose(settings.databaseName, outcome.report.failure,
                                             opening ? kdb::Phase::opening : kdb::Phase::running);
  if (addObstacle(found.obstacle, hints)) return;
  if (found.situation == Situation::keyTaken && settings.mode != modeMerge) {
    return hints.add("two lines of {BACKUP} have the same key", "orxkdb check {backup}");
  }
  const FailureMeaning& meaning = meanings[static_cast<std::size_t>(found.situation)];
  hints.add(meaning.what, meaning.next);
}

}  // namespace orx
