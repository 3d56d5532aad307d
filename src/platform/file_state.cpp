#include "platform/file_state.h"

namespace orx {

namespace {

std::optional<FileState> stateIn(const struct stat& file) {
  if (!S_ISREG(file.st_mode)) return std::nullopt;
  return FileState{file.st_dev, file.st_ino, file.st_size, file.st_mtim.tv_sec,
                   file.st_mtim.tv_nsec};
}

}  // namespace

std::optional<FileState> stateOf(int descriptor) {
  struct stat file {};
  return ::fstat(descriptor, &file) == 0 ? stateIn(file) : std::nullopt;
}

std::optional<FileState> stateOf(const std::string& path) {
  struct stat file {};
  return ::stat(path.c_str(), &file) == 0 ? stateIn(file) : std::nullopt;
}

}  // namespace orx
