// BackgroundRelease: gives up what is no longer needed of large files beside other work. To free
// the cached pages and blocks of some hundred megabytes takes the time of writing a third of them.
//
// Its calls return at once, unless no thread can be had, and tell of no failure: nothing depends on
// what they do.
#pragma once

#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/file.h"

namespace orx {

class BackgroundRelease {
 public:
  BackgroundRelease() = default;
  BackgroundRelease(const BackgroundRelease&) = delete;
  BackgroundRelease& operator=(const BackgroundRelease&) = delete;
  // Waits for what was begun.
  ~BackgroundRelease();

  // Closes a file that may be without a name.
  void close(UniqueFd fd);
  // Takes the pages of the file `path`, if there is one of 8 MB or more, out of the system's cache.
  // What the file holds stays as it is.
  void uncache(const std::string& path);

 private:
  void start(std::function<void()> task);

  std::vector<std::thread> threads_;
};

}  // namespace orx
