// Writing the text form of an attribute or a set into a caller's buffer.
#pragma once

#include <algorithm>
#include <cstring>

#include "platform/memory_manager.h"

namespace orx {

// Fills `size` bytes at `buffer` with what source.writeText() writes, cut to size - 1 bytes, and
// zeros; does nothing for a size below 1. Where source.getCharAttributeSize() does not fit, the
// text takes shape in counted memory first.
template <typename Source>
void writeCut(const Source& source, char* buffer, int size) {
  if (size < 1) return;
  const auto room = static_cast<std::size_t>(size);
  const auto needed = static_cast<std::size_t>(source.getCharAttributeSize());
  if (needed <= room) {
    const char* end = source.writeText(buffer);
    std::fill(buffer + (end - buffer), buffer + room, '\0');
    return;
  }
  const CountedBuffer whole(needed);
  (void)source.writeText(whole.data());
  std::memcpy(buffer, whole.data(), room - 1);
  buffer[room - 1] = '\0';
}

}  // namespace orx
