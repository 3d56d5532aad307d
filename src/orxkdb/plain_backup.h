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
  // What more than this stands between two line ends of is no backup. Without the limit a small
  // compressed file could fill the disk.
  static constexpr std::size_t longestLine = std::size_t{1} << 20;

  // What comes out of a pipe, compressed or not, is put into the file as well. Anything else is
  // left for its reader to open, or to refuse. exitNotAsExpected for what is no backup.
  Result open(const std::string& name);
  // Lives as long as the object.
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  Result unpack(const std::string& name);

  std::string path_;
  UniqueFd file_;
};

}  // namespace orx::orxkdb
