// The locale library under its three names: the code page of the user's locale, and conversion
// between coded character sets. ICU stands behind both.
//
// Coded character sets are named by their numeric identifiers (CCSIDs); 1208 is UTF-8. ICU 72
// knows, among others, 37, 273, 297, 367 (ASCII), 437, 500, 819, 850, 923, 943, 1047, 1208, 1252
// and 1392 (GB 18030), and 932 as its superset 942. In 932 and 943 the byte 5C is the backslash, as
// in every Japanese locale. It has no table for 924 and for 5488, which 1392 replaces.
//
// Arguments without a name have no effect. Pointers to results are not null.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orx {

namespace locale_error {
inline constexpr int none = 0;
inline constexpr int noLocale = 1;        // the locale is not installed or its code page is unknown
inline constexpr int noConverter = 2;     // no table for one of the two CCSIDs
inline constexpr int badArgument = 3;     // a negative length, or no buffer
inline constexpr int badText = 4;         // malformed, cut within a character, or without a
                                          // counterpart in the target's code page
inline constexpr int targetFull = 15;     // the target buffer is too small
inline constexpr int libraryFailed = 16;  // any other failure, such as no memory
}  // namespace locale_error

// To be called before anything else of ICU, by whoever uses it. Without memory for its first steps
// it would wait for itself or follow a null pointer; `outOfMemory`, which must not return, is
// called instead whenever it gets none.
using OutOfMemory = void();
void prepareLocale(OutOfMemory& outOfMemory);

struct LocaleObject {
  std::int32_t reserved;
  std::int32_t ccsid;
};
static_assert(offsetof(LocaleObject, ccsid) == 4 && sizeof(LocaleObject) == 8);

// Describes the locale that the environment names (LC_ALL, LC_CTYPE, LANG); the process's own
// locale is neither read nor changed. The plain C locale is ASCII. Null, with *error set, when the
// locale is not installed or has a code page without a CCSID. The caller gives the object back.
[[nodiscard]] LocaleObject* LOCX_GetLocale(int, int, int, int* error);
void LOCX_ReleaseLocale(LocaleObject* locale);

// Converts `sourceLength` bytes into the target, of which at most `targetSize` - 1 bytes are
// written: *error is targetFull when that is not enough. A NUL follows the text when there is room
// within those bytes, so a zeroed target always ends in one. *written is the number of bytes
// without that NUL; it is set after an error as well, when the target holds what was converted
// before it. Nothing is replaced or left out on the way: what has no exact counterpart is badText.
void LOCX_TranslateString(int targetCcsid, char* target, int targetSize, int sourceCcsid,
                          const char* source, int sourceLength, int* written, int, int* error);

}  // namespace orx
