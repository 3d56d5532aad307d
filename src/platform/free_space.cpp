#include "platform/free_space.h"

#include <sys/statvfs.h>

#include "platform/file.h"

namespace orx {

bool lacksInodes(const std::string& file) {
  struct statvfs system {};
  const std::string directory = directoryOf(resolvePath(file).value_or(file));
  return ::statvfs(directory.c_str(), &system) == 0 && system.f_files > 0 && system.f_favail == 0;
}

}  // namespace orx
