// What went wrong in reading a file that may be compressed, for the operator.
#pragma once

#include <string>
#include <string_view>

#include "orxkdb/result.h"
#include "platform/compression/byte_source.h"

namespace orx::orxkdb {

// `what` is said of a read that the system failed, with exitFailed; `where` names the file, and the
// line if there is one. What is wrong with compressed data ends with `badData`.
Result readFailure(const ByteSource& source, std::string_view what, const std::string& where,
                   ExitCode badData);

}  // namespace orx::orxkdb
