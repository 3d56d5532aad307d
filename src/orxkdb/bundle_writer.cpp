#include "orxkdb/bundle_writer.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "messages/bundle_files.h"
#include "platform/atomic_file.h"

namespace orx::orxkdb {

namespace {

std::string_view textOf(const BundleFile& file) {
  return {static_cast<const char*>(static_cast<const void*>(file.bytes.data())), file.bytes.size()};
}

int writeFile(const std::string& path, std::string_view bytes) {
  AtomicFile file;
  if (const int error = file.open(path); error != 0) return error;
  if (const int error = file.write(bytes); error != 0) return error;
  return file.publish();
}

}  // namespace

Result putBundle(const std::string& directory) {
  if (directory.empty()) {
    return fail(exitNotOpened, "the name of the directory is empty", "the messages",
                "name a directory");
  }
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
    const std::string path = bundle + "/" + std::string(file.name);
    if (const int failed = writeFile(path, textOf(file)); failed != 0) {
      return fileFailure(exitFailed, "a file of the messages cannot be written", path, failed);
    }
  }
  return {};
}

}  // namespace orx::orxkdb
