// The help of orxrestore, on standard output.
#pragma once

namespace orx {

// In the operator's language; a bundle without one of the texts leaves that text out, without a
// bundle the built-in help is printed.
void HelpFn();
// The built-in help, in English.
void HelpWithoutBundle();

}  // namespace orx
