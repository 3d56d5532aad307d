// What went wrong in reading a file that may be compressed, for the operator.
#pragma once

#include <string>
#include <string_view>

#include "orxkdb/result.h"
#include "platform/compression/byte_source.h"

namespace orx::orxkdb {

// Of a source whose read() has returned -1. A read that the system failed is exitFailed, told as
// `what`; what is wrong with compressed data has the exit code `badData` and words of its own.
// `where` names the file, and the line if there is one.
Result readFailure(const ByteSource& source, std::string_view what, const std::string& where,
                   ExitCode badData);

}  // namespace orx::orxkdb
