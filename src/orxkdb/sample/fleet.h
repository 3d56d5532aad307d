// A made-up fleet of managed systems, as `orxkdb sample` writes it: the same objects, identifiers
// and texts for the same options, on every machine.
//
// The fleet is a system record (parameters and identifier counters), models for systems, groups and
// resources, the systems, their groups and resources, prototypes below the models, schedules,
// operators and logs. Systems, groups and most resources refer to a model, whose use count and
// signatures are right. About one object in ten needs a chain of records; a few texts hold the
// characters that attribute texts double.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "model/config_handle.h"
#include "records/data_buffer.h"

namespace orx::orxkdb {

struct FleetOptions {
  std::uint32_t objects = 10000;  // with the system record; at least 20 are made
  std::uint64_t seed = 1;
};

class Fleet {
 public:
  explicit Fleet(const FleetOptions& options);

  [[nodiscard]] std::uint32_t objectCount() const { return objectCount_; }

  // The objects, by number, in the order that their records have in a database.
  [[nodiscard]] const std::vector<std::uint32_t>& keyOrder() const { return keyOrder_; }

  // The records of an object, a number below objectCount(); 0 is the system record. One record, or
  // a chain of chunks of its attribute text. Made anew by every call.
  [[nodiscard]] std::vector<DataBuffer> recordsOf(std::uint32_t object) const;

  struct Kind;  // a run of objects of one record type

 private:
  [[nodiscard]] std::uint64_t randomOf(std::uint32_t object, std::uint32_t what) const;
  [[nodiscard]] const Kind& kindOf(std::uint32_t object) const;
  [[nodiscard]] CMConfigHandle handleOf(std::uint32_t object) const;
  [[nodiscard]] CMConfigHandle parentOf(std::uint32_t object, const Kind& kind) const;
  [[nodiscard]] std::uint32_t pick(std::uint32_t object, std::uint32_t what,
                                   std::size_t kind) const;
  [[nodiscard]] bool refersToModel(std::uint32_t object, const Kind& kind) const;
  [[nodiscard]] CMConfigHandle modelOf(std::uint32_t object, const Kind& kind) const;
  void sortByKey();
  void collectReferences();

  [[nodiscard]] std::string attributesOf(std::uint32_t object, const Kind& kind) const;
  [[nodiscard]] std::string systemAttributes() const;
  [[nodiscard]] std::string parameterText() const;

  static constexpr std::size_t kindCount = 11;

  std::uint64_t seed_;
  std::uint32_t objectCount_ = 0;
  std::array<std::uint32_t, kindCount + 1> firstOf_{};  // first object of each kind, then the end
  std::vector<std::uint32_t> keyOrder_;
  // The objects that refer to model m are referrers_[firstReferrer_[m] .. firstReferrer_[m + 1]),
  // in key order.
  std::vector<std::uint32_t> firstReferrer_;
  std::vector<std::uint32_t> referrers_;
};

}  // namespace orx::orxkdb
