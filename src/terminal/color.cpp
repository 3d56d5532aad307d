#include "terminal/color.h"

#include <array>
#include <cstdlib>

#include "terminal/terminal.h"

namespace orx {

namespace {

constinit ColorChoice choiceOfProcess = ColorChoice::automatic;

constexpr std::array<std::string_view, 4> starts{"\033[31m", "\033[32m", "\033[33m", "\033[1m"};
constexpr std::string_view end = "\033[0m";

bool isUnwanted() {
  const char* const value = std::getenv("NO_COLOR");
  return value != nullptr && *value != '\0';
}

std::string paintedText(std::string_view text, Paint paint) {
  return std::string(starts[static_cast<std::size_t>(paint)]).append(text).append(end);
}

bool beginsWith(std::string_view line, std::string_view sign) {
  const std::size_t first = line.find_first_not_of(' ');
  return first != std::string_view::npos && line.substr(first).starts_with(sign);
}

}  // namespace

void chooseColor(ColorChoice choice) {
  choiceOfProcess = choice;
}

bool isPainted(int fd) {
  if (choiceOfProcess != ColorChoice::automatic) return choiceOfProcess == ColorChoice::always;
  return isTerminal(fd) && !isUnwanted();
}

std::string painted(std::string_view text, Paint paint, int fd) {
  return isPainted(fd) ? paintedText(text, paint) : std::string(text);
}

std::string withPaintedLines(std::string text, std::string_view sign, Paint paint, int fd) {
  if (!isPainted(fd)) return text;
  std::string result;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    const bool endsLine = line.size() < rest.size();
    result += beginsWith(line, sign) ? paintedText(line, paint) : std::string(line);
    if (endsLine) result += '\n';
    rest.remove_prefix(line.size() + (endsLine ? 1 : 0));
  }
  return result;
}

}  // namespace orx
