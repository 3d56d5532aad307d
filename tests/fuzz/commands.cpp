#include "tests/fuzz/commands.h"

#include <algorithm>
#include <array>
#include <functional>
#include <nlohmann/json.hpp>

#include "orxkdb/check/check_run.h"
#include "orxkdb/cmd_backup.h"
#include "orxkdb/cmd_check.h"
#include "orxkdb/cmd_diff.h"
#include "orxkdb/cmd_dump.h"
#include "orxkdb/cmd_explain.h"
#include "orxkdb/cmd_load.h"
#include "orxkdb/cmd_plan.h"
#include "orxkdb/cmd_report.h"
#include "orxkdb/cmd_stat.h"
#include "orxkdb/cmd_undo.h"
#include "orxkdb/diff/diff_run.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/sample/fleet.h"
#include "orxkdb/sample/sample_writer.h"
#include "orxkdb/stat/database_statistics.h"
#include "platform/kdb.h"
#include "restore/operations.h"
#include "restore/restore_settings.h"
#include "restore/run_report.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {

namespace {

using namespace orx::orxkdb;

constexpr std::size_t all = 0;  // a limit
constexpr std::uint32_t fleetSize = 20;

using Command = Result (*)(const Workplace& place, bool json);

const std::array<Command, 11> readers{
    [](const Workplace& p, bool json) { return check({.input = p.database, .json = json}); },
    [](const Workplace& p, bool json) { return stat({.database = p.database, .json = json}); },
    [](const Workplace& p, bool) { return dump({.database = p.database}); },
    [](const Workplace& p, bool) { return backup({.database = p.database, .file = p.output}); },
    [](const Workplace& p, bool json) {
      return explain({.database = p.database, .handle = "0:0", .json = json});
    },
    [](const Workplace& p, bool json) {
      return explain({.database = p.database, .handle = "12:1", .json = json});
    },
    [](const Workplace& p, bool json) {
      return diff({.before = p.database, .after = p.sound, .json = json, .records = true});
    },
    [](const Workplace& p, bool json) {
      return diff({.before = p.sound, .after = p.database, .limit = all, .json = json});
    },
    [](const Workplace& p, bool json) {
      return diff({.before = p.backup, .after = p.database, .json = json});
    },
    [](const Workplace& p, bool json) {
      return plan({.database = p.database, .backup = p.backup, .json = json});
    },
    [](const Workplace& p, bool) {
      return report({.database = p.database, .page = p.output, .backup = p.backup});
    },
};

const std::array<Command, 6> backupReaders{
    [](const Workplace& p, bool json) {
      return check({.input = p.backup, .limit = all, .json = json});
    },
    [](const Workplace& p, bool json) { return explain({.line = p.backup + ":1", .json = json}); },
    [](const Workplace& p, bool json) { return explain({.line = p.backup + ":3", .json = json}); },
    [](const Workplace& p, bool json) {
      return diff({.before = p.sound, .after = p.backup, .json = json, .records = true});
    },
    [](const Workplace& p, bool json) {
      return plan({.database = p.sound, .backup = p.backup, .limit = all, .json = json});
    },
    [](const Workplace& p, bool) {
      return report({.database = p.sound, .page = p.output, .backup = p.backup, .limit = all});
    },
};

bool isPlainText(std::string_view text) {
  return !text.empty() && text.find('\n') == std::string_view::npos;
}

// As the code of a process.
int codeOf(const Result& result) {
  constexpr std::array codes{exitDone, exitUsage, exitNotAsExpected, exitNotOpened, exitFailed};
  require(std::ranges::find(codes, result.code) != codes.end(), "an exit code is documented");
  require(result.ok() || isPlainText(result.text), "a failure has one line of words");
  require(nlohmann::json::accept(failureJson(result)), "a failure can be told as JSON");
  return result.code;
}

int run(Command command, const Workplace& place, Wording wording) {
  const CapturedOutput output;
  const bool json = wording == Wording::json;
  const int code = codeOf(command(place, json));
  const std::string text = output.text();
  require(!json || text.empty() || !text.starts_with('{') || nlohmann::json::accept(text),
          "JSON is JSON");
  return code;
}

int runOperation(const Workplace& place, std::int32_t mode, int (*operation)(),
                 std::int32_t prototypesOnly = 0) {
  const CapturedOutput output;
  runReport() = {};
  restoreSettings() = {.mode = mode,
                       .prototypesOnly = prototypesOnly,
                       .databaseName = place.database,
                       .backupFileName = place.backup};
  return operation();
}

int load(const Workplace& place) {
  const CapturedOutput output;
  (void)codeOf(dump({.database = place.sound, .file = place.output}));
  return codeOf(orxkdb::load({.database = place.database, .file = place.output, .replace = true}));
}

int undo(const Workplace& place) {
  const CapturedOutput output;
  return codeOf(orxkdb::undo({.database = place.database}));
}

int apply(const Workplace& place, Change change) {
  switch (change) {
    case Change::restore:
      return restore(place);
    case Change::prototypes:
      return runOperation(place, modeReplace, overrideDB, 1);
    case Change::merge:
      return merge(place);
    case Change::rebuild:
      return rebuild(place);
    case Change::load:
      return load(place);
    case Change::undo:
      return undo(place);
  }
  return 0;
}

bool canBeReadWhole(const std::string& database) {
  DatabaseStatistics statistics;
  return gatherStatistics(database, statistics).ok();
}

}  // namespace

void Workplace::fill(std::string_view backupText, std::string_view soundBytes) const {
  scratch.empty();
  writeFile(backup, backupText);
  writeFile(database, soundBytes);
  writeFile(sound, soundBytes);
}

std::size_t readingCommands() {
  return readers.size();
}

int readDatabase(const Workplace& place, std::size_t command, Wording wording) {
  const std::string before = readFile(place.database);
  const int code = run(readers[command], place, wording);
  require(readFile(place.database) == before, "who reads changes nothing");
  require(!exists(place.successor()) && !exists(place.output + ".orx-new"),
          "who reads leaves nothing behind");
  return code;
}

std::size_t backupCommands() {
  return backupReaders.size();
}

int readBackup(const Workplace& place, std::size_t command, Wording wording) {
  return run(backupReaders[command], place, wording);
}

int changeDatabase(const Workplace& place, Change change, std::string_view before) {
  const int code = apply(place, change);
  require(!exists(place.successor()), "no successor is left behind");
  const std::string after = readFile(place.database);
  if (!exists(place.previous())) {
    require(after == before, "what is not published changes nothing");
    return code;
  }
  require(readFile(place.previous()) == before, "the old database is kept as it was");
  require(canBeReadWhole(place.database), "what is published is a whole database");
  if (undo(place) != 0) return code;
  require(readFile(place.database) == before && readFile(place.previous()) == after,
          "a change can be taken back");
  return code;
}

int restore(const Workplace& place) {
  return runOperation(place, modeReplace, overrideDB);
}

int merge(const Workplace& place) {
  return runOperation(place, modeMerge, mergeDB);
}

int rebuild(const Workplace& place) {
  return runOperation(place, modeUseCount, useCount);
}

bool planSaysYes(const Workplace& place) {
  const CapturedOutput output;
  return codeOf(plan({.database = place.database, .backup = place.backup})) == exitDone;
}

bool areSame(const std::string& a, const std::string& b) {
  const CapturedOutput output;
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

std::string soundDatabase(const Scratch& scratch, std::uint64_t seed) {
  const std::string name = scratch.file("made");
  kdb::kdbHandle handle;
  kdb::kdbStatus status;
  (void)kdb::kdbOpen(name.c_str(), static_cast<std::int32_t>(name.size()), kdb::openAsNew, handle,
                     status);
  const Fleet fleet({.objects = fleetSize, .seed = seed});
  for (const std::uint32_t object : fleet.keyOrder()) {
    for (const DataBuffer& record : fleet.recordsOf(object)) {
      require(kdb::AddRecord(handle, record.data(), 20, record.data(), 296) == 0, "a fleet fits");
    }
  }
  require(kdb::CloseDatabase(handle, status) == 0, "a sound database can be made");
  const std::string bytes = readFile(name);
  (void)removeFile(name);
  return bytes;
}

std::string soundBackup(std::uint64_t seed) {
  std::string text;
  const bool whole = writeSample({.objects = fleetSize, .seed = seed}, SampleOrder::key,
                                 [&text](std::string_view piece) {
                                   text += piece;
                                   return true;
                                 });
  require(whole, "a sample can be made");
  return text;
}

}  // namespace orx::fuzz
