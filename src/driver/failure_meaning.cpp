#include "driver/failure_meaning.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>

#include "driver/taken_name.h"
#include "restore/exit_codes.h"
#include "terminal/free_space.h"

namespace orx {

namespace {

// What the reasons mean, and the command to type next, with the places of HintList.
constexpr std::array openMeanings{
    FailureMeaning{kdb::Reason::notFound, "there is no database {DB}", "orxkdb create {db}"},
    FailureMeaning{kdb::Reason::inUse, "{DB} is being changed by another program; wait for its end",
                   "fuser -v {db}"},
    FailureMeaning{kdb::Reason::authority,
                   "no permission to change {DB} and its directory; run this as their owner",
                   "ls -ld . {db}"},
    FailureMeaning{
        kdb::Reason::length,
        "the name is too long for the file system with \".orx-previous\" behind it: {DB}",
        "ls -l ."},
    FailureMeaning{
        kdb::Reason::unique,
        "another file stands in the place of {PREVIOUS} or of the next database, {DB}.orx-new; "
        "move it away",
        "ls -ld {db}.orx-*"},
    FailureMeaning{
        kdb::Reason::arguments,
        "{DB} has the name of a file that belongs to another database, whose next change would "
        "replace it; give it a name of its own",
        "ls -l {db}"},
};
constexpr std::array runMeanings{
    FailureMeaning{kdb::Reason::endOfFile,
                   "{DB} is empty, and a merge needs its counters; restore a backup of it first",
                   "orxrestore -i BACKUP -o {db}"},
    FailureMeaning{kdb::Reason::notFound,
                   "the system record of {DB} has no identifier counters, which a merge needs",
                   "orxkdb check {db}"},
    FailureMeaning{kdb::Reason::space,
                   "no space, quota or file-size limit is left for a second {DB} beside the first",
                   "df -h ."},
    FailureMeaning{
        kdb::Reason::inUse,
        "{DB} was moved, removed or replaced by somebody else while this ran, or is a mount "
        "point",
        "ls -l {db}*"},
    FailureMeaning{
        kdb::Reason::systemReject,
        "the file system of {DB} can neither exchange nor link names; keep the database on "
        "another",
        "df -T {db}"},
    FailureMeaning{kdb::Reason::open,
                   "too many files are open for {DB} to be read and written; raise the limit",
                   moreFiles},
    FailureMeaning{kdb::Reason::storage, "memory ran out while {DB} was written", "free -m"},
    FailureMeaning{kdb::Reason::ioError,
                   "the disk of {DB} could not be read or written; see its log", "journalctl -k"},
};
constexpr FailureMeaning damaged{
    kdb::Reason::format,
    "{DB} is damaged; see what can be read, then move it away and make a new "
    "one",
    "orxkdb stat {db}"};
constexpr FailureMeaning onlyPrevious{
    kdb::Reason::notFound, "there is no database {DB}, but its previous generation {PREVIOUS}",
    "mv {previous} {db}"};
constexpr FailureMeaning noInodes{
    kdb::Reason::space,
    "the file system of {DB} can hold no more files, whatever space it has; "
    "remove some that are not needed",
    "df -i ."};
constexpr FailureMeaning leadsNowhere{
    kdb::Reason::notFound, "{DB} is a symbolic link that leads to no database", "ls -l {db}"};
constexpr FailureMeaning noDatabase{kdb::Reason::format, "{DB} is not a database", "ls -ld {db}"};
constexpr FailureMeaning unknown{kdb::Reason::noError, "the call on {DB} was refused",
                                 "orxkdb check {db}"};
constexpr FailureMeaning twiceInBackup{
    kdb::Reason::unique, "two lines of {BACKUP} have the same key", "orxkdb check {backup}"};
constexpr FailureMeaning takenKey{kdb::Reason::unique,
                                  "records of {BACKUP} have keys that are taken and were not added",
                                  "orxkdb plan {db} {backup}"};
constexpr FailureMeaning unreadBackup{kdb::Reason::ioError,
                                      "{BACKUP} could not be read to its end; see the system's log",
                                      "journalctl -k"};

// Whether the file is one, whatever its state.
bool isDatabase(const std::string& name) {
  return kdb::looksLikeDatabase(name.c_str());
}

template <std::size_t count>
const FailureMeaning* find(const std::array<FailureMeaning, count>& meanings, kdb::Reason reason) {
  const auto* const found = std::ranges::find(meanings, reason, &FailureMeaning::reason);
  return found == meanings.end() ? nullptr : found;
}

}  // namespace

const FailureMeaning& meaningOfFailure(const RunOutcome& outcome) {
  const RestoreSettings& settings = outcome.settings;
  const auto reason = static_cast<kdb::Reason>(outcome.report.failure.reason);
  if (outcome.report.backupFailed) return unreadBackup;
  if (reason == kdb::Reason::format) {
    return isDatabase(settings.databaseName) ? damaged : noDatabase;
  }
  if (reason == kdb::Reason::space && lacksInodes(settings.databaseName)) return noInodes;
  if (outcome.exitCode == exitDatabaseNotOpened) {
    if (reason == kdb::Reason::notFound && isTaken(settings.databaseName)) return leadsNowhere;
    if (reason == kdb::Reason::notFound && isDatabase(kdb::previousName(settings.databaseName))) {
      return onlyPrevious;
    }
    if (const FailureMeaning* found = find(openMeanings, reason)) return *found;
  }
  if (reason == kdb::Reason::unique) {
    return settings.mode == modeMerge ? takenKey : twiceInBackup;
  }
  const FailureMeaning* found = find(runMeanings, reason);
  if (found == nullptr) found = find(openMeanings, reason);
  return found == nullptr ? unknown : *found;
}

}  // namespace orx
