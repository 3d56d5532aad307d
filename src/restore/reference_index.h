// ReferenceIndex: which objects refer to a model, found by the 8 bytes of the model's handle in
// constant time. One list of references may hold those of many models: what one model takes does
// not depend on the others.
#pragma once

#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "model/config_handle.h"
#include "restore/reference_lists.h"

namespace orx {

class ReferenceIndex {
 public:
  explicit ReferenceIndex(ReferenceList references);

  // Hands the object of every reference to the model with these bytes to `visit`, in the order of
  // the list. Each is handed out once: a second call with equal bytes finds none.
  void take(const HandleBytes& model, const std::function<void(const CMConfigHandle&)>& visit);

 private:
  // Positions of a model's references.
  struct Chain {
    std::uint32_t first;
    std::uint32_t last;
  };

  void add(std::uint32_t position);

  ReferenceList references_;
  std::vector<std::uint32_t> next_;  // for each reference the position of its model's next one
  std::unordered_map<std::uint64_t, Chain> chains_;
};

}  // namespace orx
