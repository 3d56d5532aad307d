#include "tests/fuzz/commands.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>
#include <utility>

#include "orxkdb/check/check_run.h"
#include "orxkdb/diff/diff_run.h"
#include "orxkdb/program.h"
#include "orxkdb/sample/fleet.h"
#include "orxkdb/sample/sample_writer.h"
#include "platform/kdb.h"
#include "restore/operations.h"
#include "restore/restore_settings.h"
#include "restore/run_report.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {

namespace {

using namespace orx::orxkdb;

constexpr std::uint32_t fleetSize = 20;

constexpr std::array readers{"check db",
                             "stat db",
                             "dump db output",
                             "backup db output",
                             "explain db 0:0",
                             "explain db 12:1",
                             "diff --records db sound",
                             "diff --limit 0 sound db",
                             "diff backup db",
                             "plan db backup",
                             "report db --html output --plan backup"};

constexpr std::array backupReaders{
    "check --limit 0 backup",      "explain --line backup:1",
    "explain --line backup:3",     "diff --records sound backup",
    "plan --limit 0 sound backup", "report --limit 0 sound --html output --plan backup"};

// Runs orxkdb on the files of the place. The exit code. Its words on standard error are taken
// above the descriptor, which a sanitizer writes to.
int runOrxkdb(const Workplace& place, const std::string& command, Wording wording = Wording::text) {
  constexpr std::array<int, 5> codes{exitDone, exitUsage, exitNotAsExpected, exitNotOpened,
                                     exitFailed};
  const bool json = wording == Wording::json;
  std::istringstream text("orxkdb " + command + " --color never" + (json ? " --json" : ""));
  const std::vector<std::string> words{std::istream_iterator<std::string>(text), {}};
  std::vector<const char*> line(words.size());
  std::ranges::transform(words, line.begin(), [](const auto& word) { return word.c_str(); });
  const test::WorkingDirectory inPlace(place.scratch.path());
  const CapturedOutput output;
  char* failure = nullptr;
  std::size_t length = 0;
  std::FILE* const errors = std::exchange(stderr, ::open_memstream(&failure, &length));
  const int code = orxkdb::run(static_cast<int>(line.size()), line.data());
  (void)std::fclose(std::exchange(stderr, errors));
  const std::string told(failure, length);
  std::free(failure);
  require(std::ranges::find(codes, code) != codes.end(), "an exit code is documented");
  require(code == exitDone || (told.starts_with("orxkdb: ") && told.find('\n') == length - 1),
          "a failure has one line of words");
  const std::string printed = output.text();
  require(!json || printed.empty() || nlohmann::json::accept(printed), "JSON is JSON");
  return code;
}

int runOrxrestore(const Workplace& place, std::int32_t mode, int (*operation)(),
                  std::int32_t prototypesOnly = 0) {
  const CapturedOutput output;
  runReport() = {};
  restoreSettings() = {.mode = mode,
                       .prototypesOnly = prototypesOnly,
                       .databaseName = place.database,
                       .backupFileName = place.backup};
  return operation();
}

bool exists(const std::string& file) {
  return std::filesystem::exists(std::filesystem::symlink_status(file));
}

}  // namespace

void Workplace::fill(std::string_view databaseBytes, std::string_view backupText) const {
  for (const std::string& name : scratch.names()) std::filesystem::remove_all(scratch / name);
  test::writeFile(database, databaseBytes);
  test::writeFile(sound, soundBytes);
  test::writeFile(backup, backupText);
}

void readDatabase(const Workplace& place, std::size_t command, Wording wording) {
  const std::string before = test::readFile(place.database);
  (void)runOrxkdb(place, readers[command % readers.size()], wording);
  require(test::readFile(place.database) == before, "who reads changes nothing");
  require(!exists(place.database + ".orx-new") && !exists(place.output + ".orx-new"),
          "who reads leaves nothing behind");
}

std::size_t backupCommands() {
  return backupReaders.size();
}

void readBackup(const Workplace& place, std::size_t command, Wording wording) {
  (void)runOrxkdb(place, backupReaders[command % backupReaders.size()], wording);
}

int apply(const Workplace& place, Change change) {
  switch (change) {
    case Change::restore:
      return runOrxrestore(place, modeReplace, overrideDB);
    case Change::prototypes:
      return runOrxrestore(place, modeReplace, overrideDB, 1);
    case Change::merge:
      return runOrxrestore(place, modeMerge, mergeDB);
    case Change::rebuild:
      return runOrxrestore(place, modeUseCount, useCount);
    case Change::load:
      (void)runOrxkdb(place, "dump sound output");
      return runOrxkdb(place, "load --replace db output");
    case Change::undo:
      return runOrxkdb(place, "undo db");
  }
  return 0;
}

int changeDatabase(const Workplace& place, Change change, std::string_view before) {
  const std::string previous = place.database + ".orx-previous";
  const int code = apply(place, change);
  require(!exists(place.database + ".orx-new"), "no successor is left behind");
  const std::string after = test::readFile(place.database);
  if (!exists(previous)) {
    require(after == before, "what is not published changes nothing");
    return code;
  }
  require(test::readFile(previous) == before, "the old database is kept as it was");
  require(runOrxkdb(place, "stat db") == exitDone, "what is published is a whole database");
  if (apply(place, Change::undo) != 0) return code;
  require(test::readFile(place.database) == before && test::readFile(previous) == after,
          "a change can be taken back");
  return code;
}

std::size_t databaseCommands() {
  constexpr std::size_t changes = 6;
  return readers.size() + changes;
}

void handOver(const Workplace& place, const std::string& bytes, std::size_t command,
              Wording wording) {
  static const std::string backupText = soundBackup();
  place.fill(bytes, backupText);
  command %= databaseCommands();
  if (command < readers.size()) {
    readDatabase(place, command, wording);
  } else {
    (void)changeDatabase(place, static_cast<Change>(command - readers.size()), bytes);
  }
}

bool planSaysYes(const Workplace& place) {
  return runOrxkdb(place, "plan db backup") == exitDone;
}

bool areSame(const std::string& a, const std::string& b) {
  DiffCounts counts;
  require(runDiff({.before = a, .after = b}, counts).ok(), "two sound inputs can be compared");
  return counts.isSame() || counts.unreadableLines > 0;
}

bool hasSoundTexts(const std::string& database) {
  Findings findings(1);
  CheckCounts counts;
  if (!runCheck(database, findings, counts).ok()) return false;
  using enum FindingKind;
  constexpr std::array kinds{storedKey,       chainGap,         chainDisagrees, recordType,
                             textLeftOver,    valueCount,       notReadBack,    ambiguousValue,
                             attributeHeader, repeatedAttribute};
  return std::ranges::all_of(kinds, [&](FindingKind kind) { return findings.count(kind) == 0; });
}

std::string soundDatabase(const std::string& scratchFile) {
  kdb::kdbHandle handle;
  kdb::kdbStatus status;
  (void)kdb::kdbOpen(scratchFile.c_str(), static_cast<std::int32_t>(scratchFile.size()),
                     kdb::openAsNew, handle, status);
  const Fleet fleet({.objects = fleetSize, .seed = 1});
  for (const std::uint32_t object : fleet.keyOrder()) {
    for (const DataBuffer& record : fleet.recordsOf(object)) {
      require(kdb::AddRecord(handle, record.data(), 20, record.data(), 296) == 0, "a fleet fits");
    }
  }
  require(kdb::CloseDatabase(handle, status) == 0, "a sound database can be made");
  return test::readFile(scratchFile);
}

std::string soundBackup() {
  std::string text;
  const auto take = [&text](std::string_view piece) {
    text += piece;
    return true;
  };
  require(writeSample({.objects = fleetSize, .seed = 2}, SampleOrder::key, take),
          "a sample can be made");
  return text;
}

}  // namespace orx::fuzz
