// The operations of symbol_resolution.h that deal with ranges.
#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <string_view>

#include "encoding/code_pages.h"
#include "model/sym_parm_trace.h"
#include "model/symbol_resolution.h"

namespace orx {

namespace {

constexpr const TraceUnit& traceUnit = symParmTraceUnit;

constexpr std::int32_t rangeCapacity = 100;  // with the NUL

std::int32_t saturatedDecimal(std::string_view digits) {
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool tooLarge = error == std::errc::result_out_of_range;
  return tooLarge ? std::numeric_limits<std::int32_t>::max() : number;
}

// Reads digits, or nothing at all, which is worth 0 in every code page.
bool readNumber(std::string_view part, bool utf8, std::int32_t& number) {
  if (part.find_first_not_of("0123456789") != std::string_view::npos) return false;
  char local[rangeCapacity] = {};
  if (utf8 && !part.empty() &&
      ConvertStringToUTF8(1, local, sizeof local, part.data(), static_cast<int>(part.size()),
                          ccsid::local) != 0) {
    return false;
  }
  number = saturatedDecimal(utf8 ? std::string_view(local) : part);
  return true;
}

bool readRange(std::string_view text, bool utf8, SubstrRange& range) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) {
    range.start = 1;
    return readNumber(text, utf8, range.length);
  }
  return readNumber(text.substr(0, colon), utf8, range.start) &&
         readNumber(text.substr(colon + 1), utf8, range.length);
}

}  // namespace

int getSubstrRange(const char* text, std::int32_t length, SubstrRange& range, int utf8Mode) {
  ORX_TRACE("getSubstrRange");
  if (text == nullptr || length < 0 || length >= rangeCapacity) return trace.exit(0);
  const std::string_view bytes(text, strnlen(text, static_cast<std::size_t>(length)));
  return trace.exit(readRange(bytes, utf8Mode != 0, range) ? 1 : 0);
}

void AddCharToString(std::string& out, const char* source, std::int32_t length,
                     const SubstrRange* range) {
  ORX_TRACE("AddCharToString");
  const std::string_view bytes(source, static_cast<std::size_t>(std::max(length, 0)));
  if (range == nullptr || range->start <= 0) {
    out += bytes;
  } else if (static_cast<std::size_t>(range->start) <= bytes.size()) {
    const auto count = static_cast<std::size_t>(std::max(range->length, 0));
    const auto first = static_cast<std::size_t>(range->start) - 1;
    out += bytes.substr(first, count == 0 ? std::string_view::npos : count);
  }
}

}  // namespace orx
