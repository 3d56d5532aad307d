#include "restore/restore_settings.h"

namespace orx {

RestoreSettings& restoreSettings() {
  static RestoreSettings settings;
  return settings;
}

}  // namespace orx
