#include "platform/memory_manager.h"

#include <gmock/gmock.h>

#include <utility>

#include "tests/support/trace_capture.h"

namespace orx {
namespace {

struct Managed : CMMemoryManager {
  char payload[40];
};

TEST(MemoryManager, CountsExactSizesAndKeepsThePeak) {
  const auto before = CMMemoryManager::bytesInUse();
  auto* object = new Managed;
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before + sizeof(Managed));
  const auto peak = CMMemoryManager::peakBytesInUse();
  EXPECT_GE(peak, before + sizeof(Managed));
  const CMMemoryManager* base = object;
  delete base;  // the deleting destructor passes the size of the derived object
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
  EXPECT_EQ(CMMemoryManager::peakBytesInUse(), peak);
}

TEST(MemoryManager, ThePeakIsThatOfAllBlocksTogether) {
  const auto peak = CMMemoryManager::peakBytesInUse();
  const std::size_t size = peak - CMMemoryManager::bytesInUse() + 1;
  void* first = CMMemoryManager::operator new(size);
  void* second = CMMemoryManager::operator new(10);
  EXPECT_EQ(CMMemoryManager::peakBytesInUse(), peak + 11);
  CMMemoryManager::operator delete(first, size);
  void* third = CMMemoryManager::operator new(1);
  EXPECT_EQ(CMMemoryManager::peakBytesInUse(), peak + 11);
  CMMemoryManager::operator delete(second, 10);
  CMMemoryManager::operator delete(third, 1);
}

TEST(MemoryManager, ItsUseShowsInTheTraceAlone) {
  const auto show = [] { CMMemoryManager::displayMemoryUse(1); };
  EXPECT_THAT(captureTrace("CMMemoryManager::displayMemoryUse=0x40", show),
              testing::ElementsAre("entry", "exit"));
  EXPECT_THAT(captureTrace("none=0x40", show), testing::ElementsAre());
}

TEST(MemoryManager, ReleasingMoreThanIsInUseStopsAtZero) {
  const auto before = CMMemoryManager::bytesInUse();
  CMMemoryManager::operator delete(nullptr, 77);
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
  void* block = CMMemoryManager::operator new(8);
  CMMemoryManager::operator delete (block, std::size_t{before} + 9000);
  EXPECT_EQ(CMMemoryManager::bytesInUse(), 0u);
}

TEST(CountedBuffer, MovesAndReleasesOnce) {
  const auto before = CMMemoryManager::bytesInUse();
  {
    CountedBuffer first(100);
    EXPECT_EQ(first.data()[99], '\0');
    CountedBuffer second = std::move(first);
    CountedBuffer third(7);
    third = std::move(second);
    EXPECT_EQ(third.size(), 100u);
  }
  EXPECT_EQ(CMMemoryManager::bytesInUse(), before);
}

}  // namespace
}  // namespace orx
