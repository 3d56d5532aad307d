#include "tests/fuzz/fuzz_target.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "platform/bytes.h"
#include "tests/support/temp_dir.h"

// Of a program with one target; what libFuzzer calls.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orx::fuzz::Input input({static_cast<const char*>(static_cast<const void*>(data)), size});
  orx::fuzz::targets().begin()->second(input);
  return 0;
}

namespace orx::fuzz {

void require(bool holds, std::string_view claim) {
  if (holds) return;
  (void)std::fprintf(stderr, "does not hold: %.*s\n", static_cast<int>(claim.size()), claim.data());
  std::abort();
}

std::uint8_t Input::byte() {
  const std::string_view taken = take(1);
  return taken.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(taken.front());
}

std::uint32_t Input::number() {
  std::uint8_t bytes[4];
  for (std::uint8_t& next : bytes) next = byte();
  return loadLE32(bytes);
}

std::string_view Input::take(std::size_t size) {
  const std::string_view taken = rest_.substr(0, size);
  rest_.remove_prefix(taken.size());
  return taken;
}

std::string_view Input::upTo(char mark) {
  const std::string_view taken = take(rest_.find(mark));
  (void)take(1);
  return taken;
}

MemoryFile::MemoryFile(std::string_view bytes) : fd_(::memfd_create("fuzz", MFD_CLOEXEC)) {
  require(fd_.valid() && writeAll(fd_.get(), bytes) == 0, "a file in memory can be written");
  (void)::lseek(fd_.get(), 0, SEEK_SET);
}

std::string MemoryFile::path() const {
  return "/proc/self/fd/" + std::to_string(fd_.get());
}

CapturedOutput::CapturedOutput() {
  (void)std::fflush(stdout);
  before_ = UniqueFd(::dup(STDOUT_FILENO));
  require(before_.valid() && ::dup2(taken_.fd(), STDOUT_FILENO) >= 0,
          "standard output can be captured");
}

CapturedOutput::~CapturedOutput() {
  (void)std::fflush(stdout);
  (void)::dup2(before_.get(), STDOUT_FILENO);
}

std::string CapturedOutput::text() const {
  (void)std::fflush(stdout);
  return test::readFile(taken_.path());
}

std::map<std::string, Target>& targets() {
  static std::map<std::string, Target> all;
  return all;
}

void replay(Target target, const std::vector<std::string>& files) {
  for (const std::string& file : files) {
    (void)std::fprintf(stderr, "%s\n", file.c_str());
    require(std::filesystem::exists(file), "an input is there");
    const std::string bytes = test::readFile(file);
    Input input(bytes);
    target(input);
  }
}

}  // namespace orx::fuzz
