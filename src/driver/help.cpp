#include "driver/help.h"

#include <array>
#include <cstdio>

#include "messages/message_print.h"
#include "messages/trace_unit.h"

namespace orx {

namespace {

constexpr std::array<MessageKey<>, 8> usageKeys{"IDS_HELP_1", "IDS_HELP_2", "IDS_HELP_3",
                                                "IDS_HELP_4", "IDS_HELP_5", "IDS_HELP_6",
                                                "IDS_HELP_7", "IDS_HELP_8"};
constexpr std::array<MessageKey<>, 3> noteKeys{"IDS_HELP_11", "IDS_HELP_13", "IDS_HELP_14"};

constexpr std::array builtInHelp{
    "\nThis is a stand-alone program which restores a configuration data base from a backup "
    "file.\n",
    "This program is invoked from a command-line prompt using the following syntax;\n",
    "orxrestore -i <backup-file-name> -o <database-name> -v\n",
    "     where '<backup-file-name>' is the name of the backup file which is to be read\n",
    "           '<database-name>' is the name of the configuration database into which\n",
    "                             the data in '<backup-file-name>' is restored.\n",
    "           -v verbose mode, periodically prints number of records deleted and copied.\n",
    "           -p prototypes only are restored.\n",
    "e.g. orxrestore -i c:\\DBBackup\\RORXbackup.txt -o rorxdata\n",
    " \n",
    "Note - all previously existing records in this file are\n",
    "       deleted prior to the restore.\n",
    "orxrestore must be issued from the same directory as the database being restored.\n",
    "Ensure that the TDV is stopped before running this program\n",
};

void print(const char* text) {
  (void)std::fputs(text, stdout);
}

}  // namespace

void HelpFn() {
  ORX_TRACE("HelpFn");
  MessageCatalogue catalogue;
  if (!catalogue.isOpen()) return HelpWithoutBundle();
  for (const auto& key : usageKeys) printMessageFrom(catalogue, key);
  print(" \n");
  for (const auto& key : noteKeys) printMessageFrom(catalogue, key);
}

void HelpWithoutBundle() {
  ORX_TRACE("HelpWithoutBundle");
  for (const char* text : builtInHelp) print(text);
}

}  // namespace orx
