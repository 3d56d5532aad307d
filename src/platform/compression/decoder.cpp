#include "platform/compression/decoder.h"

namespace orx {

std::unique_ptr<Decoder> makeDecoder(Compression compression) {
  switch (compression) {
    case Compression::gzip:
      return makeGzipDecoder();
    case Compression::zstd:
      return makeZstdDecoder();
    case Compression::xz:
      return makeXzDecoder();
    case Compression::none:
      break;
  }
  return nullptr;
}

}  // namespace orx
