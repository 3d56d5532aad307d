// Attribute set texts that need not be read to be known: those in the form that CMAttributeSet
// itself writes.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace orx {

// When a CMAttributeSet that reads `text`, with unescaping, would write the same text again, and
// `accept` says yes to the key number of every attribute, the size that its getCharAttributeSize()
// would tell; the text is not read on behind a no. Nothing is said of other texts, nor of rare ones
// that would come back the same: values that are empty or hold a ";" or ">", attributes without a
// value, two of one key, keys of 0 and beyond 32767.
[[nodiscard]] std::optional<std::size_t> sizeOfWrittenText(std::string_view text,
                                                           bool (*accept)(int key));

}  // namespace orx
