#pragma once

namespace orx {

// Prints the banner: the program and when it was built.
void HelloFn();

}  // namespace orx
