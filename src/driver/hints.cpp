#include "driver/hints.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "driver/file_words.h"
#include "messages/message_print.h"
#include "platform/compression/compression.h"
#include "platform/interruption.h"
#include "platform/kdb.h"
#include "restore/exit_codes.h"
#include "terminal/color.h"

namespace orx {

namespace {

struct Meaning {
  kdb::Reason reason;
  const char* what;
  const char* next;
};

constexpr const char* moreFiles = "ulimit -n 1024";

// What the reasons mean, of a database and in the commands as expand() takes them.
constexpr std::array openMeanings{
    Meaning{kdb::Reason::notFound, "there is no database {DB}", "orxkdb create {db}"},
    Meaning{kdb::Reason::inUse, "{DB} is being changed by another program; wait for its end",
            "fuser -v {db}"},
    Meaning{kdb::Reason::authority,
            "no permission to change {DB} and its directory; run this as their owner",
            "ls -ld . {db}"},
    Meaning{kdb::Reason::length,
            "the name is too long for the file system with \".orx-previous\" behind it: {DB}",
            "mv {db} SHORTER"},
    Meaning{kdb::Reason::unique,
            "a directory stands in the place of {DB}.orx-previous or {DB}.orx-new, where the "
            "database before a change and the next one are kept; move it away",
            "ls -ld {db}.orx-*"},
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

// The names in a text: {DB} and {BACKUP} as absolute paths, {db} and {backup} as words of a
// command.
std::string expand(std::string_view text, const RestoreSettings& settings) {
  const std::array<std::pair<std::string_view, std::string>, 4> names{
      {{"{DB}", absolutePath(settings.databaseName)},
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
        addMeaning(meaningOfFailure(), "");
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
    const std::size_t slash = settings_.databaseName.find_last_of("\\/");
    const std::string directory = settings_.databaseName.substr(0, slash + 1);
    add("the database is named without a path and opened in the current directory, not as {DB}",
        "cd " + shellWord(directory));
  }

  void addUnopenedBackup() {
    const std::string& name = settings_.backupFileName;
    const std::string directory = shellWord(parentOf(name));
    const std::string unchanged = outcome_.published ? "" : "; {DB} is unchanged";
    if (kdb::isGenerationOf(name.c_str(), settings_.databaseName.c_str())) {
      add("{BACKUP} is a generation of {DB} itself, which the run would replace" + unchanged,
          "orxkdb undo {db}");
    } else if (std::error_code error; std::filesystem::is_directory(name, error)) {
      add("the backup {BACKUP} is a directory" + unchanged, "ls -l {backup}");
    } else if (report_.backupError == EMFILE || report_.backupError == ENFILE) {
      add("too many files are open for the backup {BACKUP} to be read; raise the limit" + unchanged,
          moreFiles);
    } else if (::access(name.c_str(), R_OK) == 0) {
      add("the backup {BACKUP} cannot be opened: " + errorText(report_.backupError) + unchanged,
          "journalctl -k");
    } else if (::access(name.c_str(), F_OK) == 0) {
      add("no permission to read the backup {BACKUP}" + unchanged, "ls -l {backup}");
    } else {
      add("there is no backup {BACKUP}" + unchanged, "ls -l " + directory);
    }
    if (outcome_.published) addUndo("only the system record of {DB} was written again");
  }

  [[nodiscard]] const Meaning& meaningOfFailure() const {
    const auto reason = static_cast<kdb::Reason>(report_.failure.reason);
    if (report_.backupFailed) return unreadBackup;
    if (reason == kdb::Reason::format) {
      return kdb::looksLikeDatabase(settings_.databaseName.c_str()) ? damaged : noDatabase;
    }
    if (outcome_.exitCode == exitDatabaseNotOpened) {
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

  void addFailure() {
    if (report_.failure.returnCode == 0) return;
    if (outcome_.published) addUndo("{DB} has what the run did before it failed");
    if (addWrongBackup()) return;
    addMeaning(meaningOfFailure(), outcome_.published ? "" : "; the database is unchanged");
  }

  // Looks into nothing but a regular file: a pipe would be opened a second time.
  static bool isDatabase(const std::string& name) {
    std::error_code error;
    return std::filesystem::is_regular_file(name, error) && kdb::looksLikeDatabase(name.c_str());
  }

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
