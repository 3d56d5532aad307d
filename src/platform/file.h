// Files as owned descriptors. Every call of this system's own code that opens, reads, writes,
// renames or removes a file goes through here; looks at one (stat) stand where they are needed.
// Calls interrupted by a signal are repeated. Failures come back as errno values (0 is success).
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

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(fd_, other.fd_);
    return *this;
  }
  ~UniqueFd() { reset(); }

  [[nodiscard]] int get() const { return fd_; }
  [[nodiscard]] bool valid() const { return fd_ >= 0; }
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
[[nodiscard]] int writeAll(int fd, std::string_view bytes);
// Writes `bytes` unless the receiver (a stopped terminal, a full pipe) would keep the caller
// waiting.
void writeIfTaken(int fd, std::string_view bytes);
[[nodiscard]] int syncFile(int fd);
[[nodiscard]] int syncDirectory(const std::string& directory);
[[nodiscard]] int removeFile(const std::string& path);
// Swaps two names in one step. EINVAL or ENOSYS where the file system cannot.
[[nodiscard]] int exchangeNames(const std::string& first, const std::string& second);
// Renames, replacing `to`; or, with `keepExisting`, EEXIST when there is a `to`.
[[nodiscard]] int renameFile(const std::string& from, const std::string& to, bool keepExisting);
// Another name for the same file.
[[nodiscard]] int linkFile(const std::string& existing, const std::string& name);
[[nodiscard]] int setMode(int fd, mode_t mode);
[[nodiscard]] int setSize(int fd, off_t size);
// The mode bit of a file that is written under another name than its own, until it is published:
// nothing else is removed under such a name.
inline constexpr mode_t unpublishedMark = S_ISVTX;
[[nodiscard]] int isMarked(int fd, bool& marked);
// Takes the mark away, if the file has it.
int clearMark(int fd);
// Takes an exclusive flock without waiting; EWOULDBLOCK when somebody holds one.
[[nodiscard]] int lockFile(int fd);

// Gives the disk space of a range of a file back, where the file system can; it reads as zeros
// then.
void releaseSpace(int fd, off_t offset, off_t size);

[[nodiscard]] bool sameFile(const struct stat& a, const struct stat& b);
[[nodiscard]] bool isSameFile(int a, int b);  // of open files
// Whether the name `path` itself, not what it links to, is the open file `fd`.
[[nodiscard]] bool leadsTo(const std::string& path, int fd);
// The same as an errno value: `elsewhere` when it is not, another when nobody could tell.
[[nodiscard]] int checkLeadsTo(const std::string& path, int fd, int elsewhere);

// The path with every symbolic link resolved; none when it does not exist (errno says why).
[[nodiscard]] std::optional<std::string> resolvePath(const std::string& path);
// What is in a directory, in no order; as far as it can be read.
[[nodiscard]] std::vector<std::string> namesIn(const std::string& directory);
// The part before the last "/", "." for a path without one.
[[nodiscard]] std::string directoryOf(const std::string& path);

}  // namespace orx
