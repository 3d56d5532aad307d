// Attribute set texts that need not be read to be known: those in the form that CMAttributeSet
// itself writes.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>

namespace orx {

// When a CMAttributeSet that reads `text`, with unescaping, would write the same text again, the
// size that its getCharAttributeSize() would tell; `visitKey` is called with the key number of each
// attribute, in order, in any text for those in front of what ends in no answer. Nothing is said of
// other texts, nor of rare ones that would come back the same: values that are empty or hold a ";"
// or
// ">", attributes without a value, two of one key, keys of 0 and beyond 32767.
[[nodiscard]] std::optional<std::size_t> sizeOfWrittenText(
    std::string_view text, const std::function<void(int)>& visitKey);

}  // namespace orx
