// ProgressLine: draws runProgress() on the last line of a terminal, from a thread of its own, so
// that it goes on while the run waits for a disk.
//
// The line first appears after half a second and is drawn at most ten times a second, in one write
// and without control sequences but "\r". It is gone when it stops, pauses, or a phase ends that no
// other follows. A process that dies leaves it on the terminal.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

#include "platform/run_progress.h"
#include "terminal/progress_text.h"

namespace orx {

class ProgressLine : public ProgressDisplay {
 public:
  // Starts to draw on `fd`; does nothing when that is no terminal, when there is no thread to be
  // had, or when it draws already. start() and stop() are for one thread.
  void start(int fd);
  // Waits for the thread, and erases the line. Nothing happens when it does not draw.
  void stop();

  // Of the thread that started it; whoever prints uses OutputTurn (platform/run_progress.h).
  void pause() override;
  void resume() override;

  // Erases the line; nothing is drawn afterwards, and pause() waits for ever. For another thread,
  // right before the process ends. Gives up when the terminal does not take anything.
  void eraseForGood();

 private:
  using Clock = std::chrono::steady_clock;

  void run();
  void look();
  void draw();
  void erase();
  void write(const std::string& text);
  [[nodiscard]] ProgressView view() const;

  int fd_ = -1;
  std::thread thread_;
  std::mutex waiting_;
  std::condition_variable wake_;
  bool stopped_ = false;

  std::timed_mutex drawing_;  // of what the terminal shows
  std::size_t drawn_ = 0;     // columns that are not empty
  std::string shown_;

  // Of the thread alone.
  RunProgress::State state_;
  RunProgress::State first_;  // the phase as it was first seen
  Clock::time_point since_;
};

// The one of the process; never destroyed.
[[nodiscard]] ProgressLine& progressLine();

// Draws progressLine() on standard error as long as it lives, if it is `wanted`. One at a time.
class ProgressScope {
 public:
  explicit ProgressScope(bool wanted);
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;
  ~ProgressScope();
};

}  // namespace orx
