// The operations of code_pages.h that look at UTF-8 bytes.
#include <cstdint>

#include "encoding/code_pages.h"
#include "encoding/text_trace.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = textTraceUnit;

constexpr bool isContinuation(std::uint8_t byte) {
  return byte >= 0x80 && byte <= 0xBF;
}

// The well-formed sequences by their first byte: the range of the second byte, which is narrower
// where overlong forms, surrogates and what lies above U+10FFFF begin, and the length.
struct SequenceForm {
  std::uint8_t firstLow, firstHigh;
  std::uint8_t secondLow, secondHigh;
  int length;
};
constexpr SequenceForm sequenceForms[] = {
    {0xC2, 0xDF, 0x80, 0xBF, 2}, {0xE0, 0xE0, 0xA0, 0xBF, 3}, {0xE1, 0xEC, 0x80, 0xBF, 3},
    {0xED, 0xED, 0x80, 0x9F, 3}, {0xEE, 0xEF, 0x80, 0xBF, 3}, {0xF0, 0xF0, 0x90, 0xBF, 4},
    {0xF1, 0xF3, 0x80, 0xBF, 4}, {0xF4, 0xF4, 0x80, 0x8F, 4},
};

std::uint8_t byteAt(const char* p) {
  return static_cast<std::uint8_t>(*p);
}

// Whether the bytes after the first complete the sequence; the text's NUL never does.
bool completes(const char* p, const SequenceForm& form) {
  if (byteAt(p + 1) < form.secondLow || byteAt(p + 1) > form.secondHigh) return false;
  for (int i = 2; i < form.length; ++i) {
    if (!isContinuation(byteAt(p + i))) return false;
  }
  return true;
}

// Length of the well-formed sequence at `p`, 0 when there is none.
int sequenceLength(const char* p) {
  const std::uint8_t first = byteAt(p);
  if (first < 0x80) return 1;
  for (const SequenceForm& form : sequenceForms) {
    if (first >= form.firstLow && first <= form.firstHigh) {
      return completes(p, form) ? form.length : 0;
    }
  }
  return 0;
}

}  // namespace

int isValidUTF8String(const char* text) {
  ORX_TRACE("isValidUTF8String");
  while (*text != '\0') {
    const int length = sequenceLength(text);
    if (length == 0) return trace.exit(0);
    text += length;
  }
  return trace.exit(1);
}

int myfindUTF8Len(const char* text, int end) {
  ORX_TRACE("myfindUTF8Len");
  if (trace.on(TraceScope::detail)) DIAG_Printf(trace.anchor(), __LINE__, "_iEnd is [%d]", end);
  if (text == nullptr) return trace.exit(0);
  while (end >= 0 && isContinuation(byteAt(text + end))) --end;
  return trace.exit(end < 0 ? -1 : end);
}

}  // namespace orx
