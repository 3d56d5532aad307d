#include "driver/hints.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "messages/message_print.h"
#include "platform/compression/compression.h"
#include "platform/interruption.h"
#include "platform/kdb.h"
#include "platform/kdb_obstacle.h"
#include "restore/exit_codes.h"
#include "terminal/color.h"
#include "terminal/file_words.h"
#include "terminal/free_space.h"

namespace orx {

namespace {

// A text with places for names. Only constants are: a name that looks like a place stays a name.
class Template {
 public:
  consteval Template(const char* text) : text_(text) {}  // NOLINT(google-explicit-constructor)
  [[nodiscard]] std::string_view text() const { return text_; }

 private:
  std::string_view text_;
};

struct Meaning {
  kdb::Reason reason;
  Template what;
  Template next;
};

constexpr Template moreFiles = "ulimit -n 1024";

// What the reasons mean, and the command to type next, with the places of placesOf().
constexpr std::array openMeanings{
    Meaning{kdb::Reason::notFound, "there is no database {DB}", "orxkdb create {db}"},
    Meaning{kdb::Reason::inUse, "{DB} is being changed by another program; wait for its end",
            "fuser -v {db}"},
    Meaning{kdb::Reason::authority,
            "no permission to change {DB} and its directory; run this as their owner",
            "ls -ld . {db}"},
    Meaning{kdb::Reason::length,
            "the name is too long for the file system with \".orx-previous\" behind it: {DB}",
            "ls -l ."},
    Meaning{kdb::Reason::unique,
            "another file stands in the place of {PREVIOUS} or of the next database, {DB}.orx-new; "
            "move it away",
            "ls -ld {db}.orx-*"},
    Meaning{kdb::Reason::arguments,
            "{DB} has the name of a file that belongs to another database, whose next change would "
            "replace it; give it a name of its own",
            "ls -l {db}"},
};
constexpr std::array runMeanings{
    Meaning{kdb::Reason::endOfFile,
            "{DB} is empty, and a merge needs its counters; restore a backup of it first",
            "orxrestore -i BACKUP -o {db}"},
    Meaning{kdb::Reason::notFound,
            "the system record of {DB} has no identifier counters, which a merge needs",
            "orxkdb check {db}"},
    Meaning{kdb::Reason::space,
            "no space, quota or file-size limit is left for a second {DB} beside the first",
            "df -h ."},
    Meaning{kdb::Reason::inUse,
            "{DB} was moved, removed or replaced by somebody else while this ran, or is a mount "
            "point",
            "ls -l {db}*"},
    Meaning{kdb::Reason::systemReject,
            "the file system of {DB} can neither exchange nor link names; keep the database on "
            "another",
            "df -T {db}"},
    Meaning{kdb::Reason::open,
            "too many files are open for {DB} to be read and written; raise the limit", moreFiles},
    Meaning{kdb::Reason::storage, "memory ran out while {DB} was written", "free -m"},
    Meaning{kdb::Reason::ioError, "the disk of {DB} could not be read or written; see its log",
            "journalctl -k"},
};
constexpr Meaning damaged{kdb::Reason::format,
                          "{DB} is damaged; see what can be read, then move it away and make a new "
                          "one",
                          "orxkdb stat {db}"};
constexpr Meaning onlyPrevious{kdb::Reason::notFound,
                               "there is no database {DB}, but its previous generation {PREVIOUS}",
                               "mv {previous} {db}"};
constexpr Meaning noInodes{kdb::Reason::space,
                           "the file system of {DB} can hold no more files, whatever space it has; "
                           "remove some that are not needed",
                           "df -i ."};
constexpr Meaning leadsNowhere{kdb::Reason::notFound,
                               "{DB} is a symbolic link that leads to no database", "ls -l {db}"};
constexpr Meaning noDatabase{kdb::Reason::format, "{DB} is not a database", "ls -ld {db}"};
constexpr Meaning unknown{kdb::Reason::noError, "the call on {DB} was refused",
                          "orxkdb check {db}"};
constexpr Meaning twiceInBackup{kdb::Reason::unique, "two lines of {BACKUP} have the same key",
                                "orxkdb check {backup}"};
constexpr Meaning takenKey{kdb::Reason::unique,
                           "records of {BACKUP} have keys that are taken and were not added",
                           "orxkdb plan {db} {backup}"};
constexpr Meaning unreadBackup{kdb::Reason::ioError,
                               "{BACKUP} could not be read to its end; see the system's log",
                               "journalctl -k"};

// In the order of ObstacleKind; {FILE} and {file} are the file that keeps a database from being
// changed.
struct ObstacleWords {
  Template what = "";
  Template next = "";
};
constexpr std::array obstacleWords{
    ObstacleWords{},
    ObstacleWords{"{FILE} is no file of this program, which needs the name; move it away",
                  "ls -ld {file}"},
    ObstacleWords{"{FILE} may be the database that a killed run replaced, or what it was making; "
                  "see which, then rename or remove it",
                  "orxkdb stat {file}"},
    ObstacleWords{"{FILE} cannot be read, renamed or replaced, which a change of the database "
                  "needs: immutable, a mount point, or another user's",
                  "ls -l {file}; lsattr {file}"},
    ObstacleWords{"{FILE} is the database before its last change, and could not become {PREVIOUS}",
                  "mv {file} {previous}"},
};
static_assert(obstacleWords.size() == static_cast<std::size_t>(kdb::ObstacleKind::replaced) + 1);

// The places in a text: {DB}, {PREVIOUS} (its previous generation) and {BACKUP} for absolute paths,
// {db}, {previous}, {backup} and {dir} (the backup's directory) for words of a command.
std::vector<Placed> placesOf(const RestoreSettings& settings) {
  const std::string previous = kdb::previousName(settings.databaseName);
  return {{"{PREVIOUS}", absolutePath(previous)},
          {"{previous}", shellWord(previous)},
          {"{DB}", absolutePath(settings.databaseName)},
          {"{BACKUP}", absolutePath(settings.backupFileName)},
          {"{db}", shellWord(settings.databaseName)},
          {"{backup}", shellWord(settings.backupFileName)},
          {"{dir}", shellWord(parentOf(settings.backupFileName))}};
}

std::string errorText(int error) {
  return error == 0 ? "it is no file to read" : std::generic_category().message(error);
}

class HintList {
 public:
  explicit HintList(const RunOutcome& outcome)
      : outcome_(outcome),
        settings_(outcome.settings),
        report_(outcome.report),
        places_(placesOf(outcome.settings)) {}

  std::vector<Hint> take() {
    if (outcome_.messagesMissing) addMissingMessages();
    switch (outcome_.exitCode) {
      case exitSuccess:
        addSuccess();
        break;
      case exitUsage:
        add("the command line cannot be used, nothing was done; the help is above",
            "orxrestore -i BACKUP -o DATABASE");
        break;
      case exitNameHasPath:
        addPathInName();
        break;
      case exitBackupNotOpened:
        addUnopenedBackup();
        break;
      case exitDatabaseNotOpened:
        if (!addObstacle()) addMeaning(meaningOfFailure(), "");
        break;
      case exitFailed:
        addFailure();
        break;
      default:
        break;
    }
    return std::move(hints_);
  }

 private:
  // With `more` places than those of every text.
  void add(Template what, Template next, const std::vector<Placed>& more = {}) {
    std::vector<Placed> places = places_;
    places.insert(places.end(), more.begin(), more.end());
    hints_.push_back({filled(what.text(), places), filled(next.text(), places)});
  }

  void addMeaning(const Meaning& meaning, std::string_view behind) {
    add(meaning.what, meaning.next);
    hints_.back().what += behind;
  }

  void addUndo(Template why, const std::vector<Placed>& more = {}) {
    add(why, "orxkdb undo {db}", more);
  }

  void addMissingMessages() {
    add("the messages are missing or cannot be read: {MESSAGES}", "orxkdb messages",
        {{"{MESSAGES}", absolutePath("PRESTORE_restore")}});
  }

  void addPathInName() {
    const std::filesystem::path path(settings_.databaseName);
    std::error_code error;
    if (path.has_filename() && path.has_parent_path() &&
        std::filesystem::is_directory(path.parent_path(), error)) {
      add("the database is named without a path and opened in the current directory, not as {DB}",
          "cd {there} && {command}",
          {{"{there}", shellWord(path.parent_path())}, {"{command}", commandThere(path)}});
    } else {
      add("the database is named without a path and opened in the current directory; there is no "
          "directory for {DB}",
          "ls -l .");
    }
  }

  // The same run with the directory of `database` as the current one.
  [[nodiscard]] std::string commandThere(const std::filesystem::path& database) const {
    std::string command = "orxrestore";
    if (settings_.mode != modeUseCount) {
      std::error_code error;
      const auto backup = std::filesystem::absolute(settings_.backupFileName, error);
      command += " -i " + shellWord(backup.lexically_normal());
    }
    command += settings_.mode == modeUseCount ? " -u "
               : settings_.mode == modeMerge  ? " -m "
                                              : " -o ";
    return command + shellWord(database.filename());
  }

  void addUnopenedBackup() {
    if (addOwnGeneration()) return;
    addWhyUnopened();
    if (outcome_.published) {
      addUndo("only the system record of {DB} was written again");
    } else {
      hints_.back().what += "; " + absolutePath(settings_.databaseName) + " is unchanged";
    }
  }

  void addWhyUnopened() {
    const std::string& name = settings_.backupFileName;
    const int error = report_.backupError;
    struct stat file {};
    if (error == EMFILE || error == ENFILE) {
      return add("too many files are open for the backup {BACKUP} to be read; raise the limit",
                 moreFiles);
    }
    if (::stat(name.c_str(), &file) != 0) {
      if (errno == ENOENT) return add("there is no backup {BACKUP}", "ls -l {dir}");
      return add("the backup {BACKUP} cannot be reached ({why})", "ls -l .",
                 {{"{why}", errorText(errno)}});
    }
    if (S_ISDIR(file.st_mode)) return add("the backup {BACKUP} is a directory", "ls -ld {backup}");
    if (::access(name.c_str(), R_OK) != 0) {
      return add("no permission to read the backup {BACKUP}", "ls -ld {backup}");
    }
    add("the backup {BACKUP} cannot be opened: {why}", "journalctl -k",
        {{"{why}", errorText(error)}});
  }

  // The backup would have been replaced by the run.
  [[nodiscard]] bool addOwnGeneration() {
    const std::string& name = settings_.backupFileName;
    const std::vector<Placed> free{{"{free}", shellWord(freeTextName(name))}};
    switch (kdb::generationOf(name, settings_.databaseName)) {
      case kdb::Generation::none:
        return false;
      case kdb::Generation::current:
        add("{BACKUP} is the database itself, not a backup of it; nothing was done",
            "orxkdb backup {db} {free}", free);
        return true;
      case kdb::Generation::successor:
        add("{BACKUP} has the name of a file that a change of {DB} replaces; nothing was done",
            "mv {backup} {free}", free);
        return true;
      case kdb::Generation::previous:
        add("{BACKUP} is the previous generation of {DB}, which the run would replace; nothing was "
            "done",
            previousCommand(), free);
    }
    return true;
  }

  [[nodiscard]] Template previousCommand() const {
    if (settings_.mode == modeMerge) return "orxkdb backup {backup} {free}";
    std::error_code error;
    if (std::filesystem::exists(settings_.databaseName, error)) return "orxkdb undo {db}";
    return "mv {backup} {db}";
  }

  [[nodiscard]] const Meaning& meaningOfFailure() const {
    const auto reason = static_cast<kdb::Reason>(report_.failure.reason);
    if (report_.backupFailed) return unreadBackup;
    if (reason == kdb::Reason::format) {
      return kdb::looksLikeDatabase(settings_.databaseName.c_str()) ? damaged : noDatabase;
    }
    if (reason == kdb::Reason::space && lacksInodes(settings_.databaseName)) return noInodes;
    if (outcome_.exitCode == exitDatabaseNotOpened) {
      if (reason == kdb::Reason::notFound && isTaken(settings_.databaseName)) return leadsNowhere;
      if (reason == kdb::Reason::notFound &&
          isDatabase(kdb::previousName(settings_.databaseName))) {
        return onlyPrevious;
      }
      if (const Meaning* found = find(openMeanings, reason)) return *found;
    }
    if (reason == kdb::Reason::unique) {
      return settings_.mode == modeMerge ? takenKey : twiceInBackup;
    }
    const Meaning* found = find(runMeanings, reason);
    if (found == nullptr) found = find(openMeanings, reason);
    return found == nullptr ? unknown : *found;
  }

  template <std::size_t count>
  static const Meaning* find(const std::array<Meaning, count>& meanings, kdb::Reason reason) {
    const auto* const found = std::ranges::find(meanings, reason, &Meaning::reason);
    return found == meanings.end() ? nullptr : found;
  }

  // The file that kept the database from being opened for a change, where it is not the database.
  [[nodiscard]] bool addObstacle() {
    const auto reason = static_cast<kdb::Reason>(report_.failure.reason);
    const bool mayBe = reason == kdb::Reason::unique || reason == kdb::Reason::authority ||
                       reason == kdb::Reason::inUse;
    return mayBe && addObstacle(kdb::obstacleOf(settings_.databaseName));
  }

  bool addObstacle(const kdb::Obstacle& obstacle) {
    if (obstacle.kind == kdb::ObstacleKind::none) return false;
    const ObstacleWords& words = obstacleWords[static_cast<std::size_t>(obstacle.kind)];
    add(words.what, words.next,
        {{"{FILE}", absolutePath(obstacle.path)}, {"{file}", shellWord(obstacle.path)}});
    return true;
  }

  void addFailure() {
    if (report_.failure.returnCode == 0) return;
    if (outcome_.published) addUndo("{DB} has what the run did before it failed");
    if (!addWrongBackup()) {
      addMeaning(meaningOfFailure(), outcome_.published ? "" : "; the database is unchanged");
    }
    if (report_.backupChanged) addChangedBackup();
  }

  void addChangedBackup() {
    add("{BACKUP} changed during the run; run this again when nobody writes to it any more",
        "ls -l {backup}");
  }

  static bool isDatabase(const std::string& name) { return kdb::looksLikeDatabase(name.c_str()); }

  // A file that is another thing than a backup explains whatever came of it.
  [[nodiscard]] bool addWrongBackup() {
    const Compression compression = compressionOfFile(settings_.backupFileName);
    if (compression != Compression::none) {
      addCompressedBackup(compression);
    } else if (isDatabase(settings_.backupFileName)) {
      addDatabaseAsBackup();
    } else {
      return false;
    }
    return true;
  }

  void addCompressedBackup(Compression compression) {
    const std::string format = nameOf(compression);
    const std::string tool = compression == Compression::gzip ? "zcat" : format + "cat";
    add("{BACKUP} is compressed with {format}; decompress it and restore that",
        "{tool} < {backup} > {free}",
        {{"{format}", format},
         {"{tool}", tool},
         {"{free}", shellWord(decompressedName(settings_.backupFileName))}});
  }

  // Also by a symbolic link that leads nowhere: a command would write through it.
  static bool isTaken(const std::string& name) {
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(name, error));
  }

  // Without the compressor's ending.
  static std::string decompressedName(const std::string& name) {
    const std::filesystem::path path(name);
    const std::string stem = (path.parent_path() / path.stem()).string();
    return isTaken(stem) ? freeTextName(name) : stem;
  }

  // For a text made of the file `name`, never the name of a file that is there.
  static std::string freeTextName(const std::string& name) {
    std::string found = name + ".txt";
    for (int number = 2; isTaken(found); ++number) {
      found = name + "." + std::to_string(number) + ".txt";
    }
    return found;
  }

  void addDatabaseAsBackup() {
    add("{BACKUP} is a database, not a backup; make a backup of it and restore that",
        "orxkdb backup {backup} {free}",
        {{"{free}", shellWord(freeTextName(settings_.backupFileName))}});
  }

  void addSuccess() {
    const bool removedAll = settings_.mode == modeReplace && outcome_.published &&
                            report_.deletedCount > 1 && report_.addedCount <= 1;
    if (report_.backupChanged && outcome_.published) {
      addUndo(
          "{BACKUP} changed while it was read, {DB} may have a part of it; undo that, and run "
          "this again when nobody writes to the backup any more");
    } else if (report_.backupChanged) {
      addChangedBackup();
    } else if (removedAll) {
      addUndo(
          "{DB} had {deleted} records and has {added} now; if that is not what you want, undo it",
          {{"{deleted}", std::to_string(report_.deletedCount)},
           {"{added}", std::to_string(report_.addedCount)}});
    }
    (void)addWrongBackup();
    addReplaced();
  }

  // The change is made, and its last step is not.
  void addReplaced() {
    if (!outcome_.published) return;
    const kdb::Obstacle left = kdb::obstacleOf(settings_.databaseName);
    if (left.kind == kdb::ObstacleKind::replaced) addObstacle(left);
  }

  const RunOutcome& outcome_;
  const RestoreSettings& settings_;
  const RunReport& report_;
  std::vector<Placed> places_;
  std::vector<Hint> hints_;
};

void print(const Hint& hint) {
  const std::string command = painted(hint.next, Paint::bold, STDERR_FILENO);
  (void)std::fprintf(stderr, "orxrestore: %s\n  next: %s\n", hint.what.c_str(), command.c_str());
}

}  // namespace

std::vector<Hint> hintsFor(const RunOutcome& outcome) {
  return HintList(outcome).take();
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
