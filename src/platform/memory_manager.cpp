#include "platform/memory_manager.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "platform/trace.h"

namespace orx {

ORX_TRACE_UNIT("orxccmmm.cpp", "ORXCCMMM");

namespace {
constinit std::uint32_t inUse = 0;
constinit std::uint32_t peak = 0;
}  // namespace

CMMemoryManager::~CMMemoryManager() {
  ORX_TRACE_VALUE("CMMemoryManager destructor");
}

void* CMMemoryManager::operator new(std::size_t size) {
  ORX_TRACE_VALUE("CMMemoryManager::operator new");
  void* block = ::operator new(size);
  inUse += static_cast<std::uint32_t>(size);
  peak = std::max(peak, inUse);
  return trace.exit(block);
}

void CMMemoryManager::operator delete(void* block, std::size_t size) {
  ORX_TRACE_VALUE("CMMemoryManager::operator delete");
  if (block == nullptr) return;
  ::operator delete(block);
  const auto released = static_cast<std::uint32_t>(size);
  inUse = inUse > released ? inUse - released : 0;
}

void CMMemoryManager::displayMemoryUse(int) {
  ORX_TRACE_VALUE("CMMemoryManager::displayMemoryUse");
}

std::uint32_t CMMemoryManager::bytesInUse() {
  return inUse;
}
std::uint32_t CMMemoryManager::peakBytesInUse() {
  return peak;
}

CountedBuffer::CountedBuffer(std::size_t size)
    : data_(static_cast<char*>(CMMemoryManager::operator new(size))), size_(size) {
  std::memset(data_, 0, size);
}

CountedBuffer::CountedBuffer(CountedBuffer&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

CountedBuffer& CountedBuffer::operator=(CountedBuffer&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  return *this;
}

}  // namespace orx
