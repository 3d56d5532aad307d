// ObjectList: the objects that a page lists one by one. Of a large database it keeps a part: the
// models, up to half of it, and the first ones of the others.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "orxkdb/keys/handle_number.h"

namespace orx::orxkdb {

struct ListedObject {
  HandleNumber parent = nullHandle;
  HandleNumber object = nullHandle;
  HandleNumber model = nullHandle;
  std::int32_t recType = 0;
  std::uint64_t records = 0;
  std::uint64_t textBytes = 0;
  std::string label = {};
};

class ObjectList {
 public:
  static constexpr std::size_t most = 10'000;

  // Whether an object is still wanted; one that is not need not be built.
  [[nodiscard]] bool wants(bool isModel) const {
    return isModel ? models_.size() < most / 2 : others_.size() < most;
  }
  // In database order. Nothing happens for one that is not wanted.
  void add(ListedObject object, bool isModel);
  // At most `most`, in database order; the list is empty afterwards.
  [[nodiscard]] std::vector<ListedObject> take();

 private:
  std::vector<ListedObject> models_;
  std::vector<ListedObject> others_;
};

}  // namespace orx::orxkdb
