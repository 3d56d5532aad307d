#include "platform/kdb_files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/file.h"
#include "platform/kdb/publish.h"
#include "platform/kdb/tree_file.h"

namespace orx::kdb {

bool belongsToDatabase(const std::string& path) {
  return DatabasePaths::of(path).isOfAnother();
}

Generation generationOf(const std::string& path, const std::string& name) {
  const DatabasePaths paths = DatabasePaths::of(resolvePath(name).value_or(name));
  if (isSameFile(path, paths.database)) return Generation::current;
  if (isSameFile(path, paths.previous)) return Generation::previous;
  const bool isPassing = isSameFile(path, paths.successor) || isSameFile(path, paths.replaced);
  return isPassing ? Generation::successor : Generation::none;
}

std::string previousName(const std::string& name) {
  struct stat named {};
  const bool isLink = ::lstat(name.c_str(), &named) == 0 && S_ISLNK(named.st_mode);
  return DatabasePaths::of(isLink ? resolvePath(name).value_or(name) : name).previous;
}

// Other files are not even opened: a pipe would lose its writer.
bool looksLikeDatabase(const char* path) {
  struct stat file {};
  if (::stat(path, &file) != 0 || !S_ISREG(file.st_mode)) return false;
  const UniqueFd fd = openFile(path, O_RDONLY | O_NONBLOCK | O_NOCTTY);
  return fd.valid() && TreeFile::beginsLikeTree(fd.get());
}

}  // namespace orx::kdb
