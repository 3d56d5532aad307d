#include "messages/message_print.h"

#include "messages/bundle_files.h"

namespace orx {

MessageCatalogue::MessageCatalogue() : isOpen_(bundle_.open(bundleName) == 0) {}

const char* messageFormat(MessageBundle& bundle, const MessageSignature& signature) {
  const char* text = bundle.getMessage(signature.key);
  if (text == nullptr || !argumentsTaken(text, signature.arguments())) return nullptr;
  return text;
}

}  // namespace orx
