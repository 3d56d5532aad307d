// A compiled resource file of any bytes: refused, or one that every text can be taken from.
#include <unicode/uclean.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "messages/bundle_files.h"
#include "messages/message_bundle.h"
#include "messages/message_keys.h"
#include "tests/fuzz/fuzz_files.h"
#include "tests/fuzz/fuzz_target.h"

namespace {

using namespace orx;

// The library keeps every file that it has opened mapped under its path, so each input has a new
// one, and now and then all are given up.
class BundlePlace {
 public:
  explicit BundlePlace(std::string_view bytes) : before_(std::filesystem::current_path()) {
    static const fuzz::Scratch scratch;
    static std::uint64_t number = 0;
    if (number % mostKept == 0) u_cleanup();
    directory_ = scratch.file(std::to_string(number++));
    std::filesystem::create_directories(directory_ + "/" + bundleName);
    fuzz::writeFile(directory_ + "/" + bundleName + "/root.res", bytes);
    std::filesystem::current_path(directory_);
  }
  BundlePlace(const BundlePlace&) = delete;
  BundlePlace& operator=(const BundlePlace&) = delete;
  ~BundlePlace() {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(directory_);
  }

 private:
  static constexpr std::uint64_t mostKept = 1000;

  std::filesystem::path before_;
  std::string directory_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const BundlePlace place(input.rest());
  MessageBundle bundle;
  if (bundle.open(bundleName) != 0) return 0;
  for (const MessageSignature& signature : messageSignatures) {
    const char* text = bundle.getMessage(signature.key);
    if (text != nullptr) fuzz::require(*text != '\0', "an empty text is none");
  }
  for (const char* key : {"", "SHORT", "LIST", "KEY7"}) (void)bundle.getMessage(key);
  return 0;
}
