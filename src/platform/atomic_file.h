// A text file that appears whole or not at all: open(), write() as often as wanted, publish().
//
// The text goes into NAME.orx-new beside the resolved target (so a symbolic link stays one);
// publish() syncs it, renames it over the target in one step and syncs the directory. Until then
// the target is untouched. An unpublished file is removed when the object goes or a signal ends the
// run; a process that dies otherwise leaves NAME.orx-new behind, with the mark of an unpublished
// file, and the next one replaces it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/file.h"

namespace orx {

// What AtomicFile writes first ends like this.
inline constexpr std::string_view unpublishedSuffix = ".orx-new";

class AtomicFile {
 public:
  // Nothing is created before open().
  AtomicFile() = default;
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  ~AtomicFile();

  // Each returns 0 or an errno value. One open() for an object: EEXIST when the target is neither a
  // regular file nor a directory (EISDIR), or NAME.orx-new is somebody else's; EBUSY when another
  // process writes it. A new file is 0640 less the umask; one that replaces another gets its owner,
  // access list and mode, and open() fails where they cannot be given.
  [[nodiscard]] int open(const std::string& target);
  // The same, but a symbolic link is not followed: it is replaced itself.
  [[nodiscard]] int openUnresolved(const std::string& target);
  // Keeps up to 256 KiB, so a failure may be that of an earlier call. After it the next calls fail
  // the same way.
  [[nodiscard]] int write(std::string_view bytes);
  // The last call. EBUSY when somebody took the name NAME.orx-new away.
  [[nodiscard]] int publish();
  // The target has the text, also when publish() could not make sure that it is on the disk.
  [[nodiscard]] bool isPublished() const { return published_; }

 private:
  [[nodiscard]] int create(const std::string& path);
  [[nodiscard]] int flush();

  std::string target_;
  std::string temporary_;  // empty when there is nothing to remove
  UniqueFd fd_;
  std::string buffer_;
  int error_ = 0;
  bool published_ = false;
};

}  // namespace orx
