// The size that an attribute tells for its text.
#pragma once

#include <algorithm>
#include <cstddef>

namespace orx {

// `header`: length of the three numbers and their ";". `stored`: bytes of the values, each with an
// end byte, a ";" or ">" counted twice. `values`: how many there are; `blanks`: how many get a
// blank in writing, because they are empty.
//
// One byte more for every value and a usual header; or, where many values or a long key make that
// too little, exactly what the text and its NUL take.
constexpr std::size_t grantedSize(std::size_t header, std::size_t stored, std::size_t values,
                                  std::size_t blanks) {
  constexpr std::size_t headerAndNul = 14;  // of a usual header
  return std::max(stored + values + headerAndNul, header + stored + blanks + 1);
}

}  // namespace orx
