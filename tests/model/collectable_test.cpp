#include "model/collectable.h"

#include <gtest/gtest.h>

#include <memory>

namespace orx {
namespace {

TEST(Collectable, CopiesArePlainCollectables) {
  const CMCollectable object;
  const std::unique_ptr<RWCollectable> copy(object.copy());
  const std::unique_ptr<RWCollectable> species(object.newSpecies());
  EXPECT_EQ(copy->isA(), 0);
  EXPECT_EQ(species->isA(), 0);
  EXPECT_TRUE(object.isEqual(&object));
  EXPECT_FALSE(object.isEqual(copy.get()));
  EXPECT_EQ(object.compareTo(copy.get()), -copy->compareTo(&object));
}

}  // namespace
}  // namespace orx
