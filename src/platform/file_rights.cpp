#include "platform/file_rights.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <string_view>

#include "platform/bytes.h"
#include "platform/file.h"

namespace orx {

namespace {

constexpr const char* listName = "system.posix_acl_access";
constexpr mode_t ownUse = S_IRUSR | S_IWUSR;
constexpr mode_t modeBits = 07777;

// The list as the system stores it: a version, then entries of tag, permissions and identifier.
constexpr std::size_t listHead = 4;
constexpr std::size_t entrySize = 8;
constexpr std::uint16_t tagOfMask = 0x10;  // bounds what all but owner and others may do
constexpr std::uint16_t tagOfOthers = 0x20;

// The value that `get(buffer, size)` gives; empty where there is none.
template <typename Get>
int readValue(Get get, std::string& value) {
  value.assign(std::size_t{64} * 1024, '\0');  // the most that the system takes
  const ssize_t size = get(value.data(), value.size());
  const int error = size < 0 ? errno : 0;
  value.resize(error == 0 ? static_cast<std::size_t>(size) : 0);
  return error == ENODATA || error == EOPNOTSUPP || error == ENOSYS ? 0 : error;
}

int giveList(int fd, const std::string& now, const std::string& wanted) {
  if (now == wanted) return 0;
  const int result = wanted.empty() ? ::fremovexattr(fd, listName)
                                    : ::fsetxattr(fd, listName, wanted.data(), wanted.size(), 0);
  return result == 0 ? 0 : errno;
}

int giveOwner(int fd, const struct stat& now, const struct stat& wanted) {
  if (now.st_uid == wanted.st_uid && now.st_gid == wanted.st_gid) return 0;
  return ::fchown(fd, wanted.st_uid, wanted.st_gid) == 0 ? 0 : errno;
}

// Between the steps nobody but the owner may use the file: a new group has no old rights.
int give(int fd, const FileRights& rights, const std::string& list, mode_t mode) {
  FileRights now;
  int error = readRights(fd, now);
  if (error != 0) return error;
  const bool sameOwner =
      now.file.st_uid == rights.file.st_uid && now.file.st_gid == rights.file.st_gid;
  if (!sameOwner || now.list != list) {
    error = setMode(fd, ownUse | (mode & unpublishedMark));
    if (error == 0) error = giveOwner(fd, now.file, rights.file);
    if (error == 0) error = giveList(fd, now.list, list);
  } else if ((now.file.st_mode & modeBits) == mode) {
    return 0;
  }
  return error == 0 ? setMode(fd, mode) : error;
}

std::string withheld(std::string list) {
  for (std::size_t at = listHead; at + entrySize <= list.size(); at += entrySize) {
    const auto tag = static_cast<std::uint16_t>(static_cast<std::uint8_t>(list[at]) |
                                                static_cast<std::uint8_t>(list[at + 1]) << 8);
    if (tag == tagOfMask || tag == tagOfOthers) list[at + 2] = list[at + 3] = '\0';
  }
  return list;
}

// What says something about the content of one file would be wrong for another.
bool isLabel(std::string_view name) {
  constexpr std::array<std::string_view, 3> ofContent{"security.ima", "security.evm",
                                                      "security.capability"};
  return name.starts_with("user.") ||
         (name.starts_with("security.") && std::ranges::find(ofContent, name) == ofContent.end());
}

}  // namespace

int readRights(int fd, FileRights& rights) {
  if (::fstat(fd, &rights.file) != 0) return errno;
  return readValue(
      [fd](char* buffer, std::size_t size) { return ::fgetxattr(fd, listName, buffer, size); },
      rights.list);
}

int readRights(const std::string& path, FileRights& rights) {
  if (::stat(path.c_str(), &rights.file) != 0) return errno;
  return readValue(
      [&path](char* buffer, std::size_t size) {
        return ::getxattr(path.c_str(), listName, buffer, size);
      },
      rights.list);
}

int giveRights(int fd, const FileRights& rights, mode_t more) {
  return give(fd, rights, rights.list, (rights.file.st_mode & modeBits) | more);
}

int withholdRights(int fd, const FileRights& rights, mode_t more) {
  return give(fd, rights, withheld(rights.list), ownUse | more);
}

void copyLabels(int from, int to) {
  std::string names;
  const auto list = [from](char* buffer, std::size_t size) {
    return ::flistxattr(from, buffer, size);
  };
  if (readValue(list, names) != 0) return;
  std::string value;
  for (std::size_t at = 0; at < names.size(); at = names.find('\0', at) + 1) {
    const char* const name = names.data() + at;
    const auto get = [from, name](char* buffer, std::size_t size) {
      return ::fgetxattr(from, name, buffer, size);
    };
    if (isLabel(name) && readValue(get, value) == 0) {
      (void)::fsetxattr(to, name, value.data(), value.size(), 0);
    }
  }
}

}  // namespace orx
