// Every message of the programs: its key in the bundle and the arguments that its text is printed
// with. The texts are in messages/bundle, one file for each language.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "messages/message_format.h"

namespace orx {

struct MessageSignature {
  const char* key;
  std::array<MessageArgument, 2> kinds;
  std::size_t count;

  [[nodiscard]] constexpr std::span<const MessageArgument> arguments() const {
    return std::span(kinds).first(count);
  }
};

namespace detail {
template <typename... Kinds>
constexpr MessageSignature message(const char* key, Kinds... kinds) {
  return {key, {kinds...}, sizeof...(kinds)};
}
inline constexpr auto number = MessageArgument::number;
inline constexpr auto text = MessageArgument::text;
}  // namespace detail

inline constexpr std::array messageSignatures{
    detail::message("IDS_HELLOFN_FIRST", detail::text, detail::text),  // build date, build time
    detail::message("IDS_PROCESSARGS_FIRST", detail::text),            // backup file name
    detail::message("IDS_PROCESSARGS_SECOND", detail::text),           // database name
    detail::message("IDS_PROCESSARGS_THIRD"),
    detail::message("IDS_PROCESSARGS_FIFTH"),
    detail::message("IDS_PROCESSARGS_SIXTH"),
    detail::message("IDS_GETOPT_FIRST", detail::number),   // first character of the word
    detail::message("IDS_GETOPT_SECOND", detail::number),  // option letter
    detail::message("IDS_GETOPT_THIRD", detail::text),     // option letter
    detail::message("IDS_MAIN_FIRST"),
    detail::message("IDS_MAIN_SECOND", detail::text),     // backup file name
    detail::message("IDS_MAIN_THIRD", detail::text),      // database name
    detail::message("IDS_MAIN_FOURTH", detail::number),   // records deleted so far
    detail::message("IDS_MAIN_FIFTH", detail::number),    // records deleted
    detail::message("IDS_MAIN_SIXTH", detail::number),    // return code
    detail::message("IDS_MAIN_SEVENTH", detail::number),  // records added so far
    detail::message("IDS_MAIN_EIGHTH", detail::number),   // records added
    detail::message("IDS_HELP_1"),
    detail::message("IDS_HELP_2"),
    detail::message("IDS_HELP_3"),
    detail::message("IDS_HELP_4"),
    detail::message("IDS_HELP_5"),
    detail::message("IDS_HELP_6"),
    detail::message("IDS_HELP_7"),
    detail::message("IDS_HELP_8"),
    detail::message("IDS_HELP_11"),
    detail::message("IDS_HELP_13"),
    detail::message("IDS_HELP_14"),
};

// The index of the message with this key in messageSignatures, or its size when there is none.
[[nodiscard]] constexpr std::size_t findMessage(std::string_view key) {
  std::size_t i = 0;
  while (i < messageSignatures.size() && messageSignatures[i].key != key) ++i;
  return i;
}

}  // namespace orx
