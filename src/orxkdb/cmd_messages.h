// orxkdb messages: the message bundle into a directory.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct MessagesOptions {
  std::string directory = ".";
  bool json = false;
};

// As putBundle (bundle_writer.h).
Result messages(const MessagesOptions& options);

Registration addMessages;

}  // namespace orx::orxkdb
