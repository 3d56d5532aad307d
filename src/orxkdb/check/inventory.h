// Inventory: what a check keeps of the objects until all have been read, and what it compares then.
//
// It is filled in database order. An object costs 16 bytes, each of its references 16 more, a
// signature of a model 8.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "orxkdb/check/findings.h"
#include "orxkdb/handle_number.h"

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

// All objects with one parent stand together.
struct ParentReference {
  HandleNumber parent;
  std::uint32_t firstChild;
  std::uint32_t children;
};

struct Model {
  HandleNumber handle;
  std::uint32_t source;
  bool hasUseCount = false;  // attribute 17; a rebuild leaves a model without it alone
  std::optional<std::int32_t> useCount = {};  // none when it is not one number
  std::uint64_t firstSignature = 0;
  std::uint32_t signatureCount = 0;
};

struct Counter {
  bool isNumber;
  std::uint32_t next;  // the next identifier of its type
};

class Inventory {
 public:
  // Returns the number of the object; `line` is that of its first record in a backup, else 0.
  std::uint32_t addObject(const Place::Object& object, std::uint64_t line);
  void addReference(const Reference& reference) { references_.push_back(reference); }
  // `signatures` are in normal form; 0 stands for a value that is no handle.
  void addModel(Model model, const std::vector<HandleNumber>& signatures);
  void setSystemRecord(std::uint32_t source) { systemRecord_ = source; }
  // The first call counts.
  void setCounters(std::vector<Counter> counters) {
    if (!counters_) counters_ = std::move(counters);
  }

  // Sorts and compares everything; nothing may be added afterwards.
  void check(Findings& findings);

  [[nodiscard]] Place placeOf(std::uint32_t source) const;
  [[nodiscard]] std::uint64_t objectCount() const { return objects_.size(); }
  [[nodiscard]] std::uint64_t modelCount() const { return models_.size(); }
  [[nodiscard]] std::uint64_t referenceCount() const { return references_.size(); }

 private:
  void noteIdentifier(HandleNumber handle);
  void sort();
  [[nodiscard]] bool isThere(const Reference& reference) const;
  void checkParents(Findings& findings) const;
  void checkReferences(Findings& findings) const;
  void checkModels(Findings& findings);
  void checkModel(const Model& model, std::vector<HandleNumber>& referrers, Findings& findings);
  void checkSignatures(const Model& model, const std::vector<HandleNumber>& referrers,
                       Findings& findings);
  void checkSystemRecord(Findings& findings) const;
  void checkCounter(std::size_t index, Findings& findings) const;

  static constexpr std::size_t typeCount = 256;

  std::vector<Place::Object> objects_;
  std::vector<std::uint64_t> lines_;       // of the objects, empty for a database
  std::vector<HandleNumber> handles_;      // of the objects, sorted by sort()
  std::vector<HandleNumber> normalForms_;  // where they differ from the handles
  std::vector<ParentReference> parents_;
  std::vector<Reference> references_;
  std::vector<Model> models_;
  std::vector<HandleNumber> signatures_;
  std::array<std::optional<std::uint32_t>, typeCount> highestIdentifier_;  // by handle type
  std::optional<std::uint32_t> systemRecord_;
  std::optional<std::vector<Counter>> counters_;
};

}  // namespace orx::orxkdb
