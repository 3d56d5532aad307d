// Marker sequences: six bytes, none of them found in UTF-8 text, that stand for one of the
// delimiters of attribute text.
//
//   0  FE FD FC FB FA F0  "<"
//   1  FE FD FC FB F0 FA  ">"
//   2  FE FD FC FB FA F1  ";"
#pragma once

#include <memory>

namespace orx {

// The first marker in the text, which it points into, and its number in *which; null and -1 when
// there is none. The text ends at its NUL and is not null, here and below.
[[nodiscard]] const char* searchSpecString(const char* text, int* which);

// A copy of the text with every marker replaced by its delimiter, and a NUL; null when it holds no
// marker. The buffer is as long as the text with its NUL.
[[nodiscard]] std::unique_ptr<char[]> replaceSpecString(const char* text);

}  // namespace orx
