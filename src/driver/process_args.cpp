#include "driver/process_args.h"

#include "driver/help.h"
#include "driver/option_scanner.h"
#include "messages/message_print.h"
#include "messages/trace_unit.h"
#include "restore/restore_settings.h"

namespace orx {

namespace {

constexpr const char* optionString = "i:I:m:M:o:O:u:U:pPvV?";

// What the scan finds out beside the settings.
struct Scan {
  bool usable = true;
  bool namesRequired = false;  // both names; the use-count rebuild needs the database's alone
};

void takeBackupFile(RestoreSettings& settings, Scan& scan) {
  settings.backupFileName = options::optarg;
  scan.namesRequired = true;
  printMessage("IDS_PROCESSARGS_FIRST", settings.backupFileName);
}

void takeDatabase(RestoreSettings& settings, RestoreMode mode, Scan& scan) {
  settings.mode = mode;
  settings.databaseName = options::optarg;
  scan.namesRequired = mode != modeUseCount;
  if (scan.namesRequired) printMessage("IDS_PROCESSARGS_SECOND", settings.databaseName);
}

void takeVerbose(RestoreSettings& settings) {
  settings.verbose = 1;
  printMessage("IDS_PROCESSARGS_THIRD");
}

void takeOption(int option, RestoreSettings& settings, Scan& scan) {
  switch (option) {
    case 'i':
    case 'I':
      return takeBackupFile(settings, scan);
    case 'o':
    case 'O':
      return takeDatabase(settings, modeReplace, scan);
    case 'm':
    case 'M':
      return takeDatabase(settings, modeMerge, scan);
    case 'u':
    case 'U':
      return takeDatabase(settings, modeUseCount, scan);
    case 'p':
    case 'P':
      settings.prototypesOnly = 1;
      return;
    case 'v':
    case 'V':
      return takeVerbose(settings);
    default:
      scan.usable = false;
  }
}

bool hasBothNames(const RestoreSettings& settings) {
  if (settings.backupFileName.empty()) printMessage("IDS_PROCESSARGS_FIFTH");
  if (settings.databaseName.empty()) printMessage("IDS_PROCESSARGS_SIXTH");
  return !settings.backupFileName.empty() && !settings.databaseName.empty();
}

bool hasNames(const RestoreSettings& settings, const Scan& scan) {
  if (scan.namesRequired) return hasBothNames(settings);
  return settings.mode == modeUseCount && !settings.databaseName.empty();
}

}  // namespace

int processArgs(int argc, char* const argv[]) {
  ORX_TRACE("processArgs");
  RestoreSettings& settings = restoreSettings();
  Scan scan;
  int option = 0;
  while ((option = options::getopt(argc, argv, optionString)) > 0) {
    takeOption(option, settings, scan);
  }
  const bool named = hasNames(settings, scan);
  if (scan.usable && named) return trace.exit(1);
  HelpFn();
  return trace.exit(0);
}

}  // namespace orx
