#include "orxkdb/cmd_messages.h"

#include <memory>
#include <nlohmann/json.hpp>

#include "messages/bundle_files.h"
#include "orxkdb/output/bundle_writer.h"
#include "orxkdb/output/json_document.h"
#include "orxkdb/output/output.h"

namespace orx::orxkdb {

namespace {

nlohmann::ordered_json jsonOf(const std::string& bundle) {
  return jsonDocument("messages", {{"messages", bundle}, {"messageFiles", bundleFiles().size()}});
}

std::string textOf(const std::string& bundle) {
  return bundle + ": " + std::to_string(bundleFiles().size()) + " message files written";
}

}  // namespace

Result messages(const MessagesOptions& options) {
  if (Result result = putBundle(options.directory); !result.ok()) return result;
  const std::string bundle = options.directory + "/" + bundleName;
  return tellOutcome(options.json, jsonOf(bundle), textOf(bundle));
}

void addMessages(CommandLine& line) {
  auto options = std::make_shared<MessagesOptions>();
  Command command(line, "messages", "Write the message files that orxrestore prints from",
                  [options] { return messages(*options); });
  command.optionalArgument("DIR", options->directory,
                           "Directory of the database; without it the current directory");
  command.json(options->json);
  command.footer(
      "The files go into DIR/PRESTORE_restore, one for each language; those that are there are\n"
      "replaced. Nothing is written where a link, or a file that holds no messages, has the name\n"
      "of one. orxrestore finds them when it runs in DIR.\n\n"
      "Examples:\n"
      "  orxkdb messages\n"
      "  orxkdb messages --json /srv/tdv");
}

}  // namespace orx::orxkdb
