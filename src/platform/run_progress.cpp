#include "platform/run_progress.h"

#include <sys/stat.h>

namespace orx {

void RunProgress::enter(const char* phase, std::uint64_t totalRecords) {
  begin(phase, totalRecords, false);
}

void RunProgress::enterFile(const char* phase, const std::string& file) {
  struct stat found {};
  const bool isKnown = ::stat(file.c_str(), &found) == 0 && S_ISREG(found.st_mode);
  begin(phase, isKnown ? static_cast<std::uint64_t>(found.st_size) : 0, true);
}

void RunProgress::begin(const char* phase, std::uint64_t total, bool inBytes) {
  const std::lock_guard<std::mutex> lock(mutex_);
  phase_ = phase;
  ++number_;
  total_ = total;
  inBytes_ = inBytes;
  records_.store(0, std::memory_order_relaxed);
}

RunProgress::State RunProgress::state() const {
  const std::lock_guard<std::mutex> lock(mutex_);
  return {phase_, number_, records(), inBytes_ ? bytes_.load(std::memory_order_relaxed) : records(),
          total_};
}

}  // namespace orx
