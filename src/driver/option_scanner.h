// The option scanner: reads a command line option by option.
//
// An option is "-" and a letter; options without argument may share one word (-vp), an argument
// follows in the same word (-ifile) or is the next word, when that does not begin with "-". The
// scan ends at the first word that is no option, which stays unconsumed, and at "-" and "--",
// which are consumed.
#pragma once

#include <cstdint>

namespace orx::options {

// The state of the scan, one for the process and never reset by the scanner itself.
extern std::int32_t optind;       // index of the next word to examine, 1 at start
extern const char* optarg;        // argument of the option just returned, or nullptr
extern std::int32_t optopt;       // the character that the scanner's messages report
extern const char* scanPosition;  // the option just returned, when its word may hold another

// Returns the next option of argv[1] to argv[argc - 1], '?' for "-?" and for every error, or -1
// at the end of the options. `optionString` lists the letters, each with a ":" behind it when it
// takes an argument. Errors are printed: IDS_GETOPT_FIRST, _SECOND and _THIRD. All calls of a scan
// get the same words; optarg points into them.
[[nodiscard]] int getopt(int argc, char* const argv[], const char* optionString);

}  // namespace orx::options
