// The check that stands between a text from outside the program and its use as a printf format.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>

namespace orx {

enum class MessageArgument { number, text };  // int, zero-terminated characters

// How many of `arguments`, counted from the first, the conversions of `format` take; nothing when
// the format may not be used with them. Accepted are conversions in the order of the arguments:
//   number  % [-+ #0] [width] [.precision] d i u x X o, and % [-] [width] c
//   text    % [-] [width] [.precision] s
//   none    %%
// with "#" only before x X o, and at most three digits of width and of precision. Everything else
// (%n, "*", positions such as 1$, length modifiers, other conversions, more conversions than
// arguments) is refused: it would write to memory, read past the arguments or be undefined.
[[nodiscard]] std::optional<std::size_t> argumentsTaken(std::string_view format,
                                                        std::span<const MessageArgument> arguments);

}  // namespace orx
