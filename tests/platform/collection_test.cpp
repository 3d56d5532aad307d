#include "platform/collection.h"

#include <gtest/gtest.h>

#include <memory>

#include "platform/memory_manager.h"

namespace orx {
namespace {

int alive = 0;

struct Item : RWCollectable {
  Item(int hash, char name) : hashed(hash), name(name) { ++alive; }
  Item(const Item&) = delete;
  ~Item() override { --alive; }
  std::uint32_t hash() const override { return static_cast<std::uint32_t>(hashed); }
  bool isEqual(const RWCollectable* other) const override {
    return static_cast<const Item*>(other)->hashed == hashed;
  }
  int hashed;
  char name;
};

std::string namesOf(RWHashTable& table) {
  std::string names;
  table.apply([&](RWCollectable& entry) { names += static_cast<Item&>(entry).name; });
  return names;
}

TEST(HashTable, OrdersByHashAndThenByInsertion) {
  RWHashTable table;
  const Item probe(7, '?');
  for (auto* item : {new Item(7, 'c'), new Item(-2, 'a'), new Item(7, 'd'), new Item(5, 'b')}) {
    EXPECT_EQ(table.insert(item), item);
    EXPECT_EQ(table.insert(item), nullptr) << "held already";
  }
  EXPECT_EQ(namesOf(table), "abcd");
  EXPECT_EQ(table.occurrencesOf(&probe), 2u);
  RWHashTableIterator next(table);
  const std::unique_ptr<RWCollectable> taken(table.remove(&probe));
  EXPECT_EQ(static_cast<Item*>(taken.get())->name, 'c');
  table.removeAndDestroy(next.findNext(&probe));
  EXPECT_EQ(next.findNext(&probe), nullptr);
  EXPECT_EQ(table.remove(&probe), nullptr);
  const std::unique_ptr<RWHashTable> shared(table.copy());
  table.clear();
  EXPECT_EQ(namesOf(*shared), "ab");
  shared->clearAndDestroy();
  EXPECT_EQ(alive, 2);
}

struct Managed : CMMemoryManager {
  char payload[40];
};

// Requests are counted by their exact sizes, released or not; the peak is that of all together.
TEST(MemoryManager, CountsExactSizesAndKeepsThePeak) {
  const auto before = CMMemoryManager::bytesInUse();
  const CMMemoryManager* object = new Managed;
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before + sizeof(Managed));
  delete object;  // the deleting destructor passes the size of the derived object
  const std::size_t size = CMMemoryManager::peakBytesInUse() - before + 1;
  void* first = CMMemoryManager::operator new(size);
  CMMemoryManager::operator delete(first, size);
  void* second = CMMemoryManager::operator new(1);
  EXPECT_EQ(CMMemoryManager::peakBytesInUse(), before + size);
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before + 1);
  CMMemoryManager::operator delete(second, before + 9000);
  EXPECT_EQ(CMMemoryManager::bytesInUse(), 0u) << "more than is in use";
}

}  // namespace
}  // namespace orx
