#include "tests/faults/disk_watch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <set>

#include "tests/support/temp_dir.h"

namespace orx::faults {

namespace {

namespace fs = std::filesystem;

std::size_t upTo(std::size_t last, std::mt19937_64& random) {
  return std::uniform_int_distribution<std::size_t>(0, last)(random);
}

FileState stateOf(const UniqueFd& file) {
  struct stat status {};
  (void)::fstat(file.get(), &status);
  FileState state{std::string(static_cast<std::size_t>(status.st_size), '\0'),
                  status.st_mode & 07777U};
  (void)!::pread(file.get(), state.content.data(), state.content.size(), 0);
  return state;
}

// All of what is new, nothing of it, what lies before some place, or any blocks.
FileState mixed(const FileState& synced, const FileState& now, std::mt19937_64& random) {
  const std::size_t kind = upTo(3, random);
  if (kind < 2) return kind == 0 ? synced : now;
  const std::size_t blockSize = upTo(1, random) == 0 ? 512 : 4096;
  const std::size_t limit = upTo(now.content.size(), random);
  const std::size_t size = (upTo(1, random) == 0 ? synced : now).content.size();
  FileState state{.mode = (upTo(1, random) == 0 ? synced : now).mode};
  while (state.content.size() < size) {
    const std::size_t at = state.content.size();
    const bool isNew = kind == 2 ? at < limit : upTo(1, random) == 0;
    const std::string& source = (isNew ? now : synced).content;
    std::string block = at < source.size() ? source.substr(at, blockSize) : "";
    block.resize(std::min(blockSize, size - at), '\0');
    state.content += block;
  }
  return state;
}

}  // namespace

DiskWatch::DiskWatch(fs::path directory) : directory_(std::move(directory)) {
  names_.push_back(look());
  for (auto& [number, file] : files_) file.synced = stateOf(file.open);
}

DiskWatch::Names DiskWatch::look() {
  Names names;
  for (const auto& entry : fs::directory_iterator(directory_)) {
    if (entry.is_symlink() || !entry.is_regular_file()) continue;
    UniqueFd file = openFile(entry.path(), O_RDONLY);
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) continue;  // it is gone again
    names[entry.path().filename()] = status.st_ino;
    const auto [known, isNew] = files_.try_emplace(status.st_ino);
    if (isNew) known->second = {std::move(file), {.mode = status.st_mode & 07777U}};
  }
  return names;
}

void DiskWatch::follow(const TracedCall& call) {
  if (call.result < 0) return;
  if (Names now = look(); now != names_.back()) names_.push_back(std::move(now));
  struct stat status {};
  if (!has(call.call, trait::syncs)) return;
  if (::stat(call.file(call.descriptor()).c_str(), &status) != 0) return;
  const auto file = files_.find(status.st_ino);
  if (S_ISDIR(status.st_mode)) {
    names_.erase(names_.begin(), names_.end() - 1);
  } else if (file != files_.end()) {
    file->second.synced = stateOf(file->second.open);
  }
}

// The first of the changes, or any that do not build upon a lost one.
DiskWatch::Names DiskWatch::keptNames(std::mt19937_64& random) const {
  const bool inOrder = upTo(1, random) == 0;
  const std::size_t first = upTo(names_.size() - 1, random);
  Names kept = names_.front();
  std::set<std::string> lost;
  for (std::size_t i = 1; i < names_.size(); ++i) {
    std::vector<Names::value_type> changes;
    std::ranges::set_symmetric_difference(names_[i - 1], names_[i], std::back_inserter(changes));
    const auto isLost = [&lost](const auto& change) { return lost.contains(change.first); };
    const bool isKept =
        (inOrder ? i <= first : upTo(1, random) == 0) && std::ranges::none_of(changes, isLost);
    for (const auto& [name, number] : changes) {
      if (!isKept) {
        lost.insert(name);
      } else if (const auto now = names_[i].find(name); now != names_[i].end()) {
        kept[name] = now->second;
      } else {
        kept.erase(name);
      }
    }
  }
  return kept;
}

void DiskWatch::losePower(std::mt19937_64& random) {
  const Names names = keptNames(random);
  std::map<ino_t, FileState> states;
  for (const auto& [number, file] : files_) {
    states[number] = mixed(file.synced, stateOf(file.open), random);
  }
  for (const auto& [name, number] : look()) fs::remove(directory_ / name);
  std::map<ino_t, fs::path> written;
  for (const auto& [name, number] : names) {
    const fs::path path = directory_ / name;
    const auto [other, isFirst] = written.try_emplace(number, path);
    if (!isFirst) {
      fs::create_hard_link(other->second, path);
      continue;
    }
    test::writeFile(path, states[number].content);
    fs::permissions(path, fs::perms(states[number].mode));
  }
}

}  // namespace orx::faults
