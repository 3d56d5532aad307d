// A database file opened for reading, without the engine.
//
// The engine maps its files into memory and trusts them: a damaged page ends the process in an
// assertion or a signal, and so does a file that shrinks while it is mapped. Reading therefore
// goes through pread, page by page, and every page is checked before anything in it is believed.
// The engine itself only ever sees successors that this process has written.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "platform/file.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

class TreeFile {
 public:
  // Takes over `fd`. 8/17 when it is no database file, is damaged in its head or shorter than it
  // says; 8/20 when it cannot be read.
  static Outcome open(UniqueFd fd, std::shared_ptr<const TreeFile>& tree);

  // Whether the file begins like a database file, whatever its state.
  [[nodiscard]] static bool beginsLikeTree(int fd);

  [[nodiscard]] int fd() const { return fd_.get(); }
  [[nodiscard]] std::size_t pageSize() const { return pageSize_; }
  [[nodiscard]] std::uint64_t lastPage() const { return lastPage_; }
  [[nodiscard]] std::uint64_t root() const { return root_; }
  [[nodiscard]] std::size_t depth() const { return depth_; }  // 0 for an empty database
  [[nodiscard]] std::uint64_t entries() const { return entries_; }

  // Reads `pages.size()` / pageSize() pages from number `first` on.
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
