// The option --limit of the subcommands that show lists.
#pragma once

#include <cstddef>
#include <string>

namespace CLI {
class App;
}

namespace orx::orxkdb {

// `limit` holds the default, 0 stands for all; it outlives the parsing.
void addLimit(CLI::App& command, std::size_t& limit, const std::string& description);

}  // namespace orx::orxkdb
