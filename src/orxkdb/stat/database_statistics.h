// What a database holds, in numbers.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "orxkdb/result.h"

namespace orx::orxkdb {

struct DatabaseStatistics {
  std::uint64_t records = 0;
  std::uint64_t objects = 0;       // different pairs of parent and object handle
  std::uint64_t chains = 0;        // objects of more than one record
  std::uint64_t longestChain = 0;  // records of the largest object
  std::uint64_t textBytes = 0;     // attribute text, up to the first zero byte of each record
  std::uint64_t fileBytes = 0;     // size of the file
  std::map<std::int32_t, std::uint64_t> recordsOfType;  // by record type
};

// Adds the counts of a whole pass to `statistics`, which is new; of no use after a failure.
Result gatherStatistics(const std::string& database, DatabaseStatistics& statistics);

}  // namespace orx::orxkdb
