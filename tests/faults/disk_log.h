// What a run does to the disk, and what a power failure can make of it.
//
// The model is that of a file system which promises no more than it must: what was written since
// the last sync of a file is there in any part, in blocks of 512 or 4096 bytes, and so are its size
// and its mode; of the changes of names since the last sync of the directory any can be there or
// not, but none without those before it that concern the same names.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "tests/faults/traced_program.h"

namespace orx::faults {

struct DiskEvent {
  enum class Kind { write, resize, mode, name, exchange, remove, syncFile, syncNames, output };
  Kind kind = Kind::output;
  int file = -1;           // a number of its own for each file
  std::uint64_t at = 0;    // offset or size
  std::string bytes = {};  // of a write
  mode_t permissions = 0;  // also of a file that gets its first name
  // name: `to` leads to the file, and `from`, if any, no longer does; exchange: the two leads are
  // swapped; remove: `from` goes.
  std::string from = {};
  std::string to = {};
};

struct DiskFile {
  std::string content = {};
  mode_t permissions = 0;
};

struct Disk {
  std::map<int, DiskFile> files = {};
  std::map<std::string, int> names = {};
};

// The regular files of a directory.
[[nodiscard]] Disk diskOf(const std::filesystem::path& directory);
void writeDisk(const Disk& disk, const std::filesystem::path& directory);

// Listens to a traced run in `directory`.
class DiskRecorder {
 public:
  // `start` is what is in the directory when the run begins.
  DiskRecorder(std::filesystem::path directory, const Disk& start);
  void record(const FinishedCall& call);
  [[nodiscard]] const std::vector<DiskEvent>& events() const { return events_; }

 private:
  void recordOpen(const FinishedCall& call, const std::string& path, std::uint64_t flags,
                  mode_t permissions);
  void recordWrite(const FinishedCall& call, std::uint64_t offset, const std::string& bytes);
  void recordRename(const std::string& from, const std::string& to, bool exchanges);
  void recordSync(const FinishedCall& call);
  [[nodiscard]] std::string gathered(const FinishedCall& call) const;
  // The file behind the descriptor that is the first argument; -1 for one without a name here.
  [[nodiscard]] int fileOf(const FinishedCall& call) const;
  // The name in the directory, empty for a path that leads elsewhere.
  [[nodiscard]] std::string nameOf(const std::string& path) const;

  std::filesystem::path directory_;
  std::map<ino_t, int> numbers_;
  int nextNumber_ = 0;
  std::vector<DiskEvent> events_;
};

// The disk after a power failure behind the first `count` events.
[[nodiscard]] Disk diskAfterFailure(const Disk& start, const std::vector<DiskEvent>& events,
                                    std::size_t count, std::mt19937_64& random);

}  // namespace orx::faults
