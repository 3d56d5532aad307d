// orxkdb sample: a realistic backup of a fleet that does not exist.
#pragma once

#include <cstdint>
#include <string>

#include "orxkdb/command.h"
#include "orxkdb/standard_stream.h"

namespace orx::orxkdb {

struct SampleOptions {
  std::string file{standardStream};
  std::uint32_t objects = 10000;  // 20 to 50,000,000
  std::uint64_t seed = 1;
  std::string order = "key";  // or "random"
  bool json = false;
};

// The same options give the same text, on every machine.
Result sample(const SampleOptions& options);

Registration addSample;

}  // namespace orx::orxkdb
