// ObjectChecker: takes records in database order, puts them together to objects, checks each
// object, and enters it in the inventory: add() for every record, then finish(). Findings and
// inventory outlive it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orxkdb/check/findings.h"
#include "orxkdb/check/inventory.h"
#include "orxkdb/input/attribute_scanner.h"
#include "records/data_buffer.h"
#include "restore/record_lists.h"

namespace orx::orxkdb {

class ObjectChecker {
 public:
  ObjectChecker(Findings& findings, Inventory& inventory)
      : findings_(findings), inventory_(inventory) {}

  // Whether nothing can be wrong with a text and it tells nothing that others have to agree with.
  // For any thread; false may also be said of texts that are sound.
  [[nodiscard]] static bool isPlainText(std::string_view text);

  // `line` is that of the record in a backup, else 0. `isPlain` saves a look at its text: what
  // isPlainText() says of it, or false.
  void add(const DataBuffer& record, std::uint64_t line, bool isPlain = false);
  // Behind the last record.
  void finish();

 private:
  // What of the attributes is looked at when all have been seen.
  struct Noted {
    bool hasUseCount = false;
    ScannedAttribute useCount = {};
    bool hasSignatures = false;
    ScannedAttribute signatures = {};
  };

  [[nodiscard]] bool belongsToObject(const DataBuffer& record) const;
  void begin(const DataBuffer& record, std::uint64_t line, bool isPlain);
  void endObject();
  void checkNumber(const DataBuffer& record, std::uint64_t line);
  [[nodiscard]] std::string joinedTo();
  [[nodiscard]] std::optional<Place::Object>& modelAhead();
  void checkRecordType();
  void checkStrayRecords();
  void checkShared(const DataBuffer& record, std::uint64_t line);
  void addModelReference(std::uint32_t source);
  Noted checkText(std::uint32_t source);
  void checkAttribute(const ScannedAttribute& attribute);
  void note(const ScannedAttribute& attribute, std::uint32_t source, Noted& noted);
  void checkKeys();
  void addModel(const Noted& noted, std::uint32_t source);
  void readHandles(const ScannedAttribute& attribute);
  void addHandles(const ScannedAttribute& attribute, std::uint32_t source);
  [[nodiscard]] Place place() const { return {line_, object_, {}}; }

  Findings& findings_;
  Inventory& inventory_;

  bool hasObject_ = false;
  DataBuffer head_;  // the first record of the object that is being read
  Place::Object object_{};
  std::uint64_t line_ = 0;      // of the head
  std::uint32_t nextRecn_ = 0;  // that the next record has to have
  // Of the records so far, those that are of the system record, and the bytes of their texts.
  std::uint64_t systemRecords_ = 0;
  std::uint64_t systemBytes_ = 0;
  std::string text_;        // of the records so far
  bool isPlain_ = false;    // that text, as far as it is known
  std::string systemText_;  // of all records of the system record
  // The last model of each list of a rebuild that was read with its first record.
  std::array<std::optional<Place::Object>, RecordLists::count> modelsAhead_;
  std::vector<std::int32_t> keys_;
  std::vector<HandleNumber> handles_;
  std::string value_;
};

}  // namespace orx::orxkdb
