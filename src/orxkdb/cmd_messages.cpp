#include "orxkdb/cmd_messages.h"

#include <CLI/CLI.hpp>
#include <memory>

#include "messages/bundle_files.h"
#include "orxkdb/bundle_writer.h"
#include "orxkdb/output.h"

namespace orx::orxkdb {

Result messages(const MessagesOptions& options) {
  if (Result result = putBundle(options.directory); !result.ok()) return result;
  say(options.directory + "/" + bundleName + ": " + std::to_string(bundleFiles().size()) +
      " message files written\n");
  return {};
}

void addMessages(CLI::App& program, Action& action) {
  auto options = std::make_shared<MessagesOptions>();
  CLI::App* const command =
      program.add_subcommand("messages", "Write the message files that orxrestore prints from");
  command
      ->add_option("DIR", options->directory,
                   "Directory of the database; without it the current directory")
      ->type_name("");
  command->footer(
      "The files go into DIR/PRESTORE_restore, one for each language; those that are there are\n"
      "replaced. orxrestore finds them when it runs in DIR.\n\n"
      "Examples:\n"
      "  orxkdb messages\n"
      "  orxkdb messages /srv/tdv");
  command->callback([options, &action] { action = [options] { return messages(*options); }; });
}

}  // namespace orx::orxkdb
