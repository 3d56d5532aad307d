// Printing of one message on standard output:
//
//   printMessage("IDS_MAIN_FOURTH", deletedCount);
//
// Key and arguments are checked against messageSignatures while compiling. A missing bundle or
// key, or a text that may not be used as a format with these arguments, prints nothing: a message
// never changes what the program does. A text carries its own line end.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <type_traits>

#include "messages/message_bundle.h"
#include "messages/message_keys.h"
#include "platform/run_progress.h"

namespace orx {

// A key together with the argument types that its message is printed with.
template <typename... Arguments>
class MessageKey {
 public:
  // NOLINTNEXTLINE(google-explicit-constructor): a key is written as its plain text
  consteval MessageKey(const char* key) : index_(findMessage(key)) {
    if (index_ == messageSignatures.size()) throw "no such message";
    if (signature().count != sizeof...(Arguments)) throw "wrong number of arguments";
    [[maybe_unused]] std::size_t i = 0;
    if (!(... && (kindOf<Arguments>() == signature().kinds[i++]))) throw "wrong argument type";
  }

  [[nodiscard]] constexpr const MessageSignature& signature() const {
    return messageSignatures[index_];
  }

 private:
  template <typename Argument>
  static consteval MessageArgument kindOf() {
    constexpr bool isNumber = std::same_as<Argument, std::int32_t>;
    static_assert(isNumber || std::convertible_to<Argument, const char*> ||
                      std::same_as<Argument, std::string>,
                  "a message takes std::int32_t, const char* or std::string");
    return isNumber ? MessageArgument::number : MessageArgument::text;
  }

  std::size_t index_;
};

namespace detail {
inline std::int32_t printable(std::int32_t value) {
  return value;
}
inline const char* printable(const char* text) {
  return text;
}
inline const char* printable(const std::string& text) {
  return text.c_str();
}
}  // namespace detail

// The text of `signature` in `bundle`, safe as a format with its arguments; nullptr when there is
// none, or none that is safe. It lives as long as MessageBundle::getMessage says.
[[nodiscard]] const char* messageFormat(MessageBundle& bundle, const MessageSignature& signature);

// The bundle in the current directory, opened anew: every file of it is read and checked, so
// whoever prints several messages at once keeps one. Without a bundle it is not open, and has no
// texts.
class MessageCatalogue {
 public:
  MessageCatalogue();
  [[nodiscard]] bool isOpen() const { return isOpen_; }
  [[nodiscard]] MessageBundle& bundle() { return bundle_; }

 private:
  MessageBundle bundle_;
  bool isOpen_;
};

// Prints one message from a catalogue that the caller holds for several.
template <typename... Arguments>
void printMessageFrom(MessageCatalogue& catalogue,
                      MessageKey<std::type_identity_t<Arguments>...> key,
                      const Arguments&... arguments) {
  const char* format = messageFormat(catalogue.bundle(), key.signature());
  if (format == nullptr) return;
  const OutputTurn turn;
  (void)std::printf(format, detail::printable(arguments)...);
}

template <typename... Arguments>
void printMessage(MessageKey<std::type_identity_t<Arguments>...> key,
                  const Arguments&... arguments) {
  MessageCatalogue catalogue;
  printMessageFrom(catalogue, key, arguments...);
}

}  // namespace orx
