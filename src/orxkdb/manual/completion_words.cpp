#include "orxkdb/manual/completion.h"

namespace orx::orxkdb::shell {

std::string quoted(std::string_view text) {
  std::string word = "'";
  for (const char character : text) {
    if (character == '\'') {
      word += "'\\''";
    } else {
      word += character;
    }
  }
  return word + "'";
}

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text.append(text.empty() ? "" : " ").append(word);
  return text;
}

std::vector<std::string> namesOf(const std::vector<CommandOption>& options) {
  std::vector<std::string> names;
  for (const CommandOption& option : options) {
    names.insert(names.end(), option.names.begin(), option.names.end());
  }
  return names;
}

std::vector<std::string> namesOf(const std::vector<CommandTree>& commands) {
  std::vector<std::string> names;
  names.reserve(commands.size());
  for (const CommandTree& command : commands) names.push_back(command.name);
  return names;
}

}  // namespace orx::orxkdb::shell
