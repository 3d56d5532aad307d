#include "orxkdb/check/findings.h"

#include <algorithm>
#include <numeric>

namespace orx::orxkdb {

using enum FindingKind;

constexpr std::array<FindingKindText, findingKindCount> findingKinds{{
    {lineLength, "line-length",
     "a line is not 440 characters long: what it lacks reads as nothing, what it has more is\n"
     "ignored or taken for a record of its own"},
    {zeroByte, "zero-byte",
     "a zero byte in a line: it cuts its column short, and at the start of a line a restore ends"},
    {handleColumn, "handle-column",
     "a column is no handle in exported form: it is restored as another handle"},
    {numberColumn, "number-column",
     "a column is no number: it is restored as the digits at its start, or as 0"},
    {dataLength, "data-length",
     "the data length does not fit the data: more or less of the column is restored than was "
     "meant"},
    {duplicateKey, "duplicate-key",
     "a record has the key of another: a restore ends with \"duplicate\" when it comes to it"},
    {storedKey, "stored-key",
     "a record is stored under another key than its own: it is not found and not updated by its "
     "key"},
    {notCarried, "not-carried",
     "a backup line cannot carry the record as it is; \"orxkdb dump\" can"},
    {chainGap, "chain-gap",
     "records of an object are missing: the texts of the others are joined without them; without\n"
     "the first one, a merge or \"orxrestore -u\" may take the others for those of another object"},
    {chainDisagrees, "chain-disagrees",
     "the records of an object differ in what they share: only that of its first record counts"},
    {recordType, "record-type",
     "the record type is not between 0 and 254: a merge leaves the object out, and \"orxrestore "
     "-u\"\n"
     "does not count it"},
    {textLeftOver, "text-left-over",
     "an attribute text is not read to its end: the next rewrite of the object loses the rest"},
    {attributeHeader, "attribute-header",
     "a number before the values of an attribute is none or does not fit: the attribute is read "
     "as\n"
     "another one, and written as that"},
    {valueCount, "value-count",
     "an attribute has not the number of values that it states: a rewrite keeps what can be read"},
    {notReadBack, "not-read-back",
     "a value does not come back as it stands: reading cuts blanks at its end and makes a TAB a\n"
     "blank, and the next rewrite of the object keeps that"},
    {ambiguousValue, "ambiguous-value",
     "\";;;\" stands between two values: it is read as a \";\" at the end of the first, though a\n"
     "\";\" at the start of the second is written in the same way"},
    {repeatedAttribute, "repeated-attribute",
     "an object has two attributes of one key: only the first is found"},
    {handleValue, "handle-value",
     "a value of an attribute of handles is none: it is read as another handle"},
    {missingObject, "missing-object", "an object refers to one that is not there"},
    {parentCycle, "parent-cycle",
     "the parents of an object lead back to it: the object and all that is below it hang in the\n"
     "air"},
    {notAModel, "not-a-model",
     "an object refers to one that is there but is no model: \"orxrestore -u\" does not count the\n"
     "reference"},
    {noUseCount, "no-use-count",
     "a model has no use count (attribute 17): \"orxrestore -u\" leaves it without one, and what\n"
     "refers to it is not counted"},
    {useCount, "use-count",
     "the use count of a model (attribute 17) is wrong: \"orxrestore -u\" computes it anew"},
    {signatures, "signatures",
     "the signatures of a model (attribute 84) are wrong: \"orxrestore -u\" writes them anew"},
    {noSystemRecord, "no-system-record",
     "there is no system record: a merge into the database is refused"},
    {straySystemRecord, "stray-system-record",
     "an object with a null handle has a parent: a merge into the database reads it as part of\n"
     "the system record and writes its text there, once more each time; a merge of a backup with\n"
     "it may add it to another database"},
    {noCounters, "no-counters",
     "the system record has no counters (attribute 9): a merge into the database is refused"},
    {counter, "counter",
     "a counter is no identifier that is free, or belongs to no type: a merge gives identifiers "
     "out\n"
     "twice or none, and rewrites the counters"},
    {systemParameters, "system-parameters",
     "the system parameters (attribute 1) are others once a merge has read and written them"},
    {nearLimit, "near-limit",
     "a counter or an identifier is so near 2^32 that the identifiers of a merge may begin again "
     "at 0"},
}};

// Row by row the kinds of the enumeration.
static_assert(std::ranges::all_of(findingKinds, [](const FindingKindText& row) {
  return &row - findingKinds.data() == static_cast<std::ptrdiff_t>(row.kind);
}));

std::string FindingKindText::meaning() const {
  std::string line(meaningLines);
  std::ranges::replace(line, '\n', ' ');
  return line;
}

std::uint64_t Findings::total() const {
  return std::accumulate(entries_.begin(), entries_.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const Entry& entry) { return sum + entry.count; });
}

std::size_t Findings::kindsFound() const {
  return static_cast<std::size_t>(
      std::ranges::count_if(entries_, [](const Entry& entry) { return entry.count > 0; }));
}

}  // namespace orx::orxkdb
