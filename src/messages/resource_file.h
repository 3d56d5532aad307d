// Whether the files of a message bundle are sound.
//
// ICU maps resource files and follows what they say without looking where it leads: a file that was
// cut or of which a byte was flipped can end the process. What leads from the root table to its
// texts is therefore followed here first, within the bounds of the file.
//
// The format, all numbers little-endian; a word has 4 bytes and a unit 2:
//
//   0   size of the head (2), 0xDA 0x27, 8 bytes, "ResB", format version 2 or 3
//   behind the head, offsets counted from here:
//   words: the root item; the indexes: [0] how many they are, 5 to 8 and more, in the low byte,
//          [1] end of the keys, [3] end of everything, [5] flags, [6] end of the units, in words
//   keys:  texts that end in NUL, up to the end of the keys
//   units: texts and tables of 16 bits, up to the end of the units
//   words: the other items
//
// An item is a word: a type in the upper 4 bits, an offset in words or units in the others. A text
// of units starts with its length when its first unit is from DC00 to DFFF, and ends in NUL.
#pragma once

#include <string>

namespace orx {

// True when every file NAME.res in `directory` is sound, so also for a directory without any, or
// none at all. Not sound is a file that cannot be read, that has more than 64 MiB, that needs
// another for its keys or texts, or that refers to other bundles. A file that is changed after this
// look at it can still end the process.
[[nodiscard]] bool resourceFilesAreSound(const std::string& directory);

}  // namespace orx
