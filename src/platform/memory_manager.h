// CMMemoryManager: class allocation that counts bytes, for the containers and iterators of the
// object model, and the same pair of functions for plain buffers.
//
// The two totals are process-wide and never reset: bytes in use (modulo 2^32) and the highest
// value that it has reached. A block is released with exactly the size it was taken with. Nothing
// guards them: what is allocated here is taken and released by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>

namespace orx {

class CMMemoryManager {
 public:
  CMMemoryManager() = default;
  CMMemoryManager(const CMMemoryManager&) = default;
  CMMemoryManager& operator=(const CMMemoryManager&) = default;
  virtual ~CMMemoryManager();

  // Throws std::bad_alloc, and then has counted nothing.
  static void* operator new(std::size_t size);
  // Takes `size` off the bytes in use, which never fall below 0. A null block changes nothing.
  static void operator delete(void* block, std::size_t size);
  // Construction in place, for standard containers.
  static void* operator new(std::size_t, void* place) noexcept { return place; }
  static void operator delete(void*, void*) noexcept {}

  // Prints nothing; its calls show in the trace.
  static void displayMemoryUse(int);

  [[nodiscard]] static std::uint32_t bytesInUse();
  [[nodiscard]] static std::uint32_t peakBytesInUse();
};

// Counted memory for standard containers.
template <typename T>
struct CountingAllocator {
  using value_type = T;
  static constexpr std::size_t elementSize = sizeof(T);  // NOLINT: containers count pointers too

  CountingAllocator() = default;
  template <typename U>
  CountingAllocator(const CountingAllocator<U>&) noexcept {}  // NOLINT: converts by design

  [[nodiscard]] T* allocate(std::size_t count) {
    if (count > SIZE_MAX / elementSize) throw std::bad_alloc();
    return static_cast<T*>(CMMemoryManager::operator new(count* elementSize));
  }
  void deallocate(T* block, std::size_t count) noexcept {
    CMMemoryManager::operator delete(block, count* elementSize);
  }
  template <typename U>
  bool operator==(const CountingAllocator<U>&) const {
    return true;
  }
};

// A character buffer from the counting allocation, released with the size it was taken with.
class CountedBuffer {
 public:
  CountedBuffer() = default;
  // `size` zero bytes.
  explicit CountedBuffer(std::size_t size);
  CountedBuffer(CountedBuffer&& other) noexcept;
  CountedBuffer& operator=(CountedBuffer&& other) noexcept;
  ~CountedBuffer() { CMMemoryManager::operator delete(data_, size_); }

  [[nodiscard]] char* data() const { return data_; }
  [[nodiscard]] std::size_t size() const { return size_; }

 private:
  char* data_ = nullptr;
  std::size_t size_ = 0;
};

}  // namespace orx
