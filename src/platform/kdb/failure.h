// Operating-system and engine errors as outcomes of the database.
#pragma once

#include "platform/kdb_codes.h"

namespace orx::kdb {

// An errno value of a file call. 0 is success; one that nothing is known of is 8/20.
[[nodiscard]] Outcome outcomeOfErrno(int error);

// True when the file system behind `fd` is full or the file has reached its size limit, within
// the size of one batch of writes. The engine reports both as an I/O error more often than not.
[[nodiscard]] bool isOutOfSpace(int fd);

}  // namespace orx::kdb
