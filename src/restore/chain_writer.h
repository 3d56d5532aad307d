// An object's attribute text as the chain of records that stores it: records of equal handles with
// the numbers 0, 1, 2, ..., 256 bytes of the text in each.
//
// The text of a chain includes its terminating zero: `size` bytes make size / 256 + 1 records, so
// that the last one always has room for a zero, and is empty when the size is a multiple of 256.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/kdb.h"
#include "records/data_buffer.h"

namespace orx {

class CMAttributeSet;

// The text of `attributes` in all getCharAttributeSize() bytes, zeros behind it.
[[nodiscard]] std::string chainText(const CMAttributeSet& attributes);

// The number of records for `text`, which is one of chainText(), here and below.
[[nodiscard]] std::size_t chainLength(const std::string& text);

// Record `number` of the chain, below chainLength(): `head` with that number and its piece of the
// text.
[[nodiscard]] DataBuffer chainRecord(const DataBuffer& head, const std::string& text,
                                     std::size_t number);

// Which records with the handles of a chain are records of that chain.
enum class ChainRecords {
  all,
  withoutAuxValue2,  // those whose `auxValue2` is 0: the system record shares its handles
  none,              // nobody knows: nothing is deleted
};

// Stores the chain in place of what the database, open for update, holds of it: its records replace
// those of their keys or are added, and then the stored ones with higher numbers are deleted. Ends
// at the first failure and returns its code (kdb::GetLastStatus has the reason), or 0. What was
// stored before the failure stays a change of the run.
[[nodiscard]] std::int32_t rewriteChain(kdb::kdbHandle database, const DataBuffer& head,
                                        const std::string& text, ChainRecords records);

}  // namespace orx
