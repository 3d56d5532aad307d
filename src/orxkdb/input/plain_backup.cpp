#include "orxkdb/input/plain_backup.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>
#include <vector>

#include "orxkdb/input/read_failure.h"
#include "platform/file_state.h"
#include "platform/kdb.h"
#include "platform/kdb_files.h"
#include "platform/run_progress.h"

namespace orx::orxkdb {

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

std::string scratchDirectory() {
  const char* const set = std::getenv("TMPDIR");
  return set == nullptr || *set == '\0' ? "/var/tmp" : set;
}

Result scratchFailure(const std::string& backup, int error) {
  constexpr std::string_view what = "the backup cannot be unpacked";
  const std::string where = backup + " into " + scratchDirectory();
  if (error == EMFILE || error == ENFILE) return systemFailure(exitFailed, what, where, error);
  return fail(exitFailed, what, where + " (" + std::generic_category().message(error) + ")",
              "set TMPDIR to a directory with space on a local disk, or unpack it yourself");
}

bool isPipe(const std::string& name) {
  struct stat file {};
  return ::stat(name.c_str(), &file) == 0 && S_ISFIFO(file.st_mode);
}

// Counts the characters since the last line end.
class LineLength {
 public:
  void add(std::string_view bytes) {
    const std::size_t end = bytes.rfind('\n');
    length_ = end == std::string_view::npos ? length_ + bytes.size() : bytes.size() - end - 1;
  }
  [[nodiscard]] bool isTooLong() const { return length_ > PlainBackup::longestLine; }

 private:
  std::size_t length_ = 0;
};

Result copyAll(ByteSource& source, const std::string& name, const UniqueFd& file) {
  std::vector<char> buffer(bufferSize);
  LineLength line;
  ssize_t count = 0;
  while ((count = source.read(buffer.data(), buffer.size())) > 0) {
    const std::string_view bytes(buffer.data(), static_cast<std::size_t>(count));
    line.add(bytes);
    if (line.isTooLong()) {
      return fail(exitNotAsExpected, "this is no backup, a line does not end", name,
                  "check the name");
    }
    if (const int error = writeAll(file.get(), bytes); error != 0) {
      return scratchFailure(name, error);
    }
  }
  if (count == 0) return {};
  return readFailure(source, "the backup cannot be read", name, exitNotAsExpected);
}

}  // namespace

Result PlainBackup::open(const std::string& name) {
  path_ = name;
  return isPipe(name) || compressionOfFile(name) != Compression::none ? unpack(name) : Result();
}

Result PlainBackup::unpack(const std::string& name) {
  ByteSource source;
  if (const int error = source.open(name); error != 0) {
    return fileFailure(exitNotOpened, "the file cannot be opened", name, error);
  }
  file_ = openFile(scratchDirectory(), O_TMPFILE | O_RDWR, 0600);
  if (!file_.valid()) return scratchFailure(name, errno);
  runProgress().enterFile("unpacking", name);
  const auto before = stateOf(name);
  Result copied = copyAll(source, name, file_);
  if (stateOf(name) != before) return changedFailure(name);
  if (!copied.ok()) return copied;
  path_ = "/proc/self/fd/" + std::to_string(file_.get());
  if (!kdb::looksLikeDatabase(path_.c_str())) return {};
  return fail(exitNotAsExpected, "what comes out is a database, not a backup", name,
              "make a backup of it with \"orxkdb backup\", and give that");
}

}  // namespace orx::orxkdb
