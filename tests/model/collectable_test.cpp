#include "model/collectable.h"

#include <gtest/gtest.h>

#include <memory>

#include "model/attribute.h"
#include "model/attribute_set.h"
#include "model/config_handle.h"
#include "model/sym_parm.h"

namespace orx {
namespace {

TEST(Collectable, CopiesArePlainCollectables) {
  const CMCollectable object;
  const CMConfigHandle handle(5, 1);
  const CMAttribute attribute(1, 0);
  const CMSymParm parameter("A", "1", 2, 0, nullptr);
  const std::pair<const RWCollectable*, int> classes[] = {
      {&object, 0}, {&handle, 32745}, {&attribute, 32767}, {&parameter, 32766}};
  for (const auto& [original, id] : classes) {
    EXPECT_EQ(original->isA(), id);
    const std::unique_ptr<RWCollectable> copy(original->copy());
    const std::unique_ptr<RWCollectable> species(original->newSpecies());
    EXPECT_EQ(copy->isA(), 0) << id;
    EXPECT_EQ(species->isA(), 0) << id;
    EXPECT_FALSE(original->isEqual(copy.get()) || copy->isEqual(original));
    for (const auto& [other, otherId] : classes) {
      EXPECT_EQ(original->isEqual(other), id == otherId) << id << " and " << otherId;
    }
  }
  EXPECT_EQ(handle.compareTo(&attribute), 1);
  EXPECT_EQ(CMAttributeSet().isA(), 32728);
  const std::unique_ptr<RWCollectable> copy(object.copy());
  EXPECT_EQ(object.compareTo(copy.get()), -copy->compareTo(&object));
}

}  // namespace
}  // namespace orx
