// Files as owned descriptors, and the calls on files; one that a signal interrupts is repeated. An
// `int` that comes back is 0 or an errno value, if nothing else is said. Paths are relative to the
// current directory.
//
// Every call of this system's own code that opens, reads, writes, renames or removes a file goes
// through here; looks at one (stat) stand where they are needed.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orx {

// Closes its descriptor when it goes, and tells nobody of a failure: who has written to the file
// syncs it before.
class UniqueFd {
 public:
  UniqueFd() = default;
  // Takes `fd` over; negative for none.
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~UniqueFd() { reset(); }

  // -1 without one.
  [[nodiscard]] int get() const { return fd_; }
  [[nodiscard]] bool valid() const { return fd_ >= 0; }
  // Closes it now.
  void reset();
  // The descriptor, which the caller closes from now on.
  [[nodiscard]] int release() { return std::exchange(fd_, -1); }

 private:
  int fd_ = -1;
};

// Opens with O_CLOEXEC added. On failure the descriptor is invalid and errno says why.
[[nodiscard]] UniqueFd openFile(const std::string& path, int flags, mode_t mode = 0);

// Reads until `size` bytes are there or the data ends; the number of bytes read, or -1 (errno).
[[nodiscard]] ssize_t readAt(int fd, std::uint8_t* buffer, std::size_t size, off_t offset);
// One read of at most `size` bytes; 0 at the end of the data, -1 on failure (errno).
[[nodiscard]] ssize_t readSome(int fd, char* buffer, std::size_t size);
// All of `bytes`, or a failure after some of them.
[[nodiscard]] int writeAll(int fd, std::string_view bytes);
// Writes `bytes` unless the receiver (a stopped terminal, a full pipe) would keep the caller
// waiting. Nobody learns whether it did. Takes no memory and no lock.
void writeIfTaken(int fd, std::string_view bytes);
[[nodiscard]] int syncFile(int fd);
[[nodiscard]] int syncDirectory(const std::string& directory);
[[nodiscard]] int removeFile(const std::string& path);
// Swaps two names, both of which are there, in one step. EINVAL or ENOSYS where the file system
// cannot.
[[nodiscard]] int exchangeNames(const std::string& first, const std::string& second);
// Renames, replacing `to` in one step; or, with `keepExisting`, EEXIST when there is a `to`. Where
// the file system cannot do that in one step, both names lead to the file for a moment.
[[nodiscard]] int renameFile(const std::string& from, const std::string& to, bool keepExisting);
// Another name for the same file; EEXIST when `name` is taken.
[[nodiscard]] int linkFile(const std::string& existing, const std::string& name);
[[nodiscard]] int setMode(int fd, mode_t mode);
[[nodiscard]] int setSize(int fd, off_t size);
// The mode bit of a file that is written under another name than its own, until it is published:
// nothing else is removed under such a name.
inline constexpr mode_t unpublishedMark = S_ISVTX;
// `marked` is set when 0 comes back.
[[nodiscard]] int isMarked(int fd, bool& marked);
// Takes the mark away, if the file has it.
int clearMark(int fd);
// Takes an exclusive flock without waiting; EWOULDBLOCK when somebody holds one. It goes with the
// descriptor, or the process.
[[nodiscard]] int lockFile(int fd);

// Gives the disk space of a range of a file back, where the file system can; it reads as zeros
// then. The size of the file stays.
void releaseSpace(int fd, off_t offset, off_t size);

// Whether both are one file, whatever its names are; false also when nobody can tell.
[[nodiscard]] bool sameFile(const struct stat& a, const struct stat& b);
[[nodiscard]] bool isSameFile(int a, int b);                                // of open files
[[nodiscard]] bool isSameFile(const std::string& a, const std::string& b);  // by whatever names
// Whether the name `path` itself, not what it links to, is the open file `fd`. False also when
// nobody can tell.
[[nodiscard]] bool leadsTo(const std::string& path, int fd);
// The same as an errno value: 0 when it is, `elsewhere` when it is not or there is no such name,
// another when nobody could tell.
[[nodiscard]] int checkLeadsTo(const std::string& path, int fd, int elsewhere);

// The absolute path with every symbolic link resolved; none when it does not exist or cannot be
// reached (errno says why).
[[nodiscard]] std::optional<std::string> resolvePath(const std::string& path);
// The names in a directory, "." and ".." too, in no order; as far as it can be read.
[[nodiscard]] std::vector<std::string> namesIn(const std::string& directory);
// What stands before the last "/": "." for a path without one, "/" for a name below the root.
[[nodiscard]] std::string directoryOf(const std::string& path);

}  // namespace orx
