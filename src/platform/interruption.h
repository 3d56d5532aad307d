// What becomes of a run that a signal ends (INT, TERM, HUP).
//
// A thread waits for the signals, so nothing ever runs in a signal handler. When one comes, the
// thread waits for the end of a critical step, removes the temporary files that are registered
// here, calls the program's farewell and ends the process with 128 + the number of the signal.
// Signals that the caller had ignored (nohup) stay ignored. Any other end (KILL, a power failure)
// leaves the temporary files; the next run deals with them.
#pragma once

#include <mutex>
#include <string>

namespace orx {

// While one exists, no signal ends the process: steps that only make sense together, such as the
// making of a file and its registration here, belong into one. For any thread; a second one waits.
// Not to be nested, and hasPublished() not to be asked within one.
class CriticalStep {
 public:
  CriticalStep();

  // The file `path`, open as `fd`, is removed when the process is interrupted, as long as the name
  // leads to it. leaveAlone() has to come before the descriptor is closed. Throws std::bad_alloc.
  void removeWhenInterrupted(const std::string& path, int fd);
  // Nothing happens for a path that is not registered.
  void leaveAlone(const std::string& path);
  // The result of the run carries its final name: from now on farewells and failures say so.
  void notePublished();

 private:
  std::lock_guard<std::mutex> lock_;
};

// Whether a step of this process has called notePublished().
[[nodiscard]] bool hasPublished();

// Tells the operator that the run was interrupted; called in the waiting thread, with the answer of
// hasPublished(). Has to do without locks that the other threads may hold.
using Farewell = void(bool published);

// Ends the process in the middle of whatever it does, but for a critical step: removes the
// temporary files, writes what was printed on standard output, unless its receiver does not take
// it, and calls `farewell`. For any thread, but not within a critical step. Takes no memory.
[[noreturn]] void endProcess(Farewell& farewell, int exitCode);

// Starts the waiting thread; to be called once, before any other thread is started. Without it, or
// when no thread can be had, signals end the process as usual.
void awaitInterruption(Farewell& farewell);

}  // namespace orx
