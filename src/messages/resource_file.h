// Whether the files of a message bundle are whole.
//
// ICU maps resource files and trusts what their heads say: a file that was cut short ends the
// process. The length that the head states is therefore compared with the file before ICU sees it.
// All numbers little-endian:
//
//   0  size of the head (2)   2  0xDA 0x27   12  "ResB"
//   behind the head, in words of 4 bytes: the root item, then the number of indexes (in the low
//   byte), two of them, and the length of everything behind the head
#pragma once

#include <string>

namespace orx {

// Every file NAME.res in `directory`; true for a directory without any.
[[nodiscard]] bool resourceFilesAreWhole(const std::string& directory);

}  // namespace orx
