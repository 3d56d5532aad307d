#include "orxkdb/keys/handle_number.h"

#include <algorithm>

namespace orx::orxkdb {

namespace {

bool isDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F');
}

}  // namespace

CMConfigHandle handleOf(HandleNumber number) {
  HandleBytes bytes;
  storeBE32(bytes.data(), static_cast<std::uint32_t>(number >> 32));
  storeBE32(bytes.data() + 4, static_cast<std::uint32_t>(number));
  return CMConfigHandle(bytes);
}

HandleNumber readBack(HandleNumber number) {
  CMConfigHandle handle;
  (void)handle.importHndl(handleOf(number).exportText().view());
  return numberOf(handle.bytes());
}

std::optional<HandleNumber> readHandleText(std::string_view text) {
  CMConfigHandle handle;
  if (text.starts_with('<')) {
    if (text.find('>') != text.size() - 1 || handle.importHndl(text) == 0) return std::nullopt;
  } else {
    const bool isHex =
        text.size() == 2 * handleSize && std::all_of(text.begin(), text.end(), isDigit);
    if (!isHex) return std::nullopt;
    handle.setFromExternChar(text);
  }
  return numberOf(handle.bytes());
}

std::string exportedForm(HandleNumber number) {
  return handleOf(number).exportText().c_str();
}

}  // namespace orx::orxkdb
