// Color: what is painted on which stream.
//
// `automatic` paints on a terminal unless the environment sets NO_COLOR to anything but an empty
// text; the other two hold whatever the stream is.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace orx {

enum class ColorChoice : std::int32_t { automatic, always, never };

// Of the whole process; automatic until it is set.
void chooseColor(ColorChoice choice);

[[nodiscard]] bool isPainted(int fd);

enum class Paint : std::int32_t { red, green, yellow, bold };

// `text` as it is written on the stream `fd`: painted, or as it is.
[[nodiscard]] std::string painted(std::string_view text, Paint paint, int fd);

// Every line of `text` whose first characters, blanks aside, are `sign`, painted, for `fd`.
[[nodiscard]] std::string withPaintedLines(std::string text, std::string_view sign, Paint paint,
                                           int fd);

}  // namespace orx
