#include "orxkdb/commands.h"

#include "orxkdb/cmd_backup.h"
#include "orxkdb/cmd_check.h"
#include "orxkdb/cmd_create.h"
#include "orxkdb/cmd_diff.h"
#include "orxkdb/cmd_dump.h"
#include "orxkdb/cmd_explain.h"
#include "orxkdb/cmd_load.h"
#include "orxkdb/cmd_messages.h"
#include "orxkdb/cmd_plan.h"
#include "orxkdb/cmd_report.h"
#include "orxkdb/cmd_sample.h"
#include "orxkdb/cmd_stat.h"
#include "orxkdb/cmd_undo.h"

namespace orx::orxkdb {

namespace {

// In the order of the help; one line for each.
constexpr Registration* registrations[] = {
    addCreate,    //
    addDump,      //
    addLoad,      //
    addBackup,    //
    addStat,      //
    addCheck,     //
    addExplain,   //
    addDiff,      //
    addPlan,      //
    addReport,    //
    addMessages,  //
    addUndo,      //
    addSample,    //
};

}  // namespace

void addCommands(CommandLine& line) {
  for (Registration* const add : registrations) add(line);
}

}  // namespace orx::orxkdb
