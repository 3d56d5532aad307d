#include "tests/fuzz/fuzz_files.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/fuzz/fuzz_target.h"

namespace orx::fuzz {

Scratch::Scratch() {
  path_ = (std::filesystem::temp_directory_path() / "orx-fuzz.XXXXXX").string();
  require(::mkdtemp(path_.data()) != nullptr, "there is a place for scratch files");
}

Scratch::~Scratch() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

void Scratch::empty() const {
  for (const auto& entry : std::filesystem::directory_iterator(path_)) {
    std::filesystem::remove_all(entry.path());
  }
}

void writeFile(const std::string& file, std::string_view bytes) {
  const UniqueFd fd = openFile(file, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  require(fd.valid() && writeAll(fd.get(), bytes) == 0, "a scratch file can be written");
}

std::string readFile(const std::string& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

bool exists(const std::string& file) {
  return std::filesystem::exists(std::filesystem::symlink_status(file));
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
  return readFile(taken_.path());
}

}  // namespace orx::fuzz
