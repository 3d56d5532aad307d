// What a program arranges before it opens a file or prints anything, so that its surroundings
// cannot end a run halfway or turn a message into damage.
#pragma once

namespace orx {

// - Opens /dev/null for each of the three standard streams that the caller left closed; a file
//   opened later could otherwise take the number, and messages would be written into it.
// - Ignores SIGPIPE and SIGXFSZ: a reader that goes away and a file at its size limit show as
//   failed writes.
void prepareProcess();

}  // namespace orx
