// Decoder: turns compressed bytes into what was compressed, a piece at a time. What follows the end
// of one member (gzip), frame (zstd) or stream (xz) is read on as the next.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "platform/compression/compression.h"

namespace orx {

enum class [[nodiscard]] Decoding : std::int32_t{
    going,        // more bytes belong to this member
    complete,     // a member has ended, and all that belongs to it was given out
    damaged,      // these are no bytes of this format
    needsMemory,  // it was compressed for readers with more memory than `mostMemory`
};

class Decoder {
 public:
  // What a decoder may take for the history that the format refers back to: more than the highest
  // ordinary level of each format needs.
  static constexpr std::uint64_t mostMemory = std::uint64_t{128} << 20;

  Decoder() = default;
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  virtual ~Decoder() = default;

  // Takes bytes off the front of `in` and room off the front of `out`, until one is empty or a
  // member ends; `out` shrinks by what was written. `isLast`: nothing follows `in`. To be called
  // until it says `complete` with nothing left in the last `in`; a call that says `going` and takes
  // and writes nothing then means that the data was cut. Behind anything but `going` and `complete`
  // the decoder is of no more use. Throws std::bad_alloc.
  virtual Decoding decode(std::span<const std::uint8_t>& in, bool isLast,
                          std::span<std::uint8_t>& out) = 0;
};

// These throw std::bad_alloc.
[[nodiscard]] std::unique_ptr<Decoder> makeGzipDecoder();
[[nodiscard]] std::unique_ptr<Decoder> makeZstdDecoder();
[[nodiscard]] std::unique_ptr<Decoder> makeXzDecoder();
// Null for none.
[[nodiscard]] std::unique_ptr<Decoder> makeDecoder(Compression compression);

}  // namespace orx
