// orxkdb messages: the message bundle into a directory.
#pragma once

#include <string>

#include "orxkdb/command.h"

namespace orx::orxkdb {

struct MessagesOptions {
  std::string directory = ".";
};

Result messages(const MessagesOptions& options);

Registration addMessages;

}  // namespace orx::orxkdb
