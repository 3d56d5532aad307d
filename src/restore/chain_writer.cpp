#include "restore/chain_writer.h"

#include <string_view>
#include <utility>

#include "messages/trace_unit.h"
#include "model/attribute_set.h"
#include "records/record_calls.h"

namespace orx {

namespace {

// In place of the record with its key, where there is one.
std::int32_t storeRecord(kdb::kdbHandle database, const DataBuffer& record) {
  const std::int32_t code = updateRecord(database, record);
  const bool isNew = code == static_cast<std::int32_t>(kdb::recordNotFound.code);
  return isNew ? addRecord(database, record) : code;
}

bool belongs(const DataBuffer& record, ChainRecords records) {
  return records == ChainRecords::all || record.auxValue2() == 0;
}

// Deletes the records of the chain of `head` from number `first` on.
std::int32_t deleteRest(kdb::kdbHandle database, const DataBuffer& head, std::size_t first,
                        ChainRecords records) {
  DataBuffer record = head;
  record.setRecn(static_cast<std::uint32_t>(first));
  do {
    std::int32_t code = readRecordFrom(database, record);
    if (code != 0) return isEndOfRecords(code) ? 0 : code;
    if (!record.isOfSameObject(head)) return 0;
    if (belongs(record, records)) code = deleteRecord(database, record);
    if (code != 0) return code;
  } while (kdb::advanceKey(record.data()));
  return 0;
}

}  // namespace

std::string chainText(const CMAttributeSet& attributes) {
  ORX_TRACE("chainText");
  std::string text(static_cast<std::size_t>(attributes.getCharAttributeSize()), '\0');
  (void)attributes.writeText(text.data());
  return trace.exit(std::move(text));
}

std::size_t chainLength(const std::string& text) {
  ORX_TRACE("chainLength");
  return trace.exit(text.size() / data_layout::attrTextSize + 1);
}

DataBuffer chainRecord(const DataBuffer& head, const std::string& text, std::size_t number) {
  ORX_TRACE("chainRecord");
  DataBuffer record = head;
  record.setRecn(static_cast<std::uint32_t>(number));
  record.setAttrText(std::string_view(text).substr(number * data_layout::attrTextSize));
  return trace.exit(record);
}

std::int32_t rewriteChain(kdb::kdbHandle database, const DataBuffer& head, const std::string& text,
                          ChainRecords records) {
  ORX_TRACE("rewriteChain");
  const std::size_t length = chainLength(text);
  for (std::size_t i = 0; i < length; ++i) {
    const std::int32_t code = storeRecord(database, chainRecord(head, text, i));
    if (code != 0) return trace.exit(code);
  }
  if (records == ChainRecords::none) return trace.exit(0);
  return trace.exit(deleteRest(database, head, length, records));
}

}  // namespace orx
