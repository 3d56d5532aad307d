// The lines of a backup: how long they are and what of their line end counts.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace orx {

// A line as read, line end removed, in an area that is zero behind it.
struct BackupLine {
  // With its line end; what is longer comes in pieces of this length.
  static constexpr std::size_t longest = 444;

  std::array<char, longest + 1> chars{};

  // Up to the first zero byte; lives as long as the line.
  [[nodiscard]] std::string_view text() const { return chars.data(); }
};

// Without the "\n" at its end and one "\r" before that; a piece without "\n" as it is.
[[nodiscard]] inline std::string_view withoutLineEnd(std::string_view piece) {
  if (!piece.ends_with('\n')) return piece;
  piece.remove_suffix(1);
  if (piece.ends_with('\r')) piece.remove_suffix(1);
  return piece;
}

// What a restore takes of a piece: behind a zero byte the line end counts as text.
[[nodiscard]] inline std::string_view restoredText(std::string_view piece) {
  const bool hasZeroByte = piece.find('\0') != std::string_view::npos;
  return hasZeroByte ? piece : withoutLineEnd(piece);
}

}  // namespace orx
