#include "terminal/progress_text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace orx {

namespace {

constexpr std::size_t barLength = 20;
constexpr std::string_view gap = "  ";

int percentOf(double share) {
  return static_cast<int>(std::clamp(share, 0.0, 1.0) * 100);
}

std::string shareText(double share) {
  const std::string number = std::to_string(percentOf(share));
  return std::string(3 - std::min<std::size_t>(number.size(), 3), ' ') + number + " %";
}

std::string barText(double share) {
  const auto done = static_cast<std::size_t>(std::clamp(share, 0.0, 1.0) * barLength);
  return "[" + std::string(done, '#') + std::string(barLength - done, '-') + "]";
}

std::string clockText(double seconds) {
  constexpr std::uint64_t most = 359999;  // 99:59:59
  const auto whole = static_cast<std::uint64_t>(std::clamp(seconds, 0.0, double{most}));
  std::array<char, 32> text{};
  const std::uint64_t hours = whole / 3600;
  const auto minutes = static_cast<unsigned>(whole / 60 % 60);
  const auto rest = static_cast<unsigned>(whole % 60);
  if (hours > 0) {
    (void)std::snprintf(text.data(), text.size(), "%u:%02u:%02u", static_cast<unsigned>(hours),
                        minutes, rest);
  } else {
    (void)std::snprintf(text.data(), text.size(), "%u:%02u", minutes, rest);
  }
  return text.data();
}

}  // namespace

std::string progressText(const ProgressView& view, std::size_t width) {
  enum Piece : std::size_t { phase, share, bar, rate, time, pieces };
  std::array<std::string, pieces> texts;
  texts[phase] = view.phase.substr(0, width);
  if (view.share) texts[share] = shareText(*view.share);
  if (view.share) texts[bar] = barText(*view.share);
  if (view.rate) texts[rate] = std::to_string(std::llround(*view.rate)) + " records/s";
  texts[time] = view.secondsLeft ? clockText(*view.secondsLeft) + " left" : clockText(view.seconds);

  std::size_t used = texts[phase].size();
  for (const Piece piece : {share, time, rate, bar}) {
    const std::size_t needed = texts[piece].empty() ? 0 : gap.size() + texts[piece].size();
    if (used + needed > width) texts[piece].clear();
    if (!texts[piece].empty()) used += needed;
  }
  std::string line = texts[phase];
  for (const Piece piece : {share, bar, rate, time}) {
    if (!texts[piece].empty()) line.append(gap).append(texts[piece]);
  }
  return line;
}

}  // namespace orx
