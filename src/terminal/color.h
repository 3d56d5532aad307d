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

// Whether what is written on the stream `fd` is painted.
[[nodiscard]] bool isPainted(int fd);

enum class Paint : std::int32_t { red, green, yellow, bold };

// `text` as it is written on the stream `fd`: painted, or as it is.
[[nodiscard]] std::string painted(std::string_view text, Paint paint, int fd);

// `text` as it is written on the stream `fd`, with those lines painted that begin with `sign`,
// blanks before it aside.
[[nodiscard]] std::string withPaintedLines(std::string text, std::string_view sign, Paint paint,
                                           int fd);

}  // namespace orx
