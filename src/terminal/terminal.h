// What is known of the terminal behind a descriptor.
#pragma once

#include <cstddef>

namespace orx {

// A terminal that can go back to the start of a line; not TERM=dumb.
[[nodiscard]] bool isTerminal(int fd);

// Its columns: the smaller of what it says and what the variable COLUMNS says, 80 without either.
[[nodiscard]] std::size_t terminalWidth(int fd);

// Whether the process may draw on it: a job in the background may not.
[[nodiscard]] bool isInForeground(int fd);

}  // namespace orx
