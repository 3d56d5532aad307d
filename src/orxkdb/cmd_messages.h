// orxkdb messages: the message bundle into a directory.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct MessagesOptions {
  std::string directory = ".";
  bool json = false;
};

Result messages(const MessagesOptions& options);

Registration addMessages;

}  // namespace orx::orxkdb
