#include "orxkdb/keys/record_name.h"

#include "records/data_buffer.h"

namespace orx::orxkdb {

std::string recordName(const DataBuffer& record) {
  std::string name = "parent ";
  name.append(record.parentHandle().exportText().view());
  name.append(" object ").append(record.objectHandle().exportText().view());
  return name.append(" recn ").append(std::to_string(record.recn()));
}

}  // namespace orx::orxkdb
