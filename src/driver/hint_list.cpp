#include "driver/hint_list.h"

#include "platform/kdb.h"
#include "platform/kdb_files.h"

namespace orx {

HintList::HintList(const RestoreSettings& settings) {
  const std::string previous = kdb::previousName(settings.databaseName);
  places_ = {{"{PREVIOUS}", absolutePath(previous)},
             {"{previous}", shellWord(previous)},
             {"{DB}", absolutePath(settings.databaseName)},
             {"{BACKUP}", absolutePath(settings.backupFileName)},
             {"{db}", shellWord(settings.databaseName)},
             {"{backup}", shellWord(settings.backupFileName)},
             {"{dir}", shellWord(parentOf(settings.backupFileName))}};
}

void HintList::add(HintTemplate what, HintTemplate next, const std::vector<Placed>& more) {
  std::vector<Placed> places = places_;
  places.insert(places.end(), more.begin(), more.end());
  hints_.push_back({filled(what.text(), places), filled(next.text(), places)});
}

void HintList::addUndo(HintTemplate why, const std::vector<Placed>& more) {
  add(why, "orxkdb undo {db}", more);
}

}  // namespace orx
