#include "orxkdb/manual/restore_help.h"

#include <unicode/locid.h>

#include <array>

#include "messages/bundle_files.h"
#include "messages/message_bundle.h"
#include "orxkdb/manual/help_text.h"

namespace orx::orxkdb {

namespace {

constexpr const char* descriptionKey = "IDS_HELP_1";
constexpr const char* synopsisKey = "IDS_HELP_2";
constexpr std::array optionKeys{"IDS_HELP_3", "IDS_HELP_4", "IDS_HELP_5",
                                "IDS_HELP_6", "IDS_HELP_7", "IDS_HELP_8"};
constexpr std::array noteKeys{"IDS_HELP_11", "IDS_HELP_13", "IDS_HELP_14"};
constexpr std::size_t deepestIndent = 4;  // of a line that begins something

Result textOf(MessageBundle& bundle, const char* key, std::string& text) {
  const char* const found = bundle.getMessage(key);
  if (found == nullptr) {
    return fail(exitNotAsExpected, std::string("the messages lack the text ") + key, bundle.path(),
                "write them again with \"orxkdb messages\"");
  }
  text = found;
  return {};
}

// "-o <database-name>"
CommandOption optionOf(const std::string& term, const std::string& words) {
  CommandOption option;
  const auto end = term.find(' ');
  option.names.push_back(term.substr(0, end));
  if (end != std::string::npos) option.value = term.substr(end + 1);
  option.description = words;
  option.kind = option.value.empty() ? ValueKind::none : ValueKind::file;
  return option;
}

// Lines that begin with an option, lines that go on with it, and remarks.
void readOptions(const std::string& text, CommandTree& tree) {
  for (const std::string& line : linesOf(text)) {
    const std::string words(withoutIndent(line));
    if (words.starts_with('-')) {
      const auto [term, description] = termAndWords(words);
      tree.options.push_back(optionOf(term, description));
    } else if (line.size() - words.size() > deepestIndent && !tree.options.empty()) {
      tree.options.back().description.append(" ").append(words);
    } else {
      tree.footer.append(words).append("\n\n");
    }
  }
}

// "Replace:  orxrestore -i ..."
void readSynopses(const std::string& text, CommandTree& tree) {
  for (const std::string& line : linesOf(text)) {
    const auto begin = line.find(tree.name + " ");
    if (begin == std::string::npos) continue;
    tree.synopses.push_back(line.substr(begin + tree.name.size() + 1));
  }
}

Result readTexts(MessageBundle& bundle, CommandTree& tree) {
  if (Result result = textOf(bundle, descriptionKey, tree.description); !result.ok()) return result;
  std::string text;
  if (Result result = textOf(bundle, synopsisKey, text); !result.ok()) return result;
  readSynopses(text, tree);
  for (const char* key : optionKeys) {
    if (Result result = textOf(bundle, key, text); !result.ok()) return result;
    readOptions(text, tree);
  }
  for (const char* key : noteKeys) {
    if (Result result = textOf(bundle, key, text); !result.ok()) return result;
    tree.footer.append(text);
  }
  return {};
}

}  // namespace

Result readRestoreHelp(CommandTree& tree) {
  UErrorCode ignored = U_ZERO_ERROR;
  icu::Locale::setDefault(icu::Locale::getRoot(), ignored);
  MessageBundle bundle;
  if (bundle.open(bundleName) != 0) {
    return fail(exitNotOpened, "there are no messages here", bundleName,
                "write them with \"orxkdb messages\" and run this again");
  }
  tree.name = "orxrestore";
  Result result = readTexts(bundle, tree);
  tree.description = helpParagraphs(tree.description).front().flowing();
  return result;
}

}  // namespace orx::orxkdb
