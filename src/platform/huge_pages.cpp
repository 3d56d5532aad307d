#include "platform/huge_pages.h"

#include <sys/mman.h>

#include <new>

namespace orx {

namespace {

constexpr std::align_val_t hugePageAlignment{hugePageSize};

// Smaller blocks would leave most of their page unused.
constexpr std::size_t smallestBlock = hugePageSize / 2;

class HugePageMemory : public std::pmr::memory_resource {
  void* do_allocate(std::size_t bytes, std::size_t alignment) override {
    if (bytes < smallestBlock) return ordinary_.allocate(bytes, alignment);
    const std::size_t whole = (bytes + hugePageSize - 1) / hugePageSize * hugePageSize;
    void* const block = ::operator new(whole, hugePageAlignment);
    (void)::madvise(block, whole, MADV_HUGEPAGE);  // ordinary pages do as well
    return block;
  }

  void do_deallocate(void* block, std::size_t bytes, std::size_t alignment) override {
    if (bytes < smallestBlock) return ordinary_.deallocate(block, bytes, alignment);
    ::operator delete(block, hugePageAlignment);
  }

  [[nodiscard]] bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override {
    return this == &other;
  }

  std::pmr::memory_resource& ordinary_ = *std::pmr::new_delete_resource();
};

}  // namespace

std::pmr::memory_resource& hugePageMemory() {
  static auto* const memory = new HugePageMemory;
  return *memory;
}

}  // namespace orx
