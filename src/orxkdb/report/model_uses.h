// ModelUses: which objects refer to which models, counted while the objects of a database pass by.
//
// It takes models and references in any order. A reference costs nothing once its model and the
// type of its record have been seen; a model costs about 150 bytes.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orxkdb/keys/handle_number.h"
#include "orxkdb/keys/handle_table.h"

namespace orx::orxkdb {

// A model, or what a reference leads to in its place.
struct UsedModel {
  HandleNumber handle = nullHandle;
  bool isThere = false;      // an object of that handle is there, and it is a model
  std::int32_t recType = 0;  // 0 when it is not there
  std::string label = {};
  std::uint64_t uses = 0;
  std::map<std::int32_t, std::uint64_t> usesByType = {};  // by record type of what refers
};

struct Referrer {
  HandleNumber handle = nullHandle;
  std::int32_t recType = 0;
  std::string label = {};
  HandleNumber model = nullHandle;
};

class ModelUses {
 public:
  // So many references are remembered one by one.
  static constexpr std::size_t mostReferrers = 60;

  // Of two models with one handle the first counts.
  void addModel(HandleNumber handle, std::int32_t recType, std::string label);
  // Its label matters only while references() is below mostReferrers.
  void addReference(Referrer referrer);

  // In the order in which they were first heard of.
  [[nodiscard]] const std::vector<UsedModel>& models() const { return models_; }
  // The first ones, at most mostReferrers.
  [[nodiscard]] const std::vector<Referrer>& referrers() const { return referrers_; }
  // All of them, remembered or not.
  [[nodiscard]] std::uint64_t references() const { return references_; }

  // Those that are there before those that are not, the most used first, equal ones by handle.
  [[nodiscard]] std::vector<UsedModel> ranked() const;

 private:
  [[nodiscard]] UsedModel& modelOf(HandleNumber handle);

  HandleTable numbers_;
  std::vector<UsedModel> models_;
  std::vector<Referrer> referrers_;
  std::uint64_t references_ = 0;
};

}  // namespace orx::orxkdb
