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
