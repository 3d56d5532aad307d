#include "orxkdb/manual/program_notes.h"

namespace orx::orxkdb {

namespace {

const ManualTerm previousFile{
    "DATABASE.orx-previous", "the database before its last change; \"orxkdb undo\" brings it back"};
const ManualTerm successorFile{
    "DATABASE.orx-new",
    "the next database while a run is under way, or of a run that was killed; "
    "the next run that writes takes care of it"};
const ManualTerm noColor{"NO_COLOR", "when it is set, nothing is painted"};

}  // namespace

ProgramNotes ownNotes() {
  return {.files = {previousFile,
                    successorFile,
                    {"FILE.orx-new",
                     "a file that is being written; it gets its name when it is "
                     "whole"}},
          .environment = {{"TMPDIR",
                           "where a compressed backup is unpacked, without a name; "
                           "/var/tmp when it is not set"},
                          noColor},
          .seeAlso = "orxrestore(1), orxkdb-formats(5)"};
}

ProgramNotes restoreNotes() {
  return {.files = {previousFile,
                    successorFile,
                    {"PRESTORE_restore",
                     "directory with the messages, in the current one; \"orxkdb messages\" makes "
                     "it"}},
          .environment = {{"LC_ALL, LC_MESSAGES, LANG", "the language of the messages"},
                          {"ORX_TRACE, ORX_TRACE_FILE",
                           "trace for the maintainers: functions with their flags, \"main=0x40\", "
                           "and the file that it goes to"},
                          noColor},
          .seeAlso = "orxkdb(1), orxkdb-formats(5)"};
}

}  // namespace orx::orxkdb
