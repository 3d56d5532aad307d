// Description attributes and their UTF-8 fields.
//
// The values of description attributes (CMAttribute::isUTF8DescAttr) are UTF-8 while all other text
// is in the local code page. A description field holds one of them in a fixed number of bytes: the
// key number in decimal, ";", the first value, all in UTF-8, and blanks to the end; the last byte
// is always a blank, and there is no NUL. Key 6 with the value "Web server" in 20 bytes is "6;Web
// server        ".
//
// A CCSID of 0 stands for the local code page. Operations return 1, or 0 when they failed.
#pragma once

namespace orx {

class CMAttribute;
class CMAttributeSet;

// Writes the field of `width` bytes with the key and the first value. A value that does not fit is
// cut before a character; of a value that is no UTF-8 the last character that fits is blanked.
// Returns 0, with the field zeroed, when key and ";" leave no room for a byte more; 0 also without
// a field (null, or a width below 1).
[[nodiscard]] int createUTF8Desc(const CMAttribute& attribute, char* field, int width);

// Reads a field, up to a NUL, into the attribute: its key, and the rest as its only value. With
// `translate` other than 0 the value is then converted into the code page and cut to 64 bytes;
// where that fails it stays in UTF-8. Returns 0 and leaves the attribute as it is when the text is
// null or does not begin with a number of a key and ";".
[[nodiscard]] int getUTF8Desc(const char* text, CMAttribute* attribute, int translate, int ccsid);

// Converts the attribute's first value, of which the first 510 bytes count, to UTF-8 (`toUTF8`
// other than 0) or from UTF-8 into the code page; it becomes the only value. `limit64` other than 0
// cuts the result to 64 bytes, or fewer where the target is UTF-8 and a character would be split.
// Returns 0 and leaves the attribute as it is when the value cannot be converted, or the result
// takes more than 510 bytes.
[[nodiscard]] int TranslateAttrValue(CMAttribute* attribute, int toUTF8, int ccsid, int limit64);

// The set's description attribute, the first of them in the order of the table of their keys; null
// when there is none. With `detach` other than 0 it leaves the set and becomes the caller's.
[[nodiscard]] CMAttribute* findDescAttr(CMAttributeSet* set, int detach);

}  // namespace orx
