#include "platform/background_release.h"

#include <fcntl.h>

#include <memory>
#include <system_error>
#include <utility>

namespace orx {

namespace {

constexpr off_t worthAThread = off_t{8} << 20;

}  // namespace

BackgroundRelease::~BackgroundRelease() {
  for (std::thread& thread : threads_) thread.join();
}

void BackgroundRelease::close(UniqueFd fd) {
  start([held = std::make_shared<UniqueFd>(std::move(fd))] { held->reset(); });
}

void BackgroundRelease::uncache(const std::string& path) {
  auto file = std::make_shared<UniqueFd>(openFile(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK));
  struct stat status {};
  if (!file->valid() || ::fstat(file->get(), &status) != 0 || status.st_size < worthAThread) return;
  start([file] { (void)::posix_fadvise(file->get(), 0, 0, POSIX_FADV_DONTNEED); });
}

// Where no thread can be had it is done at once.
void BackgroundRelease::start(std::function<void()> task) {
  threads_.reserve(threads_.size() + 1);
  try {
    threads_.emplace_back(task);
  } catch (const std::system_error&) {
    task();
  }
}

}  // namespace orx
