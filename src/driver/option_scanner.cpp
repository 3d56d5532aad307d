#include "driver/option_scanner.h"

#include <cstring>
#include <string>
#include <string_view>

#include "messages/message_print.h"
#include "messages/trace_unit.h"

namespace orx::options {

constinit std::int32_t optind = 1;
constinit const char* optarg = nullptr;
constinit std::int32_t optopt = 0;
constinit const char* scanPosition = nullptr;

namespace {

constexpr int endOfOptions = -1;
constexpr int failed = '?';

std::int32_t codeOf(char character) {
  return static_cast<unsigned char>(character);
}

// The next character of a word that holds several options, or nullptr.
const char* nextInWord() {
  if (scanPosition == nullptr) return nullptr;
  ++scanPosition;
  if (*scanPosition == '\0') scanPosition = nullptr;
  return scanPosition;
}

// The option letter of the next word, or nullptr when that ends the scan.
const char* nextWord(int argc, char* const argv[]) {
  if (optind >= argc) return nullptr;
  const char* word = argv[optind];
  optopt = codeOf(word[0]);
  if (word[0] != '-') {
    optarg = nullptr;
    printMessage("IDS_GETOPT_FIRST", optopt);
    return nullptr;
  }
  ++optind;
  const std::string_view text = word;
  if (text == "-" || text == "--") {
    optarg = nullptr;
    return nullptr;
  }
  optopt = codeOf(word[1]);
  return word + 1;
}

// The argument of the option at `letter`, or nullptr when the command line lacks it.
const char* takeArgument(const char* letter, int argc, char* const argv[]) {
  if (letter[1] != '\0') return letter + 1;
  if (optind < argc && argv[optind][0] != '-') return argv[optind++];
  return nullptr;
}

int acceptWithArgument(const char* letter, int argc, char* const argv[]) {
  scanPosition = nullptr;
  optarg = takeArgument(letter, argc, argv);
  if (optarg != nullptr) return codeOf(*letter);
  printMessage("IDS_GETOPT_THIRD", std::string(1, *letter));
  return failed;
}

int accept(const char* letter) {
  optarg = nullptr;
  scanPosition = letter;
  return codeOf(*letter);
}

int refuseUnknown(char letter) {
  optarg = nullptr;
  scanPosition = nullptr;
  optopt = codeOf(letter);
  printMessage("IDS_GETOPT_SECOND", optopt);
  return failed;
}

}  // namespace

int getopt(int argc, char* const argv[], const char* optionString) {
  ORX_TRACE("getopt");
  optopt = 0;
  const char* letter = nextInWord();
  if (letter == nullptr) letter = nextWord(argc, argv);
  if (letter == nullptr) return trace.exit(endOfOptions);
  // No option, though the option string holds it. In the middle of a word the scan goes on
  // behind it; at the start of one there is no position, and the rest of the word is skipped.
  if (*letter == ':') return trace.exit(failed);
  const char* known = std::strchr(optionString, *letter);
  if (known == nullptr) return trace.exit(refuseUnknown(*letter));
  return trace.exit(known[1] == ':' ? acceptWithArgument(letter, argc, argv) : accept(letter));
}

}  // namespace orx::options
