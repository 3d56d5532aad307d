// The message bundle as files, where the programs look for it.
#pragma once

#include <string>

#include "orxkdb/result.h"

namespace orx::orxkdb {

// Puts the directory PRESTORE_restore with its files into `directory`, which must exist. Each file
// appears whole; one that is there is replaced. Checks first as checkBundlePlace() does. After a
// later failure the files before it are written.
Result putBundle(const std::string& directory);
// exitNotOpened when a link, or anything else that is no file of messages, has the name of one:
// putBundle() does not replace it, and nobody should write what goes with the messages. Only looks.
Result checkBundlePlace(const std::string& directory);

}  // namespace orx::orxkdb
