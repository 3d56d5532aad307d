// Code pages: conversion between UTF-8 and the local code page or any other, checks of UTF-8 and
// EBCDIC text, blank-filled fields, and the code pages of managed systems.
//
// Code pages are identified by their CCSID: 1208 is UTF-8, and 0 stands for the local code page.
// `flagUTF8` names a direction: 0 converts from the code page to UTF-8, anything else from UTF-8 to
// the code page. Conversions return 0 or an error of platform/locale.h; 15 means that the target is
// too small.
//
// The local code page, the EBCDIC table and the managed systems are filled on first use and live as
// long as the process. Not guarded: one thread only. Pointers are not null, if nothing else is
// said.
#pragma once

#include <string>
#include <string_view>

namespace orx {

namespace ccsid {
inline constexpr int local = 0;
inline constexpr int utf8 = 1208;
inline constexpr int openSystemsLatin1 = 1047;  // EBCDIC
inline constexpr int gb18030 = 1392;
inline constexpr int gb18030Growing = 5488;  // the identifier that 1392 replaces
}  // namespace ccsid

// The local code page; 0 when the locale library does not tell. It is asked until it does.
[[nodiscard]] int UTF8GetLocaleDefaultCodePageID();

// Converts `sourceLength` bytes; the target gets at most `targetSize` - 1 of them. The caller
// zeroes the target first and reads it up to its first NUL, for a NUL is not promised. After an
// error the target holds the text up to the place of the error.
[[nodiscard]] int ConvertStringToUTF8(int flagUTF8, char* target, int targetSize,
                                      const char* source, int sourceLength, int ccsid);

// Converts `text` in place; it becomes the result up to its first NUL, and stays as it was after an
// error. Six bytes for each byte of the text are the most that a result can take.
[[nodiscard]] int ConvertStringToUTF8_RWCString(int flagUTF8, std::string& text, int ccsid);

// 1 when the text up to its NUL is well-formed: no overlong form, no surrogate, nothing above
// U+10FFFF, no character cut short.
[[nodiscard]] int isValidUTF8String(const char* text);

// 1 when every byte of the text, up to its NUL, is the EBCDIC form (code page 1047) of one of the
// 128 ASCII characters; 0 for every text but the empty one when there is no converter for 1047.
[[nodiscard]] int isValidEBCDICEnglishString(const char* text);

// The index of the first byte of the character that covers byte `end`; -1 when there are only
// continuation bytes back to the start; 0 for a null text. `text` reaches to `end` at least.
[[nodiscard]] int myfindUTF8Len(const char* text, int end);

// Fills `width` bytes with the text, cut at `width` wherever that falls, and blanks; no NUL.
void UTF8StrNCopy(char* field, const char* text, int width);

// Turns the bytes from the field's NUL up to `width` into blanks. Nothing happens when the text in
// the field is `width` bytes long or longer.
void UTF8FillTail(char* field, int width);

// The code page that a managed system is registered with, by its name; 0 when it is not.
[[nodiscard]] int findCodedCharSetId(std::string_view managedSystem);
// Registers a managed system for the rest of the process; of two registrations the first stays.
void insertCodedCharSetId(std::string_view managedSystem, int ccsid);

}  // namespace orx
