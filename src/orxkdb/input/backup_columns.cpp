#include "orxkdb/input/backup_columns.h"

#include <algorithm>

namespace orx::orxkdb {

std::string_view columnOf(std::string_view line, const backup_layout::Column& column) {
  return line.substr(std::min(column.offset, line.size())).substr(0, column.width);
}

}  // namespace orx::orxkdb
