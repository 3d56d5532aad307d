// The banner of orxrestore, on standard output.
#pragma once

namespace orx {

// The program and when it was built; nothing without a message bundle.
void HelloFn();

}  // namespace orx
