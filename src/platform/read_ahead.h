// ReadAhead: a second thread that prepares the next batches while the caller works on one.
//
//   ReadAhead<Batch> ahead([](Batch& batch) { ...; return more; });
//   ahead.start();
//   while (ahead.take(batch)) ...
//
// The batches come in order and at most eight wait, so memory is bounded. Without start(), or when
// no thread can be had, take() prepares the batch in the caller's own thread: the outcome is the
// same. All calls are for the one thread that takes.
#pragma once

#include <array>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace orx {

template <typename Batch>
class ReadAhead {
 public:
  // `fill` gets a batch that was used before, for its memory, and returns false when it is the
  // last (that batch counts, it may be empty). It runs in one thread at a time; nothing that it
  // uses may be touched by others before take() has returned false or stop() was called. It throws
  // nothing but std::bad_alloc; nothing may be taken after that.
  using Fill = std::function<bool(Batch&)>;

  explicit ReadAhead(Fill fill) : fill_(std::move(fill)) {}
  ReadAhead(const ReadAhead&) = delete;
  ReadAhead& operator=(const ReadAhead&) = delete;
  ~ReadAhead() { stop(); }

  void start() {
    if (thread_.joinable()) return;
    try {
      thread_ = std::thread([this] { prepareAll(); });
    } catch (const std::system_error&) {
      // take() does it then
    }
  }

  // Waits for the thread to finish the batch that it is at. Batches that were not taken are lost,
  // and nothing may be taken afterwards.
  void stop() {
    if (!thread_.joinable()) return;
    {
      const std::lock_guard lock(mutex_);
      stop_ = true;
    }
    changed_.notify_all();
    thread_.join();
  }

  // Swaps the next batch in, and waits for it; the memory of the old one goes to a later call of
  // `fill`. False, with `batch` as it was, when there was none left. Rethrows std::bad_alloc of
  // `fill`.
  [[nodiscard]] bool take(Batch& batch) {
    if (ended_) return false;
    if (!thread_.joinable()) {
      ended_ = !fill_(batch);
      return true;
    }
    Slot slot;
    std::swap(slot.batch, batch);
    swapOut(slot);
    std::swap(slot.batch, batch);
    ended_ = slot.last;
    if (slot.failure != nullptr) std::rethrow_exception(slot.failure);
    return true;
  }

 private:
  struct Slot {
    Batch batch;
    bool last = false;
    std::exception_ptr failure;
  };

  void prepareAll() {
    Slot slot;
    do {
      try {
        slot.last = !fill_(slot.batch);
      } catch (const std::bad_alloc&) {
        slot.failure = std::current_exception();
        slot.last = true;
      }
    } while (swapIn(slot));
  }

  // False when no further slot is wanted.
  bool swapIn(Slot& slot) {
    const bool more = !slot.last;
    bool wasEmpty = false;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return stop_ || ready_ < slots_.size(); });
      if (stop_) return false;
      wasEmpty = ready_ == 0;
      std::swap(slots_[(first_ + ready_) % slots_.size()], slot);
      ++ready_;
    }
    if (wasEmpty) changed_.notify_one();
    return more;
  }

  void swapOut(Slot& slot) {
    bool isHalfEmpty = false;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return ready_ > 0; });
      std::swap(slot, slots_[first_]);
      first_ = (first_ + 1) % slots_.size();
      --ready_;
      isHalfEmpty = ready_ == slots_.size() / 2;
    }
    // Not for each batch: to wake a thread takes as long as many records.
    if (isHalfEmpty) changed_.notify_one();
  }

  Fill fill_;
  bool ended_ = false;  // the last batch was taken
  std::thread thread_;

  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::array<Slot, 8> slots_;  // a ring: `ready_` slots from `first_` on
  std::size_t first_ = 0;
  std::size_t ready_ = 0;
  bool stop_ = false;
};

}  // namespace orx
