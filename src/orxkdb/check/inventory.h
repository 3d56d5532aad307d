// Inventory: what a check keeps of the objects until all have been read, and what it compares then.
//
// It is filled in database order, object by object: addObject, then its references and, if it is
// one, the model; check() comes last. Objects have numbers, from 0 on in the order of their
// arrival, which are called `source` below. An object costs 8 bytes, a reference 28, a signature of
// a model 8, each parent 44 to 76 and each model 32 to 64 more. Everything is linear in these.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "orxkdb/check/findings.h"
#include "orxkdb/keys/handle_number.h"
#include "orxkdb/keys/handle_table.h"
#include "platform/huge_pages.h"

namespace orx::orxkdb {

// Where an object refers to another.
enum class ReferenceFrom : std::int32_t {
  countedModel = -2,  // modelHandle, of a record that the use count counts
  model = -1,         // modelHandle of another record
  attributes = 0,     // a value of the attribute with this key number or a higher one
};

struct Reference {
  HandleNumber target;
  std::uint32_t source;  // number of the object that refers
  ReferenceFrom from;
};
static_assert(sizeof(Reference) == 16);

// Objects with one parent, which stand together.
struct Siblings {
  HandleNumber parent;
  std::uint32_t first;  // number of an object
  std::uint32_t count;
  // Where the parent itself is: its object, and the siblings it is among, by their numbers.
  std::uint32_t parentObject = HandleTable::none;
  std::uint32_t above = HandleTable::none;
};

struct Model {
  HandleNumber handle;
  std::uint32_t source;
  // The signatures are set by Inventory::addModel.
  bool hasUseCount = false;  // attribute 17; a rebuild leaves a model without it alone
  std::optional<std::int32_t> useCount = {};  // none when it is not one number
  std::uint64_t firstSignature = 0;
  std::uint32_t signatureCount = 0;
};

// An identifier counter of the system record, as a merge reads it.
struct Counter {
  bool isNumber;
  std::uint32_t next;                       // the next identifier of its type
  std::optional<std::string> misread = {};  // the text, when it is no number, whatever a merge says
};

class Inventory {
 public:
  // Makes room for the objects and references of so many records; more may come.
  void expect(std::uint64_t records);

  // Returns the number of the object. `line` is that of its first record in a backup; in a check of
  // a database it is 0 for all.
  std::uint32_t addObject(const Place::Object& object, std::uint64_t line);
  void addReference(const Reference& reference) { references_.push_back(reference); }
  // `signatures` are in normal form; 0 stands for a value that is no handle.
  void addModel(Model model, const std::vector<HandleNumber>& signatures);
  // The object that the system record is; the first call counts.
  void setSystemRecord(std::uint32_t source) {
    if (!systemRecord_) systemRecord_ = source;
  }
  [[nodiscard]] const std::optional<std::uint32_t>& systemRecord() const { return systemRecord_; }
  // Those of the system record, in the order of handlerTypes, at most as many. Without this call it
  // has none.
  void setCounters(std::vector<Counter> counters) { counters_ = std::move(counters); }

  // Compares everything; nothing may be added afterwards.
  void check(Findings& findings);

  // Of an object that was added.
  [[nodiscard]] Place placeOf(std::uint32_t source) const;
  [[nodiscard]] std::uint64_t objectCount() const { return objects_.size(); }
  [[nodiscard]] std::uint64_t modelCount() const { return models_.size(); }
  [[nodiscard]] std::uint64_t referenceCount() const { return references_.size(); }

 private:
  void noteIdentifier(HandleNumber handle);
  void markPresent();
  void markPresent(std::uint32_t object, std::uint32_t group);
  [[nodiscard]] bool isPresent(HandleNumber target);
  void findModels();
  [[nodiscard]] bool isThere(std::size_t number);
  void checkParents(Findings& findings);
  void checkCycles(Findings& findings) const;
  void addCycle(std::uint32_t group, Findings& findings) const;
  void checkReferences(Findings& findings);
  void checkIsModel(std::size_t number, Findings& findings) const;
  void checkModels(Findings& findings);
  void collectReferrers();
  void checkUseCount(const Model& model, std::size_t referrers, Findings& findings) const;
  void checkSignatures(const Model& model, std::span<HandleNumber> referrers, Findings& findings);
  void checkSystemRecord(Findings& findings) const;
  void checkCounter(std::size_t index, Findings& findings) const;
  void checkLimits(Findings& findings) const;
  void checkIdentifierLimits(Findings& findings) const;

  static constexpr std::size_t typeCount = 256;

  template <typename Value>
  using LargeVector = std::pmr::vector<Value>;

  LargeVector<HandleNumber> objects_{&hugePageMemory()};
  LargeVector<std::uint64_t> lines_{&hugePageMemory()};  // of the objects, empty for a database
  LargeVector<Siblings> siblings_{&hugePageMemory()};
  LargeVector<Reference> references_{&hugePageMemory()};
  LargeVector<std::uint32_t> referenceModels_{
      &hugePageMemory()};  // by reference: the number of a model, or none
  LargeVector<Model> models_{&hugePageMemory()};
  LargeVector<HandleNumber> signatures_{&hugePageMemory()};
  // Referrers of model m: referrers_[firstReferrer_[m]] up to that of the next model.
  std::vector<std::size_t> firstReferrer_;
  LargeVector<HandleNumber> referrers_{&hugePageMemory()};
  HandleTable modelNumbers_;  // of two models with one handle the first, which gets all
  // Handles that are referred to, with bit 0 set when they are there: as they are, and in normal
  // form for the values of attributes. The other bits of a parent in targets_ are the number of its
  // siblings_ plus 1.
  HandleTable targets_;
  HandleTable normalTargets_;
  std::array<std::optional<std::uint32_t>, typeCount> highestIdentifier_;  // by handle type
  std::optional<std::uint32_t> systemRecord_;
  std::optional<std::vector<Counter>> counters_;
};

}  // namespace orx::orxkdb
