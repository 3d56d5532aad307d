// PlainBackup: a backup, compressed or not, a file or a pipe, under a path that readers of plain
// files can open.
//
// A compressed one is unpacked into a file without a name in the directory TMPDIR, /var/tmp without
// it: readers go to and fro in it, and memory stays bounded. It is gone with the object, or with
// the process.
#pragma once

#include <string>

#include "orxkdb/result.h"
#include "platform/file.h"

namespace orx::orxkdb {

class PlainBackup {
 public:
  // The most bytes between two line ends: with more it is no backup. Without the limit a small
  // compressed file could fill the disk.
  static constexpr std::size_t longestLine = std::size_t{1} << 20;

  // Once for an object. What comes out of a pipe, compressed or not, is put into the file as well.
  // Anything else is left for its reader to open, or to refuse. exitNotAsExpected for what is no
  // backup or damaged, exitNotOpened when it cannot be opened, exitFailed when it cannot be read,
  // changed meanwhile, or there is no room for it.
  Result open(const std::string& name);
  // Good in this process, as long as the object lives.
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  Result unpack(const std::string& name);

  std::string path_;
  UniqueFd file_;
};

}  // namespace orx::orxkdb
