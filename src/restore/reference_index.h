// ReferenceIndex: the head records of one sorted list that refer to models, found by the 8 bytes of
// the model's handle in constant time. A list may hold the references of many models: what one
// model takes does not depend on those of the others.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

#include "model/config_handle.h"
#include "restore/record_lists.h"

namespace orx {

class ReferenceIndex {
 public:
  // Takes every record out of `references`.
  explicit ReferenceIndex(RecordList& references);

  // Hands every record whose `modelHandle` has these bytes to `visit`, in the order of the list,
  // and destroys it: a second call with equal bytes finds none.
  void take(const HandleBytes& model, const std::function<void(const DataBuffer&)>& visit);

 private:
  // The positions of a model's records: a chain from `first` to `last` through `next_`.
  struct Chain {
    std::uint32_t first;
    std::uint32_t last;
  };

  void add(std::unique_ptr<DataRecord> record);

  std::vector<std::unique_ptr<DataRecord>> records_;
  std::vector<std::uint32_t> next_;
  std::unordered_map<std::uint64_t, Chain> chains_;
};

}  // namespace orx
