#include "terminal/progress_line.h"

#include <unistd.h>

#include <algorithm>
#include <system_error>

#include "platform/file.h"
#include "terminal/terminal.h"

namespace orx {

namespace {

constexpr auto firstAppearance = std::chrono::milliseconds(500);
constexpr auto redrawInterval = std::chrono::milliseconds(100);
constexpr auto longestWait = std::chrono::milliseconds(200);
constexpr std::size_t echoed = 2;       // "^C" that the terminal puts behind the line
constexpr double leastSeconds = 0.3;    // a rate over less says nothing
constexpr double leastProgress = 0.01;  // and so does a time left

}  // namespace

void ProgressLine::start(int fd) {
  if (!isTerminal(fd) || thread_.joinable()) return;
  fd_ = fd;
  stopped_ = false;
  try {
    thread_ = std::thread([this] { run(); });
  } catch (const std::system_error&) {
    return;  // a run without progress is better than none
  }
  runProgress().setDisplay(this);
}

void ProgressLine::stop() {
  if (!thread_.joinable()) return;
  runProgress().setDisplay(nullptr);
  {
    const std::lock_guard<std::mutex> lock(waiting_);
    stopped_ = true;
  }
  wake_.notify_one();
  thread_.join();
  const std::lock_guard<std::timed_mutex> lock(drawing_);
  erase();
}

void ProgressLine::pause() {
  drawing_.lock();
  erase();
}

void ProgressLine::resume() {
  drawing_.unlock();
}

// The lock is never given back.
void ProgressLine::eraseForGood() {
  if (!drawing_.try_lock_for(longestWait)) return;
  if (drawn_ == 0) return;
  const std::size_t columns =
      std::min(drawn_ + echoed, std::max(terminalWidth(fd_), drawn_ + 1) - 1);
  writeIfTaken(fd_, "\r" + std::string(columns, ' ') + "\r");
}

void ProgressLine::run() {
  const Clock::time_point appearance = Clock::now() + firstAppearance;
  std::unique_lock<std::mutex> lock(waiting_);
  while (!stopped_) {
    look();
    if (Clock::now() >= appearance) draw();
    (void)wake_.wait_for(lock, redrawInterval, [this] { return stopped_; });
  }
}

// Rates begin with the first look at a phase.
void ProgressLine::look() {
  state_ = runProgress().state();
  if (state_.number == first_.number) return;
  first_ = state_;
  since_ = Clock::now();
}

void ProgressLine::draw() {
  const std::lock_guard<std::timed_mutex> lock(drawing_);
  if (state_.phase == nullptr) return erase();
  if (!isInForeground(fd_)) return;
  const std::size_t width = terminalWidth(fd_);
  std::string text = progressText(view(), width - std::min<std::size_t>(width, 1));
  if (text == shown_) return;
  const std::size_t columns = text.size();
  shown_ = text;
  text.append(drawn_ - std::min(drawn_, columns), ' ');
  drawn_ = columns;
  write("\r" + text);
}

void ProgressLine::erase() {
  if (drawn_ != 0) write("\r" + std::string(drawn_, ' ') + "\r");
  drawn_ = 0;
  shown_.clear();
}

void ProgressLine::write(const std::string& text) {
  (void)writeAll(fd_, text);
}

ProgressView ProgressLine::view() const {
  ProgressView view{.phase = state_.phase};
  view.seconds = std::chrono::duration<double>(Clock::now() - since_).count();
  const bool tells = view.seconds >= leastSeconds;
  const std::uint64_t records = state_.records - std::min(first_.records, state_.records);
  if (tells && records > 0) view.rate = static_cast<double>(records) / view.seconds;
  if (state_.total == 0) return view;
  const auto total = static_cast<double>(state_.total);
  view.share = std::min(static_cast<double>(state_.done) / total, 1.0);
  const double gained = *view.share - static_cast<double>(first_.done) / total;
  if (tells && gained >= leastProgress) {
    view.secondsLeft = (1 - *view.share) / gained * view.seconds;
  }
  return view;
}

ProgressLine& progressLine() {
  static ProgressLine* const line = new ProgressLine;
  return *line;
}

ProgressScope::ProgressScope(bool wanted) {
  if (wanted) progressLine().start(STDERR_FILENO);
}

ProgressScope::~ProgressScope() {
  progressLine().stop();
}

}  // namespace orx
