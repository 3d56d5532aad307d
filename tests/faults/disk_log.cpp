#include "tests/faults/disk_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>

#include "tests/support/temp_dir.h"

namespace orx::faults {

namespace {

namespace fs = std::filesystem;
using Kind = DiskEvent::Kind;

constexpr mode_t modeBits = 07777;
constexpr std::uint64_t renameExchange = 2;  // RENAME_EXCHANGE

struct stat statusOf(const fs::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0)
    throw std::runtime_error("cannot look at " + path.string());
  return status;
}

bool isNameEvent(Kind kind) {
  return kind == Kind::name || kind == Kind::exchange || kind == Kind::remove;
}

void applyName(std::map<std::string, int>& names, const DiskEvent& event) {
  if (event.kind == Kind::exchange) {
    std::swap(names.at(event.from), names.at(event.to));
    return;
  }
  if (event.kind == Kind::name) names[event.to] = event.file;
  if (!event.from.empty()) names.erase(event.from);
}

void writeBlock(std::string& content, std::uint64_t at, std::string_view bytes) {
  if (content.size() < at + bytes.size()) content.resize(at + bytes.size(), '\0');
  content.replace(at, bytes.size(), bytes);
}

void applyToFile(DiskFile& file, const DiskEvent& event) {
  if (event.kind == Kind::write) writeBlock(file.content, event.at, event.bytes);
  if (event.kind == Kind::resize) file.content.resize(event.at, '\0');
  if (event.kind == Kind::mode) file.permissions = event.permissions;
}

class Failure {
 public:
  Failure(const Disk& start, std::mt19937_64& random) : disk_(start), random_(random) {}

  void take(const DiskEvent& event) {
    if (event.kind == Kind::name) disk_.files.try_emplace(event.file, "", event.permissions);
    if (isNameEvent(event.kind)) {
      names_.push_back(&event);
    } else if (event.kind == Kind::syncNames) {
      for (const DiskEvent* change : names_) applyName(disk_.names, *change);
      names_.clear();
    } else if (event.kind == Kind::syncFile) {
      for (const DiskEvent* change : changes_[event.file])
        applyToFile(disk_.files[event.file], *change);
      changes_[event.file].clear();
    } else if (event.file >= 0) {
      changes_[event.file].push_back(&event);
    }
  }

  Disk happen() {
    loseNames();
    for (const auto& [number, changes] : changes_) loseChanges(disk_.files[number], changes);
    return std::move(disk_);
  }

 private:
  std::uint64_t upTo(std::uint64_t last) {
    return std::uniform_int_distribution<std::uint64_t>(0, last)(random_);
  }

  // All or none of the changes, the first of them, or any that do not build upon a lost one.
  void loseNames() {
    const std::uint64_t kind = upTo(3);
    const std::size_t first = kind == 0 ? 0 : kind == 1 ? names_.size() : upTo(names_.size());
    std::set<std::string> lost;
    for (std::size_t i = 0; i < names_.size(); ++i) {
      const DiskEvent& change = *names_[i];
      const bool wanted = kind == 3 ? upTo(1) == 0 : i < first;
      if (wanted && !lost.contains(change.from) && !lost.contains(change.to)) {
        applyName(disk_.names, change);
        continue;
      }
      if (!change.from.empty()) lost.insert(change.from);
      if (!change.to.empty()) lost.insert(change.to);
    }
  }

  void loseChanges(DiskFile& file, const std::vector<const DiskEvent*>& changes) {
    const std::uint64_t kind = upTo(3);
    if (kind == 0) return;
    std::vector<const DiskEvent*> kept(changes);
    if (kind == 1) kept.resize(upTo(kept.size()));
    if (kind < 3) {
      for (const DiskEvent* change : kept) applyToFile(file, *change);
    } else {
      tear(file, changes);
    }
  }

  // Blocks of the writes in any order, and a size and a mode of their own.
  void tear(DiskFile& file, const std::vector<const DiskEvent*>& changes) {
    const std::uint64_t blockSize = upTo(1) == 0 ? 512 : 4096;
    std::vector<std::pair<std::uint64_t, std::string_view>> blocks;
    std::vector<std::uint64_t> sizes{file.content.size()};
    for (const DiskEvent* change : changes) {
      const std::string_view bytes(change->bytes);
      for (std::uint64_t at = 0; at < bytes.size();) {
        const std::uint64_t size = blockSize - (change->at + at) % blockSize;
        blocks.emplace_back(change->at + at, bytes.substr(at, size));
        at += blocks.back().second.size();
      }
      if (change->kind != Kind::mode) {
        const bool grows = change->kind == Kind::write;
        sizes.push_back(grows ? std::max(sizes.back(), change->at + bytes.size()) : change->at);
      } else if (upTo(1) == 0) {
        file.permissions = change->permissions;
      }
    }
    std::ranges::shuffle(blocks, random_);
    blocks.resize(upTo(blocks.size()));
    for (const auto& [at, bytes] : blocks) writeBlock(file.content, at, bytes);
    if (upTo(1) == 0) file.content.resize(sizes[upTo(sizes.size() - 1)], '\0');
  }

  Disk disk_;
  std::mt19937_64& random_;
  std::vector<const DiskEvent*> names_;  // since the last sync, as are those of the files
  std::map<int, std::vector<const DiskEvent*>> changes_;
};

}  // namespace

Disk diskOf(const fs::path& directory) {
  Disk disk;
  std::map<ino_t, int> numbers;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.is_symlink() || !entry.is_regular_file()) continue;
    const struct stat status = statusOf(entry.path());
    const auto [found, isNew] =
        numbers.try_emplace(status.st_ino, static_cast<int>(numbers.size()));
    disk.names[entry.path().filename()] = found->second;
    if (isNew)
      disk.files[found->second] = {test::readFile(entry.path()), status.st_mode & modeBits};
  }
  return disk;
}

void writeDisk(const Disk& disk, const fs::path& directory) {
  std::map<int, fs::path> written;
  for (const auto& [name, number] : disk.names) {
    const fs::path path = directory / name;
    if (const auto other = written.find(number); other != written.end()) {
      fs::create_hard_link(other->second, path);
      continue;
    }
    written[number] = path;
    const DiskFile& file = disk.files.at(number);
    test::writeFile(path, file.content);
    if (::chmod(path.c_str(), file.permissions) != 0) throw std::runtime_error("chmod " + name);
  }
}

DiskRecorder::DiskRecorder(fs::path directory, const Disk& start)
    : directory_(std::move(directory)), nextNumber_(static_cast<int>(start.files.size())) {
  for (const auto& [name, number] : start.names) {
    numbers_[statusOf(directory_ / name).st_ino] = number;
  }
}

std::string DiskRecorder::nameOf(const std::string& path) const {
  const fs::path full = directory_ / path;
  return full.parent_path() == directory_ ? full.filename().string() : "";
}

int DiskRecorder::fileOf(const FinishedCall& call) const {
  const auto descriptor = static_cast<int>(call.call().arguments[0]);
  const auto found = numbers_.find(statusOf(call.descriptorPath(descriptor)).st_ino);
  return found == numbers_.end() ? -1 : found->second;
}

void DiskRecorder::record(const FinishedCall& call) {
  if (call.result() < 0) return;
  const auto& arguments = call.call().arguments;
  const auto text = [&](std::size_t i) { return call.text(arguments[i]); };
  switch (call.call().number) {
    case SYS_open:
      return recordOpen(call, text(0), arguments[1], static_cast<mode_t>(arguments[2]));
    case SYS_openat:
      return recordOpen(call, text(1), arguments[2], static_cast<mode_t>(arguments[3]));
    case SYS_write: {
      const auto size = static_cast<std::uint64_t>(call.result());
      return recordWrite(call, call.position(static_cast<int>(arguments[0])) - size,
                         call.bytes(arguments[1], size));
    }
    case SYS_pwrite64:
      return recordWrite(call, arguments[3],
                         call.bytes(arguments[1], static_cast<std::uint64_t>(call.result())));
    case SYS_writev:
      return recordWrite(
          call,
          call.position(static_cast<int>(arguments[0])) - static_cast<std::uint64_t>(call.result()),
          gathered(call));
    case SYS_pwritev:
      return recordWrite(call, arguments[3], gathered(call));
    case SYS_ftruncate:
      events_.push_back({.kind = Kind::resize, .file = fileOf(call), .at = arguments[1]});
      return;
    case SYS_fchmod:
      events_.push_back({.kind = Kind::mode,
                         .file = fileOf(call),
                         .permissions = static_cast<mode_t>(arguments[1])});
      return;
    case SYS_fsync:
    case SYS_fdatasync:
      return recordSync(call);
    case SYS_rename:
      return recordRename(text(0), text(1), false);
    case SYS_renameat2:
      return recordRename(text(1), text(3), (arguments[4] & renameExchange) != 0);
    case SYS_link:
      events_.push_back({.kind = Kind::name,
                         .file = numbers_.at(statusOf(directory_ / text(0)).st_ino),
                         .to = nameOf(text(1))});
      return;
    case SYS_unlink:
      events_.push_back({.kind = Kind::remove, .from = nameOf(text(0))});
      return;
    default:
      throw std::runtime_error("the disk log does not know " + faults::nameOf(call.call()));
  }
}

void DiskRecorder::recordOpen(const FinishedCall& call, const std::string& path,
                              std::uint64_t flags, mode_t permissions) {
  const std::string name = nameOf(path);
  if (name.empty() || (flags & O_CREAT) == 0 || (flags & O_EXCL) == 0) return;
  const auto descriptor = static_cast<int>(call.result());
  const int number = nextNumber_++;
  numbers_[statusOf(call.descriptorPath(descriptor)).st_ino] = number;
  events_.push_back(
      {.kind = Kind::name, .file = number, .permissions = permissions & modeBits, .to = name});
}

void DiskRecorder::recordWrite(const FinishedCall& call, std::uint64_t offset,
                               const std::string& bytes) {
  if (call.call().arguments[0] == 1) {
    events_.push_back({.kind = Kind::output, .bytes = bytes});
  } else if (const int file = fileOf(call); file >= 0) {
    events_.push_back({.kind = Kind::write, .file = file, .at = offset, .bytes = bytes});
  }
}

std::string DiskRecorder::gathered(const FinishedCall& call) const {
  std::string bytes;
  for (std::uint64_t i = 0; i < call.call().arguments[2]; ++i) {
    const std::string piece = call.bytes(call.call().arguments[1] + 16 * i, 16);
    std::uint64_t address = 0;
    std::uint64_t size = 0;
    std::memcpy(&address, piece.data(), 8);
    std::memcpy(&size, piece.data() + 8, 8);
    bytes += call.bytes(address, size);
  }
  bytes.resize(static_cast<std::size_t>(call.result()));
  return bytes;
}

void DiskRecorder::recordRename(const std::string& from, const std::string& to, bool exchanges) {
  const int file = numbers_.at(statusOf(directory_ / to).st_ino);
  events_.push_back({.kind = exchanges ? Kind::exchange : Kind::name,
                     .file = file,
                     .from = nameOf(from),
                     .to = nameOf(to)});
}

void DiskRecorder::recordSync(const FinishedCall& call) {
  const auto descriptor = static_cast<int>(call.call().arguments[0]);
  if (S_ISDIR(statusOf(call.descriptorPath(descriptor)).st_mode)) {
    events_.push_back({.kind = Kind::syncNames});
  } else if (const int file = fileOf(call); file >= 0) {
    events_.push_back({.kind = Kind::syncFile, .file = file});
  }
}

Disk diskAfterFailure(const Disk& start, const std::vector<DiskEvent>& events, std::size_t count,
                      std::mt19937_64& random) {
  Failure failure(start, random);
  for (std::size_t i = 0; i < count; ++i) failure.take(events[i]);
  return failure.happen();
}

}  // namespace orx::faults
