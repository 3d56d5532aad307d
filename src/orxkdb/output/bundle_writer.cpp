#include "orxkdb/output/bundle_writer.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include "messages/bundle_files.h"
#include "platform/atomic_file.h"
#include "platform/file.h"
#include "terminal/file_words.h"

namespace orx::orxkdb {

namespace {

std::string_view textOf(const BundleFile& file) {
  return {static_cast<const char*>(static_cast<const void*>(file.bytes.data())), file.bytes.size()};
}

// What every compiled bundle has in its head, whoever compiled it.
constexpr std::size_t magicAt = 2, magicSize = 2;
constexpr std::size_t formatAt = 12, formatSize = 4;
using Head = std::array<std::uint8_t, formatAt + formatSize>;

bool beginsAlike(const Head& head, const BundleFile& ours) {
  const auto isAlike = [&](std::size_t at, std::size_t size) {
    return std::ranges::equal(std::span(head).subspan(at, size), ours.bytes.subspan(at, size));
  };
  return isAlike(magicAt, magicSize) && isAlike(formatAt, formatSize);
}

bool isOurs(int file, const BundleFile& ours) {
  Head head{};
  const ssize_t size = readAt(file, head.data(), head.size(), 0);
  return size == 0 || (size == static_cast<ssize_t>(head.size()) && beginsAlike(head, ours));
}

Result foreignFile(const std::string& path) {
  return fail(
      exitNotOpened, "something else than messages has the name of a message file",
      absolutePath(path),
      "look at it with \"ls -l " + shellWord(path) + "\" and move it away; nothing was written");
}

// Nothing but messages is lost with a file that may be replaced; an empty one holds nothing.
Result checkReplaceable(const std::string& path, const BundleFile& ours) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) return {};  // whatever it is, the writing will tell
  if (!S_ISREG(status.st_mode)) return foreignFile(path);
  const UniqueFd file = openFile(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  if (file.valid()) return isOurs(file.get(), ours) ? Result() : foreignFile(path);
  return fileFailure(exitNotOpened, "a message file cannot be looked at", path, errno);
}

Result writeFailure(const std::string& path, int error) {
  if (error != EEXIST) {
    return fileFailure(exitFailed, "a file of the messages cannot be written", path, error);
  }
  const std::string first = path + std::string(unpublishedSuffix);
  return fail(exitNotAsExpected, "a file stands where the output is written first",
              absolutePath(first),
              "look at it with \"ls -l " + shellWord(first) + "\" and move it away");
}

Result writeFile(const std::string& path, std::string_view bytes) {
  AtomicFile file;
  int error = file.openUnresolved(path);
  if (error == 0) error = file.write(bytes);
  if (error == 0) error = file.publish();
  return error == 0 ? Result() : writeFailure(path, error);
}

std::string pathIn(const std::string& bundle, const BundleFile& file) {
  return bundle + "/" + std::string(file.name);
}

}  // namespace

Result checkBundlePlace(const std::string& directory) {
  const std::string bundle = directory + "/" + bundleName;
  Result result;
  for (const BundleFile& file : bundleFiles()) {
    if (result.ok()) result = checkReplaceable(pathIn(bundle, file), file);
  }
  return result;
}

Result putBundle(const std::string& directory) {
  if (directory.empty()) {
    return fail(exitNotOpened, "the name of the directory is empty", "the messages",
                "name a directory");
  }
  if (Result result = checkBundlePlace(directory); !result.ok()) return result;
  const std::string bundle = directory + "/" + bundleName;
  std::error_code error;
  const bool isNew = std::filesystem::create_directory(bundle, error);
  if (error) {
    const int number = error.value() == EEXIST ? ENOTDIR : error.value();  // a file has the name
    return fileFailure(exitNotOpened, "the directory of the messages cannot be made", bundle,
                       number);
  }
  if (const int failed = isNew ? syncDirectory(directory) : 0; failed != 0) {
    return fileFailure(exitFailed, "the directory of the messages cannot be written", bundle,
                       failed);
  }
  for (const BundleFile& file : bundleFiles()) {
    if (Result result = writeFile(pathIn(bundle, file), textOf(file)); !result.ok()) return result;
  }
  return {};
}

}  // namespace orx::orxkdb
