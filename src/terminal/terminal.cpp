#include "terminal/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

namespace orx {

namespace {

constexpr std::size_t usualWidth = 80;

std::string_view variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

// 0 when it is not set to a number.
std::size_t columnsVariable() {
  const std::string_view text = variable("COLUMNS");
  std::size_t columns = 0;
  (void)std::from_chars(text.data(), text.data() + text.size(), columns);
  return columns;
}

std::size_t reportedColumns(int fd) {
  winsize size{};
  return ::ioctl(fd, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

}  // namespace

bool isTerminal(int fd) {
  return ::isatty(fd) == 1 && variable("TERM") != "dumb";
}

std::size_t terminalWidth(int fd) {
  const std::size_t reported = reportedColumns(fd);
  const std::size_t wanted = columnsVariable();
  if (reported == 0 && wanted == 0) return usualWidth;
  if (reported == 0 || wanted == 0) return std::max(reported, wanted);
  return std::min(reported, wanted);
}

bool isInForeground(int fd) {
  const pid_t group = ::tcgetpgrp(fd);
  return group < 0 || group == ::getpgrp();
}

}  // namespace orx
