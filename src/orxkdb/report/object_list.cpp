#include "orxkdb/report/object_list.h"

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

namespace orx::orxkdb {

void ObjectList::add(ListedObject object, bool isModel) {
  if (wants(isModel)) (isModel ? models_ : others_).push_back(std::move(object));
}

std::vector<ListedObject> ObjectList::take() {
  others_.resize(std::min(others_.size(), most - models_.size()));
  std::vector<ListedObject> objects;
  objects.reserve(models_.size() + others_.size());
  std::ranges::merge(
      std::exchange(models_, {}), std::exchange(others_, {}), std::back_inserter(objects), {},
      [](const ListedObject& o) { return std::tuple(o.parent, o.object); },
      [](const ListedObject& o) { return std::tuple(o.parent, o.object); });
  return objects;
}

}  // namespace orx::orxkdb
