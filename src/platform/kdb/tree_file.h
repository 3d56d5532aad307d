// A database file opened for reading, without the engine.
//
// The engine maps its files into memory and trusts them: a damaged page ends the process in an
// assertion or a signal, and so does a file that shrinks while it is mapped. Reading therefore
// goes through pread, page by page, and every page is checked before anything in it is believed.
// The engine itself only ever sees successors that this process has written.
//
// What an object knows was read when it was opened and does not change; for any number of threads.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "platform/file.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

class TreeFile {
 public:
  // Takes over `fd`, also on failure; `tree` is set only on success. 8/17 when it is no database
  // file, is damaged in its head or shorter than it says; 8/20 when it cannot be read. A lock on
  // the file lives as long as the object.
  static Outcome open(UniqueFd fd, std::shared_ptr<const TreeFile>& tree);

  // Whether the file begins like a database file, whatever its state.
  [[nodiscard]] static bool beginsLikeTree(int fd);

  [[nodiscard]] int fd() const { return fd_.get(); }
  [[nodiscard]] std::size_t pageSize() const { return pageSize_; }
  [[nodiscard]] std::uint64_t lastPage() const { return lastPage_; }  // highest number of a page
  [[nodiscard]] std::uint64_t root() const { return root_; }          // not checked yet
  [[nodiscard]] std::size_t depth() const { return depth_; }          // 0 for an empty database
  [[nodiscard]] std::uint64_t entries() const { return entries_; }

  // Fills `pages` from the start of page number `first` on; nothing in them is checked. 8/17 when
  // the file ends before that.
  [[nodiscard]] Outcome read(std::uint64_t first, std::span<std::uint8_t> pages) const;

 private:
  Outcome loadMeta();
  Outcome takeMeta(const std::uint8_t* meta);

  UniqueFd fd_;
  std::size_t pageSize_ = 0;
  std::uint64_t lastPage_ = 0;
  std::uint64_t root_ = 0;
  std::size_t depth_ = 0;
  std::uint64_t entries_ = 0;
};

}  // namespace orx::kdb
