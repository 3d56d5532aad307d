#include "platform/file.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>

namespace orx {

namespace {

template <typename Call>
auto retried(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

template <typename Call>
int errnoOf(Call call) {
  return retried(call) < 0 ? errno : 0;
}

struct CloseDirectory {
  void operator()(DIR* directory) const { (void)::closedir(directory); }
};

struct FreeText {
  void operator()(char* text) const { std::free(text); }
};

}  // namespace

void UniqueFd::reset() {
  if (fd_ >= 0) (void)::close(fd_);
  fd_ = -1;
}

UniqueFd openFile(const std::string& path, int flags, mode_t mode) {
  return UniqueFd(retried([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); }));
}

ssize_t readAt(int fd, std::uint8_t* buffer, std::size_t size, off_t offset) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = retried(
        [&] { return ::pread(fd, buffer + done, size - done, offset + static_cast<off_t>(done)); });
    if (count < 0) return -1;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(done);
}

ssize_t readSome(int fd, char* buffer, std::size_t size) {
  return retried([&] { return ::read(fd, buffer, size); });
}

int writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t count = retried([&] { return ::write(fd, bytes.data(), bytes.size()); });
    if (count < 0) return errno;
    bytes.remove_prefix(static_cast<std::size_t>(count));
  }
  return 0;
}

void writeIfTaken(int fd, std::string_view bytes) {
  pollfd receiver{fd, POLLOUT, 0};
  if (::poll(&receiver, 1, 0) > 0 && (receiver.revents & POLLOUT) != 0) (void)writeAll(fd, bytes);
}

int syncFile(int fd) {
  return errnoOf([&] { return ::fsync(fd); });
}

int syncDirectory(const std::string& directory) {
  const UniqueFd fd = openFile(directory, O_RDONLY | O_DIRECTORY);
  if (!fd.valid()) return errno;
  const int error = syncFile(fd.get());
  return error == EINVAL ? 0 : error;  // a file system that keeps directories in sync by itself
}

int removeFile(const std::string& path) {
  return errnoOf([&] { return ::unlink(path.c_str()); });
}

int exchangeNames(const std::string& first, const std::string& second) {
  return errnoOf([&] {
    return ::renameat2(AT_FDCWD, first.c_str(), AT_FDCWD, second.c_str(), RENAME_EXCHANGE);
  });
}

int renameFile(const std::string& from, const std::string& to, bool keepExisting) {
  if (!keepExisting) return errnoOf([&] { return ::rename(from.c_str(), to.c_str()); });
  const int error = errnoOf(
      [&] { return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE); });
  if (error != EINVAL && error != ENOSYS) return error;
  const int linked = linkFile(from, to);
  return linked != 0 ? linked : removeFile(from);
}

int linkFile(const std::string& existing, const std::string& name) {
  return errnoOf([&] { return ::link(existing.c_str(), name.c_str()); });
}

int setMode(int fd, mode_t mode) {
  return errnoOf([&] { return ::fchmod(fd, mode); });
}

int setSize(int fd, off_t size) {
  return errnoOf([&] { return ::ftruncate(fd, size); });
}

int isMarked(int fd, bool& marked) {
  struct stat file {};
  if (::fstat(fd, &file) != 0) return errno;
  marked = (file.st_mode & unpublishedMark) != 0;
  return 0;
}

int clearMark(int fd) {
  struct stat file {};
  if (::fstat(fd, &file) != 0) return errno;
  if ((file.st_mode & unpublishedMark) == 0) return 0;
  return setMode(fd, file.st_mode & 07777 & ~unpublishedMark);
}

int lockFile(int fd) {
  return errnoOf([&] { return ::flock(fd, LOCK_EX | LOCK_NB); });
}

void releaseSpace(int fd, off_t offset, off_t size) {
  (void)::fallocate(fd, FALLOC_FL_PUNCH_HOLE | FALLOC_FL_KEEP_SIZE, offset, size);
}

bool sameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

bool isSameFile(int a, int b) {
  struct stat fileA {};
  struct stat fileB {};
  return ::fstat(a, &fileA) == 0 && ::fstat(b, &fileB) == 0 && sameFile(fileA, fileB);
}

bool isSameFile(const std::string& a, const std::string& b) {
  struct stat fileA {};
  struct stat fileB {};
  return ::stat(a.c_str(), &fileA) == 0 && ::stat(b.c_str(), &fileB) == 0 && sameFile(fileA, fileB);
}

bool leadsTo(const std::string& path, int fd) {
  return checkLeadsTo(path, fd, ENOENT) == 0;
}

int checkLeadsTo(const std::string& path, int fd, int elsewhere) {
  struct stat named {};
  struct stat opened {};
  if (::lstat(path.c_str(), &named) != 0) return errno == ENOENT ? elsewhere : errno;
  if (::fstat(fd, &opened) != 0) return errno;
  return sameFile(named, opened) ? 0 : elsewhere;
}

std::optional<std::string> resolvePath(const std::string& path) {
  const std::unique_ptr<char, FreeText> resolved(::realpath(path.c_str(), nullptr));
  if (resolved == nullptr && errno == ENOMEM) throw std::bad_alloc();
  if (resolved == nullptr) return std::nullopt;
  return std::string(resolved.get());
}

// std::filesystem ends the process when its iterator is out of memory.
std::vector<std::string> namesIn(const std::string& directory) {
  std::vector<std::string> names;
  const std::unique_ptr<DIR, CloseDirectory> open(::opendir(directory.c_str()));
  if (open == nullptr) return names;
  while (const dirent* const entry = ::readdir(open.get())) names.emplace_back(entry->d_name);
  return names;
}

std::string directoryOf(const std::string& path) {
  const auto slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

}  // namespace orx
