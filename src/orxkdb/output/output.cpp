#include "orxkdb/output/output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>

#include "platform/file.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "platform/run_progress.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

bool hasWritten = false;

bool isFile(const struct stat& file, const std::string& name) {
  struct stat named {};
  return !name.empty() && ::stat(name.c_str(), &named) == 0 && sameFile(file, named);
}

bool isRegularOrNew(const std::string& name) {
  struct stat file {};
  return ::stat(name.c_str(), &file) != 0 || S_ISREG(file.st_mode);
}

// Where AtomicFile writes first.
std::string successorOf(const std::string& name) {
  return resolvePath(name).value_or(name).append(unpublishedSuffix);
}

Result refuse(std::string_view what, std::string_view name) {
  return fail(exitNotAsExpected, what, name,
              "give another name for the output; nothing is changed");
}

Result refuseInputs(const std::string& name, const std::string& database,
                    const std::string& backup) {
  for (const std::string& path : {name, successorOf(name)}) {
    struct stat file {};
    if (::stat(path.c_str(), &file) != 0) continue;
    if (isFile(file, database)) return refuse("the output would replace the database itself", path);
    if (isFile(file, backup)) return refuse("the output would replace the backup itself", path);
  }
  return {};
}

// The name beside the target has to be free as well.
Result refuseDatabase(const std::string& name) {
  if (kdb::belongsToDatabase(name)) {
    return refuse("names with this ending belong to databases", name);
  }
  for (const std::string& path : {resolvePath(name).value_or(name), successorOf(name)}) {
    if (kdb::looksLikeDatabase(path.c_str())) {
      return refuse("the output would replace a database", path);
    }
  }
  return {};
}

Result refuseRedirection(const std::string& database) {
  struct stat file {};
  if (::fstat(STDOUT_FILENO, &file) != 0 || !isFile(file, database)) return {};
  return refuse("standard output is the database itself", database);
}

}  // namespace

Result Output::open(const std::string& name, const std::string& database,
                    const std::string& backup) {
  name_ = name;
  isStandard_ = name == standardStream;
  if (isStandard_) return refuseRedirection(database);
  if (Result refused = refuseInputs(name, database, backup); !refused.ok()) return refused;
  if (Result refused = refuseDatabase(name); !refused.ok()) return refused;
  const int error = file_.open(name);
  if (error == 0) return {};
  if (error == EEXIST && isRegularOrNew(name)) {
    return refuse("a file stands where the output is written first", successorOf(name));
  }
  if (error == EEXIST) {
    return fail(exitNotOpened, "the output is no regular file", name,
                "give the name of a file, or \"-\" for standard output");
  }
  return fileFailure(exitNotOpened, "the output file cannot be made", name, error);
}

Result Output::write(std::string_view bytes) {
  int error = 0;
  if (isStandard_) {
    buffer_.append(bytes);
    if (buffer_.size() >= bufferSize) error = flush();
  } else {
    error = file_.write(bytes);
  }
  return error == 0 ? Result() : writeFailure(error);
}

Result Output::publish() {
  const int error = isStandard_ ? flush() : file_.publish();
  return error == 0 ? Result() : writeFailure(error);
}

// A product on the terminal is progress enough.
int Output::flush() {
  if (::isatty(STDOUT_FILENO) == 1) runProgress().leave();
  hasWritten |= !buffer_.empty();
  const OutputTurn turn;
  const int error = writeAll(STDOUT_FILENO, buffer_);
  buffer_.clear();
  return error;
}

Result Output::writeFailure(int error) const {
  constexpr std::string_view what = "the output cannot be written";
  if (isStandard_) return systemFailure(exitFailed, what, "standard output", error);
  Result failure = fileFailure(exitFailed, what, name_, error);
  if (file_.isPublished()) {
    failure.addHint("the file has its new contents, which a power failure may still take back");
  } else {
    failure.addHint("the file is as it was");
  }
  return failure;
}

Result writeStandardOutput(std::string_view text) {
  Output output;
  if (Result result = output.write(text); !result.ok()) return result;
  return output.publish();
}

bool hasWrittenStandardOutput() {
  return hasWritten;
}

void say(std::string_view text) {
  hasWritten = true;
  const OutputTurn turn;
  (void)writeAll(STDOUT_FILENO, text);
}

}  // namespace orx::orxkdb
