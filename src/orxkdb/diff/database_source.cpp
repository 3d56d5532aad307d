#include "orxkdb/diff/database_source.h"

namespace orx::orxkdb {

bool DatabaseSource::read(KeyedRecord& record, Result& result) {
  if (!reader_.next(record.record)) {
    result = reader_.result();
    return false;
  }
  const bool isUnderItsKey = reader_.isUnderItsKey(record.record);
  record.key = keyOf(isUnderItsKey ? record.record : reader_.storedKey());
  return true;
}

}  // namespace orx::orxkdb
