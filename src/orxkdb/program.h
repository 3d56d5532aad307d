// orxkdb as a whole: reads the command line, runs the subcommand, reports its failure.
#pragma once

namespace orx::orxkdb {

// The exit code (exit_codes.h). A failure is one line on standard error, "orxkdb: what, where, what
// to do next".
[[nodiscard]] int run(int argc, const char* const argv[]);

}  // namespace orx::orxkdb
