// What every subcommand has in common. A subcommand NAME lives in cmd_NAME.h and cmd_NAME.cpp: a
// struct of its options, a function that does its work, and a function of the type Registration
// that describes it to the command line. commands.cpp lists them all.
#pragma once

#include <functional>

#include "orxkdb/result.h"

namespace CLI {
class App;
}

namespace orx::orxkdb {

// The work of the subcommand that the command line names, ready to run.
using Action = std::function<Result()>;

// Adds the subcommand to `program`; when the command line names it, its work goes into `action`.
// Both outlive the parsing.
using Registration = void(CLI::App& program, Action& action);

}  // namespace orx::orxkdb
