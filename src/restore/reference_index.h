// ReferenceIndex: which objects refer to a model, found by the 8 bytes of the model's handle in
// constant time. One list of references may hold those of many models: what one model takes does
// not depend on the others.
#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "model/config_handle.h"
#include "restore/record_lists.h"

namespace orx {

class ReferenceIndex {
 public:
  // Takes every record out of `references`, a list of head records; it is empty afterwards.
  explicit ReferenceIndex(RecordList& references);

  // Hands the `objectHandle` of every record whose `modelHandle` has these bytes to `visit`, in the
  // order of the list. Each is handed out once: a second call with equal bytes finds none.
  void take(const HandleBytes& model, const std::function<void(const CMConfigHandle&)>& visit);

 private:
  struct Reference {
    HandleBytes object;
    std::uint32_t next;  // position of the model's next reference
  };
  // Positions of a model's references.
  struct Chain {
    std::uint32_t first;
    std::uint32_t last;
  };

  void add(const DataBuffer& record);

  std::vector<Reference> references_;
  std::unordered_map<std::uint64_t, Chain> chains_;
};

}  // namespace orx
