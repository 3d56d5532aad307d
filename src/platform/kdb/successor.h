// The successor of a database: the file that a run writes and, when it is published, gives the
// database's name to.
//
// It is a file of the engine; many records that come out of order wait in sorted runs until they
// are needed. An unpublished successor is removed when the object goes or a signal ends the run;
// one whose process died otherwise is discarded by the next.
//
// Order of calls: create(); changes and look-ups; finish(); then whoever publishes the file (it is
// not synced yet) calls keep(). After a storage failure nothing of that may follow.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <string>

#include "platform/background_release.h"
#include "platform/file.h"
#include "platform/kdb/engine_file.h"
#include "platform/kdb/key.h"
#include "platform/kdb/publish.h"
#include "platform/kdb/sorted_runs.h"
#include "platform/kdb_codes.h"

namespace orx::kdb {

class Successor {
 public:
  // Creates NAME.orx-new with mode 0600 and the mark, empty, and locks it. 3/19 when another
  // process writes it; else as settleLeftover. `successor` is set only on success.
  static Outcome create(const DatabasePaths& paths, std::unique_ptr<Successor>& successor);

  Successor(const Successor&) = delete;
  Successor& operator=(const Successor&) = delete;
  ~Successor();

  // `record` is 296 bytes. Ascending keys are appended, which is several times as fast. Where
  // records wait in runs, any other of these calls first merges them into the file, once.
  [[nodiscard]] Outcome add(const Key& key, const std::uint8_t* record);  // 4/46 when it exists
  [[nodiscard]] Outcome update(const Key& key,
                               const std::uint8_t* record);  // 5/28 when it does not
  [[nodiscard]] Outcome erase(const Key& key);               // 5/28 when it does not
  // Copies the first record whose key is `key` or follows it. endOfData when there is none.
  [[nodiscard]] Outcome readNext(const Key& key, std::uint8_t* record);

  // Copies the present state into the empty file `fd`.
  [[nodiscard]] Outcome copyTo(int fd);

  // Writes what is pending, closes the engine and gives the file its full length, so that its size
  // can be checked exactly when it is opened. Nothing but fd() and keep() may follow.
  [[nodiscard]] Outcome finish();
  [[nodiscard]] int fd() const { return fd_.get(); }
  // To be called before the rest of a long run: the file that the published database will push
  // out is freed faster then.
  void uncachePrevious(const DatabasePaths& paths) { release_.uncache(paths.previous); }
  // The file has got another name; it is no longer removed with the object.
  void keep();

 private:
  Successor() = default;
  [[nodiscard]] int createFile(const std::string& path);  // an errno value
  [[nodiscard]] Outcome openEngine();
  [[nodiscard]] Outcome restartEngine();
  [[nodiscard]] bool wantsRuns() const;
  [[nodiscard]] Outcome startRuns();
  [[nodiscard]] Outcome addToRuns(const Key& key, const std::uint8_t* record);
  [[nodiscard]] Outcome settle();
  [[nodiscard]] Outcome appendAll(SortedRuns& runs);

  std::string path_;  // empty once kept
  UniqueFd fd_;
  std::unique_ptr<EngineFile> engine_;
  std::unique_ptr<SortedRuns> runs_;
  std::uint64_t appended_ = 0;
  std::uint64_t inserted_ = 0;
  // Not again once they were merged, which is not to be repeated for every change in turn.
  bool runsAreWorthwhile_ = true;
  BackgroundRelease release_;
};

}  // namespace orx::kdb
