// Who may use a file: its owner, its mode and, where the file system has them, its access list.
#pragma once

#include <sys/stat.h>

#include <string>

namespace orx {

struct FileRights {
  struct stat file {};
  std::string list;  // the POSIX access list as the system stores it; empty for none
};

// Of an open file, or of the one that `path` leads to. Failures are errno values, 0 is success.
[[nodiscard]] int readRights(int fd, FileRights& rights);
[[nodiscard]] int readRights(const std::string& path, FileRights& rights);

// Gives an own file owner, list and mode, and the further mode bits `more`. At no moment has
// anybody rights that neither the file gave before nor `rights` do.
[[nodiscard]] int giveRights(int fd, const FileRights& rights, mode_t more);

// The same as far as it does not let anybody but the owner use the file: mode 0600 and `more`. What
// giveRights() could not do later fails now.
[[nodiscard]] int withholdRights(int fd, const FileRights& rights, mode_t more);

// Security labels and what users noted, as far as the system lets them be copied.
void copyLabels(int from, int to);

}  // namespace orx
