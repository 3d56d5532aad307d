#include "platform/memory_manager.h"

#include <gtest/gtest.h>

namespace orx {
namespace {

struct Managed : CMMemoryManager {
  char payload[40];
};

// Requests are counted by their exact sizes, released or not; the peak is that of all together.
TEST(MemoryManager, CountsExactSizesAndKeepsThePeak) {
  const auto before = CMMemoryManager::bytesInUse();
  const CMMemoryManager* object = new Managed;
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before + sizeof(Managed));
  delete object;  // the deleting destructor passes the size of the derived object
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
  const auto peak = CMMemoryManager::peakBytesInUse();
  EXPECT_GE(peak, before + sizeof(Managed));
  const std::size_t size = peak - before + 1;
  void* first = CMMemoryManager::operator new(size);
  void* second = CMMemoryManager::operator new(10);
  EXPECT_EQ(CMMemoryManager::peakBytesInUse(), peak + 11);
  CMMemoryManager::operator delete(first, size);
  void* third = CMMemoryManager::operator new(1);
  EXPECT_EQ(CMMemoryManager::peakBytesInUse(), peak + 11);
  CMMemoryManager::operator delete(second, 10);
  CMMemoryManager::operator delete(third, 1);
  CMMemoryManager::operator delete(nullptr, 77);
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
}

TEST(MemoryManager, ReleasingMoreThanIsInUseStopsAtZero) {
  void* block = CMMemoryManager::operator new(8);
  CMMemoryManager::operator delete (block, std::size_t{CMMemoryManager::bytesInUse()} + 9000);
  EXPECT_EQ(CMMemoryManager::bytesInUse(), 0u);
}

}  // namespace
}  // namespace orx
