#include "descriptions/marker_sequences.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "encoding/text_trace.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = textTraceUnit;

constexpr char commonStart[] = "\xFE\xFD\xFC\xFB";
struct Marker {
  std::string_view end;
  char delimiter;
};
constexpr Marker markers[] = {{"\xFA\xF0", '<'}, {"\xF0\xFA", '>'}, {"\xFA\xF1", ';'}};
constexpr std::size_t startLength = sizeof commonStart - 1;
constexpr std::size_t markerLength = startLength + 2;

// The marker whose common start lies at `position`; -1 when it is none.
int markerAt(const char* position) {
  for (int i = 0; i < static_cast<int>(std::size(markers)); ++i) {
    const std::string_view end = markers[i].end;
    if (std::strncmp(position + startLength, end.data(), end.size()) == 0) return i;
  }
  return -1;
}

// Replaces the markers of `text`, the first of which is given; writes no NUL.
void replaceFrom(const char* text, const char* marker, int which, char* out) {
  for (; marker != nullptr; marker = searchSpecString(text, &which)) {
    out = std::copy(text, marker, out);
    *out++ = markers[which].delimiter;
    text = marker + markerLength;
  }
  std::copy(text, text + std::strlen(text), out);
}

}  // namespace

const char* searchSpecString(const char* text, int* which) {
  ORX_TRACE("searchSpecString");
  *which = -1;
  const char* found = std::strstr(text, commonStart);
  while (found != nullptr && (*which = markerAt(found)) < 0) {
    found = std::strstr(found + startLength, commonStart);
  }
  return trace.exit(found);
}

std::unique_ptr<char[]> replaceSpecString(const char* text) {
  ORX_TRACE("replaceSpecString");
  int which = -1;
  const char* first = searchSpecString(text, &which);
  if (first == nullptr) return trace.exit(std::unique_ptr<char[]>());
  auto replaced = std::make_unique<char[]>(std::strlen(text) + 1);
  replaceFrom(text, first, which, replaced.get());
  return trace.exit(std::move(replaced));
}

}  // namespace orx
