#include <zstd.h>
#include <zstd_errors.h>

#include <bit>
#include <new>

#include "platform/compression/decoder.h"

namespace orx {

namespace {

struct FreeStream {
  void operator()(ZSTD_DStream* stream) const { (void)::ZSTD_freeDStream(stream); }
};

Decoding failure(std::size_t code) {
  switch (::ZSTD_getErrorCode(code)) {
    case ZSTD_error_frameParameter_windowTooLarge:
      return Decoding::needsMemory;
    case ZSTD_error_memory_allocation:
      throw std::bad_alloc();
    default:
      return Decoding::damaged;
  }
}

class ZstdDecoder final : public Decoder {
 public:
  ZstdDecoder() : stream_(::ZSTD_createDStream()) {
    if (stream_ == nullptr) throw std::bad_alloc();
    (void)::ZSTD_DCtx_setParameter(stream_.get(), ZSTD_d_windowLogMax,
                                   std::bit_width(mostMemory) - 1);
  }

  Decoding decode(std::span<const std::uint8_t>& in, bool /*isLast*/,
                  std::span<std::uint8_t>& out) override {
    if (in.empty() && hasEnded_) return Decoding::complete;
    ZSTD_inBuffer input{in.data(), in.size(), 0};
    ZSTD_outBuffer output{out.data(), out.size(), 0};
    const std::size_t left = ::ZSTD_decompressStream(stream_.get(), &output, &input);
    in = in.subspan(input.pos);
    out = out.subspan(output.pos);
    if (::ZSTD_isError(left) != 0) return failure(left);
    hasEnded_ = left == 0;
    return hasEnded_ ? Decoding::complete : Decoding::going;
  }

 private:
  std::unique_ptr<ZSTD_DStream, FreeStream> stream_;
  bool hasEnded_ = false;  // a frame; the next call begins another by itself
};

}  // namespace

std::unique_ptr<Decoder> makeZstdDecoder() {
  return std::make_unique<ZstdDecoder>();
}

}  // namespace orx
