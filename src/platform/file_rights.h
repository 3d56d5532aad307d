// Who may use a file: its owner, its mode and, where the file system has them, its access list.
#pragma once

#include <sys/stat.h>

#include <string>

namespace orx {

struct FileRights {
  struct stat file {};
  std::string list;  // the POSIX access list as the system stores it; empty for none
};

// Of an open file, or of the one that `path` leads to. Each returns 0 or an errno value; `rights`
// is of use only after 0.
[[nodiscard]] int readRights(int fd, FileRights& rights);
[[nodiscard]] int readRights(const std::string& path, FileRights& rights);

// Gives the open file `fd`, which belongs to this process, the owner, list and mode of `rights`,
// and the further mode bits `more`. At no moment has anybody rights that neither the file gave
// before nor `rights` do; after a failure it may have less than before.
[[nodiscard]] int giveRights(int fd, const FileRights& rights, mode_t more);

// The same for a file that is still being written: owner and list, but mode 0600 and `more`, so
// that nobody but the owner can use it. Rights that giveRights() could not give fail here already.
[[nodiscard]] int withholdRights(int fd, const FileRights& rights, mode_t more);

// Copies extended attributes from one open file to another: security labels and what users noted,
// as far as the system lets them be copied. Those that speak of a file's content are left out.
void copyLabels(int from, int to);

}  // namespace orx
