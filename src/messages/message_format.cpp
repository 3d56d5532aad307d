#include "messages/message_format.h"

#include <algorithm>

namespace orx {

namespace {

constexpr std::size_t maxDigits = 3;

struct Conversion {
  std::string_view flags;
  std::string_view width;
  std::optional<std::string_view> precision;
  char letter = '\0';
};

bool isOneOf(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}

// Takes the longest prefix of `rest` that is made of characters of `set`.
std::string_view takeWhile(std::string_view& rest, std::string_view set) {
  const auto length = std::min(rest.find_first_not_of(set), rest.size());
  const auto taken = rest.substr(0, length);
  rest.remove_prefix(length);
  return taken;
}

// Takes what follows a "%"; the letter is 0 at the end of the format.
Conversion takeConversion(std::string_view& rest) {
  constexpr std::string_view digits = "0123456789";
  Conversion conversion;
  conversion.flags = takeWhile(rest, "-+ #0");
  conversion.width = takeWhile(rest, digits);
  if (rest.starts_with('.')) {
    rest.remove_prefix(1);
    conversion.precision = takeWhile(rest, digits);
  }
  if (!rest.empty()) {
    conversion.letter = rest.front();
    rest.remove_prefix(1);
  }
  return conversion;
}

std::string_view allowedFlags(char letter) {
  if (isOneOf(letter, "diu")) return "-+ 0";
  if (isOneOf(letter, "xXo")) return "-+ #0";
  return "-";
}

std::optional<MessageArgument> argumentOf(char letter) {
  if (isOneOf(letter, "dicuxXo")) return MessageArgument::number;
  if (letter == 's') return MessageArgument::text;
  return std::nullopt;
}

bool isDefined(const Conversion& conversion) {
  return conversion.flags.find_first_not_of(allowedFlags(conversion.letter)) ==
             std::string_view::npos &&
         conversion.width.size() <= maxDigits &&
         conversion.precision.value_or("").size() <= maxDigits &&
         !(conversion.letter == 'c' && conversion.precision);
}

}  // namespace

std::optional<std::size_t> argumentsTaken(std::string_view format,
                                          std::span<const MessageArgument> arguments) {
  std::size_t taken = 0;
  while (true) {
    const auto percent = format.find('%');
    if (percent == std::string_view::npos) return taken;
    format.remove_prefix(percent + 1);
    if (format.starts_with('%')) {
      format.remove_prefix(1);
      continue;
    }
    const Conversion conversion = takeConversion(format);
    if (taken == arguments.size() || argumentOf(conversion.letter) != arguments[taken] ||
        !isDefined(conversion)) {
      return std::nullopt;
    }
    ++taken;
  }
}

}  // namespace orx
