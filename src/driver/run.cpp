#include "driver/run.h"

#include <unistd.h>

#include <new>
#include <string>

#include "driver/hello.h"
#include "driver/hints.h"
#include "driver/process_args.h"
#include "messages/message_print.h"
#include "messages/trace_unit.h"
#include "platform/file.h"
#include "platform/interruption.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "platform/trace.h"
#include "restore/exit_codes.h"
#include "restore/restore_settings.h"
#include "terminal/progress_line.h"

namespace orx {

namespace {

// Both kinds: a database is named without a path on every system.
bool hasPathSeparator(const std::string& name) {
  return name.find_first_of("\\/") != std::string::npos;
}

// The run would replace or discard what it is to restore from.
bool backupIsGeneration(const RestoreSettings& settings) {
  return settings.mode != modeUseCount &&
         kdb::generationOf(settings.backupFileName, settings.databaseName) != kdb::Generation::none;
}

int runOperation(std::int32_t mode, const Operations& operations) {
  switch (mode) {
    case modeMerge:
      return operations.merge();
    case modeUseCount:
      return operations.useCount();
    default:
      return operations.replace();
  }
}

int runSteps(int argc, char* const argv[], const Operations& operations) {
  HelloFn();
  if (processArgs(argc, argv) == 0) return exitUsage;
  const RestoreSettings& settings = restoreSettings();
  if (hasPathSeparator(settings.databaseName)) {
    printMessage("IDS_MAIN_FIRST");
    return exitNameHasPath;
  }
  if (backupIsGeneration(settings)) {
    printMessage("IDS_MAIN_SECOND", settings.backupFileName);
    return exitBackupNotOpened;
  }
  const ProgressScope progress(settings.verbose == 0 && !traceIsOpen());
  return runOperation(settings.mode, operations);
}

// Without taking memory or a stream's lock.
void sayOutOfMemory(bool published) {
  writeIfTaken(STDERR_FILENO,
               published ? "orxrestore: out of memory behind the change; the database has what the "
                           "run did, \"orxkdb undo\" takes it back\n"
                         : "orxrestore: out of memory; the database is unchanged; free memory and "
                           "run this again\n");
}

void leaveOutOfMemory(bool published) {
  progressLine().eraseForGood();
  sayOutOfMemory(published);
}

int runWithHints(int argc, char* const argv[], const Operations& operations) {
  const int result = runSteps(argc, argv, operations);
  giveHints(result);
  return result;
}

}  // namespace

int run(int argc, char* const argv[], const Operations& operations) {
  ORX_TRACE("main");
  try {
    return trace.exit(runWithHints(argc, argv, operations));
  } catch (const std::bad_alloc&) {
    sayOutOfMemory(hasPublished());
    return trace.exit(exitFailed);
  }
}

void endOutOfMemory() {
  endProcess(leaveOutOfMemory, exitFailed);
}

}  // namespace orx
