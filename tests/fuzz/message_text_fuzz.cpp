// A text of a message bundle: when the check lets it through, printing with it is safe.
#include <array>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>

#include "messages/message_format.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

// Prints and returns how many characters that gives; the text is checked by its caller.
template <typename... Arguments>
int printedLength(const std::string& format, Arguments... arguments) {
  return std::snprintf(nullptr, 0, format.c_str(), arguments...);
}

#pragma GCC diagnostic pop

// What an accepted format can print at most: 999 digits or blanks for each conversion.
void requireLength(int length, const std::string& format) {
  constexpr std::size_t mostOfConversion = 2048;
  fuzz::require(
      length >= 0 && static_cast<std::size_t>(length) <= (format.size() + 2) * mostOfConversion,
      "an accepted text prints a bounded line");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const int number = static_cast<int>(input.number());
  std::string format(input.rest());
  format.resize(std::strlen(format.c_str()));
  // Exactly as long as it is told to be: what reads past it is seen.
  const std::string text(16, 'x');
  const auto taken = [&format](auto... kinds) {
    const std::array<MessageArgument, sizeof...(kinds)> list{kinds...};
    return argumentsTaken(format, list);
  };
  if (taken()) requireLength(printedLength(format), format);
  if (taken(MessageArgument::number)) requireLength(printedLength(format, number), format);
  if (taken(MessageArgument::text)) requireLength(printedLength(format, text.c_str()), format);
  if (taken(MessageArgument::text, MessageArgument::text)) {
    requireLength(printedLength(format, text.c_str(), text.c_str()), format);
  }
  const auto both = taken(MessageArgument::number, MessageArgument::text);
  if (both) requireLength(printedLength(format, number, text.c_str()), format);
  if (both == std::optional<std::size_t>(0)) {
    fuzz::require(taken().has_value(), "a text that takes nothing needs nothing");
  }
  return 0;
}
