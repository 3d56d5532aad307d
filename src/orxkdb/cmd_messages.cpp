#include "orxkdb/cmd_messages.h"

#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "messages/bundle_files.h"
#include "orxkdb/bundle_writer.h"
#include "orxkdb/json_document.h"
#include "orxkdb/output.h"

namespace orx::orxkdb {

namespace {

nlohmann::ordered_json jsonOf(const std::string& bundle) {
  return jsonDocument("messages", {{"messages", bundle}, {"messageFiles", bundleFiles().size()}});
}

std::string textOf(const std::string& bundle) {
  return bundle + ": " + std::to_string(bundleFiles().size()) + " message files written\n";
}

}  // namespace

Result messages(const MessagesOptions& options) {
  if (Result result = putBundle(options.directory); !result.ok()) return result;
  const std::string bundle = options.directory + "/" + bundleName;
  return tellOutcome(options.json, jsonOf(bundle), textOf(bundle));
}

void addMessages(CLI::App& program, Action& action) {
  auto options = std::make_shared<MessagesOptions>();
  CLI::App* const command =
      program.add_subcommand("messages", "Write the message files that orxrestore prints from");
  command
      ->add_option("DIR", options->directory,
                   "Directory of the database; without it the current directory")
      ->type_name("");
  addJson(*command, options->json);
  command->footer(
      "The files go into DIR/PRESTORE_restore, one for each language; those that are there are\n"
      "replaced. orxrestore finds them when it runs in DIR.\n\n"
      "Examples:\n"
      "  orxkdb messages\n"
      "  orxkdb messages --json /srv/tdv");
  command->callback([options, &action] { action = [options] { return messages(*options); }; });
}

}  // namespace orx::orxkdb
