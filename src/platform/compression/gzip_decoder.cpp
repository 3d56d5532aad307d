#define ZLIB_CONST
#include <zlib.h>

#include <algorithm>
#include <limits>
#include <new>

#include "platform/compression/decoder.h"

namespace orx {

namespace {

constexpr int gzipOnly = 16 + MAX_WBITS;

uInt countOf(std::size_t size) {
  return static_cast<uInt>(std::min<std::size_t>(size, std::numeric_limits<uInt>::max()));
}

class GzipDecoder final : public Decoder {
 public:
  GzipDecoder() {
    if (::inflateInit2(&stream_, gzipOnly) != Z_OK) throw std::bad_alloc();
  }
  GzipDecoder(const GzipDecoder&) = delete;
  GzipDecoder& operator=(const GzipDecoder&) = delete;
  ~GzipDecoder() override { (void)::inflateEnd(&stream_); }

  Decoding decode(std::span<const std::uint8_t>& in, bool /*isLast*/,
                  std::span<std::uint8_t>& out) override {
    if (hasEnded_) skipPadding(in);
    if (hasEnded_ && in.empty()) return Decoding::complete;
    if (isPadded_) return Decoding::damaged;
    if (hasEnded_) (void)::inflateReset(&stream_);
    return inflateSome(in, out);
  }

 private:
  // Zeros may fill the last block of a tape; nothing follows them.
  void skipPadding(std::span<const std::uint8_t>& in) {
    const auto end = std::ranges::find_if(in, [](std::uint8_t byte) { return byte != 0; });
    isPadded_ |= end != in.begin();
    in = in.subspan(static_cast<std::size_t>(end - in.begin()));
  }

  Decoding inflateSome(std::span<const std::uint8_t>& in, std::span<std::uint8_t>& out) {
    stream_.next_in = in.data();
    stream_.avail_in = countOf(in.size());
    stream_.next_out = out.data();
    stream_.avail_out = countOf(out.size());
    const int code = ::inflate(&stream_, Z_NO_FLUSH);
    in = in.subspan(static_cast<std::size_t>(stream_.next_in - in.data()));
    out = out.subspan(static_cast<std::size_t>(stream_.next_out - out.data()));
    hasEnded_ = code == Z_STREAM_END;
    if (hasEnded_) return Decoding::complete;
    if (code == Z_MEM_ERROR) throw std::bad_alloc();
    // Without progress inflate() reports a full or an empty buffer.
    return code == Z_OK || code == Z_BUF_ERROR ? Decoding::going : Decoding::damaged;
  }

  z_stream stream_{};
  bool hasEnded_ = false;  // a member; the next one needs a reset
  bool isPadded_ = false;
};

}  // namespace

std::unique_ptr<Decoder> makeGzipDecoder() {
  return std::make_unique<GzipDecoder>();
}

}  // namespace orx
