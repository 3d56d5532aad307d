// RunProgress: what a run is doing and how far it has come, for whoever shows it.
//
// The run says which phase it enters and counts; another thread looks at the counts whenever it
// likes. Counting costs an addition: no clock, no lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

namespace orx {

// Shows the progress. What is printed between pause() and resume() stands on lines of its own. The
// two come in pairs, not nested, from the thread that prints.
class ProgressDisplay {
 public:
  ProgressDisplay() = default;
  ProgressDisplay(const ProgressDisplay&) = delete;
  ProgressDisplay& operator=(const ProgressDisplay&) = delete;
  virtual ~ProgressDisplay() = default;
  virtual void pause() = 0;
  virtual void resume() = 0;
};

class RunProgress {
 public:
  struct State {
    const char* phase = nullptr;  // null: nothing to show
    std::uint64_t number = 0;     // of the phase; each enter() makes a new one
    std::uint64_t records = 0;    // in this phase
    std::uint64_t done = 0;       // of `total`, both in records or both in bytes
    std::uint64_t total = 0;      // 0: not known
  };

  // `phase` is a literal, a word like "reading". The phase ends with the next one; leave() ends the
  // last. `totalRecords` is an estimate, 0 without one.
  void enter(const char* phase, std::uint64_t totalRecords = 0);
  // The total is the size of `file`, unless it is no regular file; what is done of it are the bytes
  // that were counted since startFile(), even before this phase.
  void enterFile(const char* phase, const std::string& file);
  void leave() { enter(nullptr); }

  // Each for one thread at a time.
  void countRecord() { add(records_, 1); }
  void countBytes(std::uint64_t count) { add(bytes_, count); }
  // A file is read from its beginning.
  void startFile() { bytes_.store(0, std::memory_order_relaxed); }

  // For any thread.
  [[nodiscard]] State state() const;
  [[nodiscard]] std::uint64_t records() const { return records_.load(std::memory_order_relaxed); }

  // The display outlives its use here; null for none. Set by the thread that prints.
  void setDisplay(ProgressDisplay* display) { display_ = display; }
  [[nodiscard]] ProgressDisplay* display() const { return display_; }

 private:
  using Counter = std::atomic<std::uint64_t>;
  static void add(Counter& counter, std::uint64_t count) {
    counter.store(counter.load(std::memory_order_relaxed) + count, std::memory_order_relaxed);
  }
  void begin(const char* phase, std::uint64_t total, bool inBytes);

  mutable std::mutex mutex_;  // of the phase
  const char* phase_ = nullptr;
  std::uint64_t number_ = 0;
  std::uint64_t total_ = 0;
  bool inBytes_ = false;
  Counter records_ = 0;
  Counter bytes_ = 0;
  ProgressDisplay* display_ = nullptr;
};

namespace detail {
inline constinit RunProgress processProgress;
}

// The one instance of the process.
[[nodiscard]] inline RunProgress& runProgress() {
  return detail::processProgress;
}

// While one exists nothing is drawn: for whoever prints on standard output during a run. Not to be
// nested.
class OutputTurn {
 public:
  OutputTurn() : display_(runProgress().display()) {
    if (display_ != nullptr) display_->pause();
  }
  OutputTurn(const OutputTurn&) = delete;
  OutputTurn& operator=(const OutputTurn&) = delete;
  ~OutputTurn() {
    if (display_ != nullptr) display_->resume();
  }

 private:
  ProgressDisplay* display_;
};

}  // namespace orx
