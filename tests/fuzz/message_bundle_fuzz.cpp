// A compiled resource file of any bytes: refused, or one that every text can be taken from.
#include <unicode/uclean.h>

#include "messages/bundle_files.h"
#include "messages/message_bundle.h"
#include "messages/message_keys.h"
#include "tests/fuzz/fuzz_target.h"
#include "tests/support/temp_dir.h"

namespace orx::fuzz {
namespace {

// The library keeps every file that it has opened mapped under its path, so each input has a new
// one, and now and then all are given up.
const Registration target("message_bundle", [](Input& input) {
  static std::uint64_t number = 0;
  constexpr std::uint64_t mostKept = 1000;
  if (number++ % mostKept == 0) u_cleanup();
  const test::TempDir place;
  const test::WorkingDirectory inPlace(place.path());
  std::filesystem::create_directory(bundleName);
  test::writeFile(place / bundleName / "root.res", input.rest());
  MessageBundle bundle;
  if (bundle.open(bundleName) != 0) return;
  for (const MessageSignature& signature : messageSignatures) {
    const char* text = bundle.getMessage(signature.key);
    if (text != nullptr) require(*text != '\0', "an empty text is none");
  }
  for (const char* key : {"", "SHORT", "LIST", "KEY7"}) (void)bundle.getMessage(key);
});

}  // namespace
}  // namespace orx::fuzz
