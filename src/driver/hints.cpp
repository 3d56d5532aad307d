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

namespace orx {

namespace {

struct Meaning {
  kdb::Reason reason;
  const char* what;
  const char* next;
};

constexpr const char* moreFiles = "ulimit -n 1024";

// What the reasons mean, and the command to type next, as expand() takes them.
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

// The names in a text: {DB}, {PREVIOUS} (its previous generation) and {BACKUP} as absolute paths,
// {db}, {previous} and {backup} as words of a command.
std::string expand(std::string_view text, const RestoreSettings& settings) {
  const std::string previous = kdb::previousName(settings.databaseName);
  const std::array<std::pair<std::string_view, std::string>, 6> names{
      {{"{PREVIOUS}", absolutePath(previous)},
       {"{previous}", shellWord(previous)},
       {"{DB}", absolutePath(settings.databaseName)},
       {"{BACKUP}", absolutePath(settings.backupFileName)},
       {"{db}", shellWord(settings.databaseName)},
       {"{backup}", shellWord(settings.backupFileName)}}};
  std::string expanded;
  while (!text.empty()) {
    const auto* const name = std::ranges::find_if(
        names, [text](const auto& entry) { return text.starts_with(entry.first); });
    expanded += name == names.end() ? std::string(1, text.front()) : name->second;
    text.remove_prefix(name == names.end() ? 1 : name->first.size());
  }
  return expanded;
}

std::string errorText(int error) {
  return error == 0 ? "it is no file to read" : std::generic_category().message(error);
}

class HintList {
 public:
  explicit HintList(const RunOutcome& outcome)
      : outcome_(outcome), settings_(outcome.settings), report_(outcome.report) {}

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
  void add(std::string_view what, std::string_view next) {
    hints_.push_back({expand(what, settings_), expand(next, settings_)});
  }

  void addMeaning(const Meaning& meaning, const std::string& behind) {
    add(meaning.what + behind, meaning.next);
  }

  void addUndo(const std::string& why) { add(why, "orxkdb undo {db}"); }

  void addMissingMessages() {
    add("the messages are missing or cannot be read: " + absolutePath("PRESTORE_restore"),
        "orxkdb messages");
  }

  void addPathInName() {
    const std::filesystem::path path(settings_.databaseName);
    const std::string why =
        "the database is named without a path and opened in the current directory";
    std::error_code error;
    if (path.has_filename() && path.has_parent_path() &&
        std::filesystem::is_directory(path.parent_path(), error)) {
      add(why + ", not as {DB}",
          "cd " + shellWord(path.parent_path()) + " && " + commandThere(path));
    } else {
      add(why + "; there is no directory for {DB}", "ls -l .");
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
    const std::string unchanged = outcome_.published ? "" : "; {DB} is unchanged";
    const auto& [what, next] = whyUnopened();
    add(what + unchanged, next);
    if (outcome_.published) addUndo("only the system record of {DB} was written again");
  }

  [[nodiscard]] std::pair<std::string, std::string> whyUnopened() const {
    const std::string& name = settings_.backupFileName;
    const int error = report_.backupError;
    struct stat file {};
    if (error == EMFILE || error == ENFILE) {
      return {"too many files are open for the backup {BACKUP} to be read; raise the limit",
              moreFiles};
    }
    if (::stat(name.c_str(), &file) != 0) {
      if (errno == ENOENT) {
        return {"there is no backup {BACKUP}", "ls -l " + shellWord(parentOf(name))};
      }
      return {"the backup {BACKUP} cannot be reached (" + errorText(errno) + ")", "ls -l ."};
    }
    if (S_ISDIR(file.st_mode)) return {"the backup {BACKUP} is a directory", "ls -ld {backup}"};
    if (::access(name.c_str(), R_OK) != 0) {
      return {"no permission to read the backup {BACKUP}", "ls -ld {backup}"};
    }
    return {"the backup {BACKUP} cannot be opened: " + errorText(error), "journalctl -k"};
  }

  // The backup would have been replaced by the run.
  [[nodiscard]] bool addOwnGeneration() {
    const std::string& name = settings_.backupFileName;
    const std::string free = shellWord(freeTextName(name));
    switch (kdb::generationOf(name, settings_.databaseName)) {
      case kdb::Generation::none:
        return false;
      case kdb::Generation::current:
        add("{BACKUP} is the database itself, not a backup of it; nothing was done",
            "orxkdb backup {db} " + free);
        return true;
      case kdb::Generation::successor:
        add("{BACKUP} has the name under which the next {DB} is written; nothing was done",
            "mv {backup} " + free);
        return true;
      case kdb::Generation::previous:
        add("{BACKUP} is the previous generation of {DB}, which the run would replace; nothing was "
            "done",
            previousCommand(free));
    }
    return true;
  }

  [[nodiscard]] std::string previousCommand(const std::string& free) const {
    if (settings_.mode == modeMerge) return "orxkdb backup {backup} " + free;
    std::error_code error;
    return std::filesystem::exists(settings_.databaseName, error) ? "orxkdb undo {db}"
                                                                  : "mv {backup} {db}";
  }

  [[nodiscard]] const Meaning& meaningOfFailure() const {
    const auto reason = static_cast<kdb::Reason>(report_.failure.reason);
    if (report_.backupFailed) return unreadBackup;
    if (reason == kdb::Reason::format) {
      return kdb::looksLikeDatabase(settings_.databaseName.c_str()) ? damaged : noDatabase;
    }
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
    const std::string file = absolutePath(obstacle.path);
    const std::string word = shellWord(obstacle.path);
    switch (obstacle.kind) {
      case kdb::ObstacleKind::none:
        return false;
      case kdb::ObstacleKind::other:
        hints_.push_back({file + " is no file of this program, which needs the name; move it away",
                          "ls -ld " + word});
        return true;
      case kdb::ObstacleKind::uncertain:
        hints_.push_back({file + " may be the database that a killed run replaced, or what it was "
                                 "making; see which, then rename or remove it",
                          "orxkdb stat " + word});
        return true;
      case kdb::ObstacleKind::fixed:
        hints_.push_back({file + " cannot be read, renamed or replaced, which a change of the "
                                 "database needs: immutable, a mount point, or another user's",
                          "ls -l " + word + "; lsattr " + word});
        return true;
      case kdb::ObstacleKind::replaced:
        hints_.push_back({file + expand(" is the database before its last change, and could not "
                                        "become {PREVIOUS}",
                                        settings_),
                          "mv " + word + expand(" {previous}", settings_)});
    }
    return true;
  }

  void addFailure() {
    if (report_.failure.returnCode == 0) return;
    if (outcome_.published) addUndo("{DB} has what the run did before it failed");
    if (addWrongBackup()) return;
    addMeaning(meaningOfFailure(), outcome_.published ? "" : "; the database is unchanged");
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
    add("{BACKUP} is compressed with " + format + "; decompress it and restore that",
        tool + " < {backup} > " + shellWord(decompressedName(settings_.backupFileName)));
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
        "orxkdb backup {backup} " + shellWord(freeTextName(settings_.backupFileName)));
  }

  void addSuccess() {
    const bool removedAll = settings_.mode == modeReplace && outcome_.published &&
                            report_.deletedCount > 1 && report_.addedCount <= 1;
    if (removedAll) {
      addUndo("{DB} had " + std::to_string(report_.deletedCount) + " records and has " +
              std::to_string(report_.addedCount) + " now; if that is not what you want, undo it");
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
