// A command line of orxrestore: words, each ended by a line feed.
#include <string>
#include <vector>

#include "driver/option_scanner.h"
#include "driver/process_args.h"
#include "restore/restore_settings.h"
#include "tests/fuzz/fuzz_files.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

class CommandLine {
 public:
  explicit CommandLine(fuzz::Input& input) : words_{"orxrestore"} {
    while (!input.isEmpty() && words_.size() < 64) words_.emplace_back(input.upTo('\n'));
    for (std::string& word : words_) pointers_.push_back(word.data());
    pointers_.push_back(nullptr);
  }

  [[nodiscard]] int count() const { return static_cast<int>(words_.size()); }
  [[nodiscard]] char* const* words() const { return pointers_.data(); }
  // Whether `text` is the end of one of the words.
  [[nodiscard]] bool owns(const char* text) const {
    for (const std::string& word : words_) {
      if (text >= word.data() && text <= word.data() + word.size()) return true;
    }
    return false;
  }
  [[nodiscard]] std::size_t letters() const {
    std::size_t letters = 0;
    for (const std::string& word : words_) letters += word.size() + 1;
    return letters;
  }

 private:
  std::vector<std::string> words_;
  std::vector<char*> pointers_;
};

void startOver() {
  options::optind = 1;
  options::optopt = 0;
  options::optarg = options::scanPosition = nullptr;
}

void scan(const CommandLine& line, const char* optionString) {
  startOver();
  std::size_t steps = 0;
  for (int option = 0; option != -1; ++steps) {
    const int before = options::optind;
    option = options::getopt(line.count(), line.words(), optionString);
    fuzz::require(steps <= line.letters(), "a scan ends");
    fuzz::require(options::optind >= before && options::optind <= line.count(),
                  "a scan goes forward and stays within the command line");
    fuzz::require(options::optarg == nullptr || line.owns(options::optarg),
                  "an argument is a part of the command line");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const bool isVerbose = input.byte() % 2 == 1;
  const CommandLine line(input);
  const fuzz::CapturedOutput output;
  scan(line, isVerbose ? "i:o:vp" : "?I:i:O:o:M:m:U:u:VvPp");
  startOver();
  restoreSettings() = {};
  const int usable = processArgs(line.count(), line.words());
  const RestoreSettings& settings = restoreSettings();
  fuzz::require(usable == 0 || !settings.databaseName.empty(), "a run has a database");
  fuzz::require(usable == 0 || settings.mode == modeUseCount || !settings.backupFileName.empty(),
                "a run that needs a backup has one");
  restoreSettings() = {};
  return 0;
}
