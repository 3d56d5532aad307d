// A text of a message bundle: when the check lets it through, printing with it is safe.
#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "messages/message_format.h"
#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {
namespace {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

// Prints a text that was accepted for the arguments: at most 999 digits or blanks for each of them.
template <typename... Arguments>
void print(const std::string& format, Arguments... arguments) {
  constexpr std::size_t mostOfConversion = 2048;
  const int length = std::snprintf(nullptr, 0, format.c_str(), arguments...);
  require(length >= 0 && static_cast<std::size_t>(length) <= (format.size() + 2) * mostOfConversion,
          "an accepted text prints a bounded line");
}

#pragma GCC diagnostic pop

const Registration target("message_text", [](Input& input) {
  const int number = static_cast<int>(input.number());
  std::string format(input.rest());
  format.resize(std::strlen(format.c_str()));
  // Exactly as long as it is told to be: what reads past it is seen.
  const std::string text(16, 'x');
  const auto taken = [&format](auto... kinds) {
    const std::array<MessageArgument, sizeof...(kinds)> list{kinds...};
    return argumentsTaken(format, list);
  };
  constexpr auto n = MessageArgument::number;
  constexpr auto t = MessageArgument::text;
  if (taken()) print(format);
  if (taken(n)) print(format, number);
  if (taken(t)) print(format, text.c_str());
  if (taken(t, t)) print(format, text.c_str(), text.c_str());
  const auto both = taken(n, t);
  if (both) print(format, number, text.c_str());
  if (both == std::optional<std::size_t>(0)) {
    require(taken().has_value(), "a text that takes nothing needs nothing");
  }
});

}  // namespace
}  // namespace orx::fuzz
