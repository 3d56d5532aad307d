// What of a directory is on the disk for good, and what a power failure leaves of the rest.
//
// The model is that of a file system which promises no more than it must: what was written since
// the last sync of a file is there in any part, in blocks of 512 or 4096 bytes, and so are its size
// and its mode; of the changes of names since the last sync of the directory any can be there or
// not, but none without those before it that concern the same names.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "platform/file.h"
#include "tests/faults/traced_program.h"

namespace orx::faults {

struct FileState {
  std::string content = {};
  mode_t mode = 0;
};

class DiskWatch {
 public:
  // What is there now is synced.
  explicit DiskWatch(std::filesystem::path directory);
  // Behind each call that may change the disk.
  void follow(const TracedCall& call);
  // Takes back what a power failure might.
  void losePower(std::mt19937_64& random);

 private:
  struct File {
    UniqueFd open;  // so that no other file gets its number
    FileState synced;
  };
  using Names = std::map<std::string, ino_t>;

  [[nodiscard]] Names look();
  [[nodiscard]] Names keptNames(std::mt19937_64& random) const;

  std::filesystem::path directory_;
  std::map<ino_t, File> files_;
  std::vector<Names> names_;  // those that are synced, and those behind each change since
};

}  // namespace orx::faults
