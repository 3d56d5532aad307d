// File names as the operator reads and types them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace orx {

// `text` on one line of a terminal, whatever is in it: each control byte as "?".
[[nodiscard]] std::string onOneLine(const std::string& text);

// The absolute path of `name`, symbolic links as they are, for reading only: control bytes as "?".
// `name` itself where the current directory cannot be told.
[[nodiscard]] std::string absolutePath(const std::string& name);

// The directory of `name`, "." for a name without one.
[[nodiscard]] std::string parentOf(const std::string& name);

// `name` as one word for a shell, quoted where it has to be, in $'' with codes for control
// characters; never an option.
[[nodiscard]] std::string shellWord(const std::string& name);

// A place in a text, "{db}", and what stands there. The place is a literal.
using Placed = std::pair<std::string_view, std::string>;
// `text` with all places filled, in one pass: what a name brings along is no place.
[[nodiscard]] std::string filled(std::string_view text, std::span<const Placed> places);

}  // namespace orx
