// The key of a record in words, for texts to the operator.
#pragma once

#include <string>

namespace orx {
class DataBuffer;
}

namespace orx::orxkdb {

// "parent <1;1;2;0;0;0;5;> object <1;1;4;0;0;0;9;> recn 3"
[[nodiscard]] std::string recordName(const DataBuffer& record);

}  // namespace orx::orxkdb
