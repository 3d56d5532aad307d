#include "orxkdb/input/read_failure.h"

namespace orx::orxkdb {

Result readFailure(const ByteSource& source, std::string_view what, const std::string& where,
                   ExitCode badData) {
  const std::string format = nameOf(source.compression());
  const std::string place =
      where + " (" + format + ", within its first " + std::to_string(source.position()) + " bytes)";
  switch (source.fault()) {
    case ByteFault::damaged:
      return fail(badData, "the compressed data is damaged, or something else follows it", place,
                  "look at it with \"" + format + " -t\" and get another copy");
    case ByteFault::cut:
      return fail(badData, "the compressed data ends before it is complete", place,
                  "the copy was cut off, get another one");
    case ByteFault::needsMemory:
      return fail(badData, "decompressing it takes more memory than is allowed here", place,
                  "decompress it with " + format + " and give the result");
    default:
      return systemFailure(exitFailed, what, where, source.errorNumber());
  }
}

}  // namespace orx::orxkdb
