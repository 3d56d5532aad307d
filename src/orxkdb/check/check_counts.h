// What a check has looked at, in numbers.
#pragma once

#include <cstdint>

namespace orx::orxkdb {

struct CheckCounts {
  bool isDatabase = false;
  std::uint64_t records = 0;     // or pieces of a backup
  std::uint64_t objects = 0;     // different pairs of parent and object handle
  std::uint64_t models = 0;      // those that a use-count rebuild takes for models
  std::uint64_t references = 0;  // by model handles and by values of attributes
  std::uint64_t outOfOrder = 0;  // lines of a backup whose key is below that of the line before
};

}  // namespace orx::orxkdb
