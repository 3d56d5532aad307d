#include <lzma.h>

#include <new>

#include "platform/compression/decoder.h"

namespace orx {

namespace {

// The library itself goes on from one stream to the next, over the zero bytes that may pad them.
class XzDecoder final : public Decoder {
 public:
  XzDecoder() {
    if (::lzma_stream_decoder(&stream_, mostMemory, LZMA_CONCATENATED) != LZMA_OK) {
      throw std::bad_alloc();
    }
  }
  XzDecoder(const XzDecoder&) = delete;
  XzDecoder& operator=(const XzDecoder&) = delete;
  ~XzDecoder() override { ::lzma_end(&stream_); }

  // Complete only once the last byte was seen: nothing else tells a stream from the last one.
  Decoding decode(std::span<const std::uint8_t>& in, bool isLast,
                  std::span<std::uint8_t>& out) override {
    if (hasEnded_) return Decoding::complete;
    stream_.next_in = in.data();
    stream_.avail_in = in.size();
    stream_.next_out = out.data();
    stream_.avail_out = out.size();
    const lzma_ret code = ::lzma_code(&stream_, isLast ? LZMA_FINISH : LZMA_RUN);
    in = in.last(stream_.avail_in);
    out = out.last(stream_.avail_out);
    return outcomeOf(code);
  }

 private:
  Decoding outcomeOf(lzma_ret code) {
    switch (code) {
      case LZMA_STREAM_END:
        hasEnded_ = true;
        return Decoding::complete;
      case LZMA_OK:
      case LZMA_BUF_ERROR:  // no progress: a full or an empty buffer
        return Decoding::going;
      case LZMA_MEMLIMIT_ERROR:
        return Decoding::needsMemory;
      case LZMA_MEM_ERROR:
        throw std::bad_alloc();
      default:
        return Decoding::damaged;
    }
  }

  lzma_stream stream_ = LZMA_STREAM_INIT;
  bool hasEnded_ = false;  // the last stream
};

}  // namespace

std::unique_ptr<Decoder> makeXzDecoder() {
  return std::make_unique<XzDecoder>();
}

}  // namespace orx
