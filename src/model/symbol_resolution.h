// Replacing references to symbolic parameters in a text by their values.
//
// "&NAME" is a reference; its name ends before the first of "&", ".", ",", blank and "<", and a "."
// right behind the reference is dropped with it. "&&" stands for one "&", and an "&" at the end of
// the text for itself. A reference to a parameter that is not in the set stays in the text. Behind
// an empty value a "," is dropped as well.
//
// "&NAME<RANGE>" takes a part of the value: "<n>" the first n bytes, "<s:n>" n bytes from byte s
// (counted from 1), "<s:>" and "<s:0>" all from byte s; "<>" and a start of 0 leave the value
// whole. A malformed range stays in the text behind the value; a start that could be read before
// the fault holds nevertheless. "&NAME<<" is a reference followed by one "<".
//
// Values may hold references of their own; a value never refers to itself. Resolution always ends:
// references more than 64 levels deep stay as they stand, and so do those that would make the
// result of any level longer than 1 MiB. What is spent on values of values over the whole run is
// bounded by the product of the two.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "model/sym_parm_set.h"

namespace orx {

namespace symbol_limits {
inline constexpr int levels = 64;
inline constexpr std::size_t resultBytes = std::size_t{1} << 20;
}  // namespace symbol_limits

// Part of a text: a start counted from 1, and a length. A start of 0 (or below) means the whole
// text, a length of 0 (or below) all from the start.
struct SubstrRange {
  std::int32_t start = 0;
  std::int32_t length = 0;
};

// Resolves `text` against `set`, which may be null or hold the text as a value. Where the value of
// a parameter holds references, the set changes: the parameter moves to the end of the set and
// keeps the resolved text as its value. Such parameters, which stay the set's, are added to
// `changed`, if that is given, in the order of their change.
//
// In UTF-8 mode (not 0) the text is UTF-8 and the parameters are in the local code page. A value
// that cannot be converted, or takes more than 255 bytes, is left out.
[[nodiscard]] std::string ResolveSymbolsInString(const char* text, CMSymParmSet* set, int utf8Mode,
                                                 std::vector<CMSymParm*>* changed = nullptr);

// Appends a part of the source, `length` bytes long, to `out`; all of it for a null range, nothing
// when the range starts behind it.
void AddCharToString(std::string& out, const char* source, std::int32_t length,
                     const SubstrRange* range);

// Reads the text between "<" and ">", `length` bytes or up to a NUL. Returns 1; or 0 when it is
// null, 100 bytes or longer, or no range, and then the start may be set already. Numbers beyond the
// 32-bit range become the greatest of it. In UTF-8 mode (not 0) the text is UTF-8.
[[nodiscard]] int getSubstrRange(const char* text, std::int32_t length, SubstrRange& range,
                                 int utf8Mode);

}  // namespace orx
