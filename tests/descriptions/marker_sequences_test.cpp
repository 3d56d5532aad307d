#include "descriptions/marker_sequences.h"

#include <gtest/gtest.h>

namespace orx {
namespace {

#define LESS "\xFE\xFD\xFC\xFB\xFA\xF0"
#define MORE "\xFE\xFD\xFC\xFB\xF0\xFA"
#define SEMI "\xFE\xFD\xFC\xFB\xFA\xF1"

TEST(MarkerSequences, AreFoundInOrderAndReplaced) {
  // The position is -1 where there is no marker.
  const std::tuple<const char*, int, int, const char*> cases[] = {
      {"", -1, -1, nullptr},
      {"a<b>;", -1, -1, nullptr},
      {"a" LESS "b", 1, 0, "a<b"},
      {LESS MORE SEMI, 0, 0, "<>;"},
      {SEMI "x" LESS, 0, 2, ";x<"},
      {MORE MORE "tail", 0, 1, ">>tail"},
      {"ab" SEMI, 2, 2, "ab;"},
      {"\xFE\xFD\xFC\xFB\xFA", -1, -1, nullptr},
      {"\xFE\xFD\xFC\xFB\xFA\xF2", -1, -1, nullptr},
      {"\xFE\xFD\xFC\xFB", -1, -1, nullptr},
      {"\xFE\xFD\xFC\xFB" MORE "\xFE\xFD", 4, 1, "\xFE\xFD\xFC\xFB>\xFE\xFD"},
      {"\xFE" LESS "\xFA\xF0", 1, 0, "\xFE<\xFA\xF0"}};
  for (const auto& [text, position, marker, expected] : cases) {
    int which = 7;
    const char* found = searchSpecString(text, &which);
    EXPECT_EQ(found == nullptr ? -1 : found - text, position) << text;
    EXPECT_EQ(which, marker) << text;
    const auto replaced = replaceSpecString(text);
    EXPECT_STREQ(replaced.get(), expected) << text;
  }
}

}  // namespace
}  // namespace orx
