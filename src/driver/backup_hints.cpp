#include "driver/backup_hints.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "platform/compression/compression.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "platform/taken_name.h"

namespace orx {

namespace {

std::string errorText(int error) {
  return error == 0 ? "it is no file to read" : std::generic_category().message(error);
}

HintTemplate previousCommand(const RestoreSettings& settings) {
  if (settings.mode == modeMerge) return "orxkdb backup {backup} {free}";
  std::error_code error;
  if (std::filesystem::exists(settings.databaseName, error)) return "orxkdb undo {db}";
  return "mv {backup} {db}";
}

// The backup would have been replaced by the run.
bool addOwnGeneration(const RestoreSettings& settings, HintList& hints) {
  const std::string& name = settings.backupFileName;
  const std::vector<Placed> free{{"{free}", shellWord(freeTextName(name))}};
  switch (kdb::generationOf(name, settings.databaseName)) {
    case kdb::Generation::none:
      return false;
    case kdb::Generation::current:
      hints.add("{BACKUP} is the database itself, not a backup of it; nothing was done",
                "orxkdb backup {db} {free}", free);
      return true;
    case kdb::Generation::successor:
      hints.add("{BACKUP} has the name of a file that a change of {DB} replaces; nothing was done",
                "mv {backup} {free}", free);
      return true;
    case kdb::Generation::previous:
      hints.add(
          "{BACKUP} is the previous generation of {DB}, which the run would replace; nothing was "
          "done",
          previousCommand(settings), free);
  }
  return true;
}

void addMissing(const std::string& name, HintList& hints) {
  std::error_code error;
  const auto directory = std::filesystem::path(name).parent_path();
  if (directory.empty() || std::filesystem::exists(directory, error)) {
    hints.add("there is no backup {BACKUP}", "ls -l {dir}");
  } else {
    hints.add("there is no backup {BACKUP}, and no directory for it", "ls -l .");
  }
}

void addWhyUnopened(const std::string& name, int error, HintList& hints) {
  struct stat file {};
  if (error == EMFILE || error == ENFILE) {
    return hints.add("too many files are open for the backup {BACKUP} to be read; raise the limit",
                     moreFiles);
  }
  if (::stat(name.c_str(), &file) != 0) {
    if (errno == ENOENT) return addMissing(name, hints);
    return hints.add("the backup {BACKUP} cannot be reached ({why})", "ls -l .",
                     {{"{why}", errorText(errno)}});
  }
  if (S_ISDIR(file.st_mode)) {
    return hints.add("the backup {BACKUP} is a directory", "ls -ld {backup}");
  }
  if (::access(name.c_str(), R_OK) != 0) {
    return hints.add("no permission to read the backup {BACKUP}", "ls -ld {backup}");
  }
  hints.add("the backup {BACKUP} cannot be opened: {why}", "journalctl -k",
            {{"{why}", errorText(error)}});
}

// Without the compressor's ending.
std::string decompressedName(const std::string& name) {
  const std::filesystem::path path(name);
  const std::string stem = (path.parent_path() / path.stem()).string();
  return isTaken(stem) ? freeTextName(name) : stem;
}

void addCompressedBackup(const std::string& name, Compression compression, HintList& hints) {
  const std::string format = nameOf(compression);
  const std::string tool = compression == Compression::gzip ? "zcat" : format + "cat";
  hints.add(
      "{BACKUP} is compressed with {format}; decompress it and restore that",
      "{tool} < {backup} > {free}",
      {{"{format}", format}, {"{tool}", tool}, {"{free}", shellWord(decompressedName(name))}});
}

void addDatabaseAsBackup(const std::string& name, HintList& hints) {
  hints.add("{BACKUP} is a database, not a backup; make a backup of it and restore that",
            "orxkdb backup {backup} {free}", {{"{free}", shellWord(freeTextName(name))}});
}

}  // namespace

void addUnopenedBackup(const RunOutcome& outcome, HintList& hints) {
  const RestoreSettings& settings = outcome.settings;
  if (addOwnGeneration(settings, hints)) return;
  addWhyUnopened(settings.backupFileName, outcome.report.backupError, hints);
  if (outcome.published) {
    hints.addUndo("only the system record of {DB} was written again");
  } else if (isTaken(settings.databaseName)) {
    hints.append("; " + absolutePath(settings.databaseName) + " is unchanged");
  }
}

bool addWrongBackup(const RestoreSettings& settings, HintList& hints) {
  const std::string& name = settings.backupFileName;
  const Compression compression = compressionOfFile(name);
  if (compression != Compression::none) {
    addCompressedBackup(name, compression, hints);
  } else if (kdb::looksLikeDatabase(name.c_str())) {
    addDatabaseAsBackup(name, hints);
  } else {
    return false;
  }
  return true;
}

void addChangedBackup(HintList& hints) {
  hints.add("{BACKUP} changed during the run; run this again when nobody writes to it any more",
            "ls -l {backup}");
}

}  // namespace orx
