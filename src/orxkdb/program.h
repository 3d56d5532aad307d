// orxkdb as a whole: reads the command line, runs the subcommand, reports its failure.
#pragma once

namespace orx::orxkdb {

// Returns the exit code (exit_codes.h). A failure is one line on standard error, "orxkdb: what,
// where, what to do next", and with --json a document as well, unless the subcommand has written
// one. When memory runs out that is exitFailed.
[[nodiscard]] int run(int argc, const char* const argv[]);

}  // namespace orx::orxkdb
