// What is known of the system calls that touch files.
#pragma once

#include <vector>

#include "tests/faults/traced_program.h"

namespace orx::faults {

[[nodiscard]] std::vector<long> tracedNumbers();
// Which argument is a path; -1 for none.
[[nodiscard]] int pathArgument(const SystemCall& call);
// False for what mmap and fcntl do without a file: memory, flags of a descriptor.
[[nodiscard]] bool touchesFile(const SystemCall& call);
// Whether a signal may end it before anything is done.
[[nodiscard]] bool mayBeInterrupted(const SystemCall& call);
// A call of the engine, whose code is not ours. Of its reads only the size tells.
[[nodiscard]] bool isEnginesOwn(const SystemCall& call);
[[nodiscard]] bool syncs(const SystemCall& call);
// Of the few that a change is made of: a name or a mode is another afterwards.
[[nodiscard]] bool isStep(const SystemCall& call);
// Standard input, output or error, which are no files of the disk that fails.
[[nodiscard]] bool isStream(const SystemCall& call);

}  // namespace orx::faults
