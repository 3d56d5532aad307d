// A text file that appears whole or not at all.
//
// The text goes into NAME.orx-new beside the resolved target (so a symbolic link stays one);
// publish() syncs it, renames it over the target in one step and syncs the directory. Until then
// the target is untouched. An unpublished file is removed when the object goes; a process that
// dies leaves NAME.orx-new behind, with the mark of an unpublished file; the next one replaces it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/file.h"

namespace orx {

class AtomicFile {
 public:
  // Nothing is created before open().
  AtomicFile() = default;
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  ~AtomicFile();

  // Each returns 0 or an errno value; open() EEXIST when the target is no regular file or
  // NAME.orx-new is somebody else's, EBUSY when another process writes it. After a failed write()
  // the next calls fail the same way. A new file is 0640 less the umask; a replaced one keeps its
  // mode.
  [[nodiscard]] int open(const std::string& target);
  // The same for a name of which nobody said that it may lead elsewhere: a link is replaced itself.
  [[nodiscard]] int openUnresolved(const std::string& target);
  [[nodiscard]] int write(std::string_view bytes);
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
