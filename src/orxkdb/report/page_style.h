// What every page carries inside itself: its style and its one script. A page needs nothing else,
// neither the network nor the script to be read.
#pragma once

#include <string_view>

namespace orx::orxkdb {

extern const std::string_view pageStyle;
// Shows the search box and hides the rows that do not have all words of it.
extern const std::string_view pageScript;

}  // namespace orx::orxkdb
